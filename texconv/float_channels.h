// Which channels of a working pixel a float format has, and where.
#pragma once

#include <cstdint>

#include "texconv/format_table.h"
#include "texconv/word_layout.h"

namespace QXTextureConverter {

// Number of the format's channel that each of R, G, B, A takes, or kMissingChannel, which reads as 0;
// luminance is written from R.
inline constexpr std::uint32_t kMissingChannel = 4;
struct FloatPlaces {
    std::uint32_t count;       // of the format's channels
    std::uint32_t read[4];     // by R, G, B, A
    std::uint32_t written[4];  // which of R, G, B, A each channel takes
};

constexpr FloatPlaces PlacesOf(FloatChannels channels) {
    constexpr std::uint32_t kNo = kMissingChannel;
    switch (channels) {
        case FloatChannels::kRgba:
            return {4, {0, 1, 2, 3}, {0, 1, 2, 3}};
        case FloatChannels::kRgb:
            return {3, {0, 1, 2, kNo}, {0, 1, 2}};
        case FloatChannels::kLa:
            return {2, {0, 0, 0, 1}, {0, 3}};
        case FloatChannels::kL:
            return {1, {0, 0, 0, kNo}, {0}};
        case FloatChannels::kA:
            return {1, {kNo, kNo, kNo, 0}, {3}};
        case FloatChannels::kNone:
            break;
    }
    return {0, {kNo, kNo, kNo, kNo}, {}};
}

namespace detail {

constexpr std::uint32_t ByteMask(std::uint32_t byte) {
    return byte < kMissingChannel ? 0xFFu << (8 * byte) : 0;
}

}  // namespace detail

// A pixel of the format with a byte for every channel, as a plain word: for reading ...
constexpr WordLayout ReadBytesLayout(const FloatPlaces& places) {
    return {{detail::ByteMask(places.read[0]), detail::ByteMask(places.read[1]),
             detail::ByteMask(places.read[2]), detail::ByteMask(places.read[3])},
            places.count,
            false};
}

// ... and for writing, where no two channels share a byte.
constexpr WordLayout WrittenBytesLayout(const FloatPlaces& places) {
    std::uint32_t masks[4] = {};
    for (std::uint32_t i = 0; i < places.count; ++i) {
        masks[places.written[i]] = detail::ByteMask(i);
    }
    return {{masks[0], masks[1], masks[2], masks[3]}, places.count, false};
}

}  // namespace QXTextureConverter
