// Groups of as many tiles as a vector has lanes, one tile per lane.
#pragma once

#include <cstddef>

#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// Pixel k of tile i becomes lane i of words[k]. Lanes beyond count repeat the last tile.
inline void LoadTileGroup(const Tile* tiles, size_t count, I32 (&words)[16]) {
    const auto quads = reinterpret_cast<uint8_t*>(words);
    for (size_t lane = 0; lane < kLanes; lane += 4) {
        for (size_t k = 0; k < 16; k += 4) {
            Quad rows[4];
            for (size_t i = 0; i < 4; ++i) {
                const size_t tile = lane + i < count ? lane + i : count - 1;
                rows[i] = LoadVector<Quad>(tiles[tile].pixels + k);
            }
            Transpose(rows);
            for (size_t i = 0; i < 4; ++i) {
                StoreVector(quads + (k + i) * kVectorBytes + 4 * lane, rows[i]);
            }
        }
    }
}

struct Channels {
    F32 r, g, b;
};

[[gnu::always_inline]] inline Channels ChannelsOf(const I32& words) {
    return {ToFloat(words & 255), ToFloat(words >> 8 & 255), ToFloat(words >> 16 & 255)};
}

// Luminances 0..255, see Luminance. The sums are whole and stay exact.
[[gnu::always_inline]] inline I32 LuminanceOf(const Channels& pixel) {
    return ToInt(19.0f * pixel.r + 38.0f * pixel.g + 7.0f * pixel.b) >> 6;
}

// The least luminance that RGB565 codes with these decoded colours stand for.
[[gnu::always_inline]] inline I32 LeastLuminance(const I32& red, const I32& green, const I32& blue) {
    return LuminanceOf({ToFloat(red & 0xF8), ToFloat(green & 0xFC), ToFloat(blue & 0xF8)});
}
// The greatest one.
[[gnu::always_inline]] inline I32 GreatestLuminance(const I32& red, const I32& green, const I32& blue) {
    return LuminanceOf({ToFloat(red | 7), ToFloat(green | 3), ToFloat(blue | 7)});
}

}  // namespace
}  // namespace zorvan::texcompress
