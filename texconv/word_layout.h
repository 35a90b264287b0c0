// How the channels of a plain pixel lie in its word, prepared for whole rows.
#pragma once

#include <cstdint>

#include "texconv/channel_bits.h"
#include "texconv/format_table.h"

namespace QXTextureConverter {

// One channel as arithmetic without branches, equal to ChannelField's:
//   byte = (((word >> shift) & bits) * scale) >> scaleShift
//   word |= ((byte >> dropped) & bits) << shift
// A channel of no bits or of more than a byte has bits 0: it reads and writes as 0.
struct ChannelPlace {
    std::uint32_t readBits = 0;
    std::uint32_t writeBits = 0;
    std::uint32_t shift = 0;
    std::uint32_t dropped = 0;
    std::uint32_t scale = 0;
    std::uint32_t scaleShift = 0;

    constexpr ChannelPlace() = default;
    explicit constexpr ChannelPlace(std::uint32_t mask) {
        const unsigned count = NumBitsSet(mask);
        if (count == 0 || count > 8) {
            return;
        }
        // Widening to a byte: 4 to 6 bits repeat their top bits, as n + n * 2^count does before it is cut.
        constexpr std::uint32_t kScales[] = {0, 255, 64, 32, 17, 33, 65, 2, 1};
        constexpr std::uint32_t kScaleShifts[] = {0, 0, 0, 0, 0, 2, 4, 0, 0};
        writeBits = (1u << count) - 1;
        shift = FirstBitSet(mask);
        readBits = (mask >> shift) & writeBits;
        dropped = 8 - count;
        scale = kScales[count];
        scaleShift = kScaleShifts[count];
    }
};

struct WordLayout {
    ChannelMasks masks;
    std::uint32_t bytes = 0;  // of a word, 0 to 4; words of no bytes read as 0
    bool opaque = false;      // without an alpha mask: alpha reads as 255
    ChannelPlace places[4];   // of R, G, B, A

    constexpr WordLayout(const ChannelMasks& channelMasks, std::uint32_t wordBytes)
        : WordLayout(channelMasks, wordBytes, channelMasks.alpha == 0) {}
    constexpr WordLayout(const ChannelMasks& channelMasks, std::uint32_t wordBytes, bool isOpaque)
        : masks(channelMasks),
          bytes(wordBytes),
          opaque(isOpaque),
          places{ChannelPlace(masks.red), ChannelPlace(masks.green), ChannelPlace(masks.blue),
                 ChannelPlace(masks.alpha)} {}

    // Of pixels to read: the four bytes from the pixel's first on where a mask reaches beyond its own.
    static constexpr WordLayout ForReading(const ChannelMasks& masks, std::uint32_t pixelBytes) {
        const std::uint32_t used = masks.red | masks.green | masks.blue | masks.alpha;
        const bool beyond = pixelBytes < 4 && used >> (8 * pixelBytes) != 0;
        return {masks, beyond ? 4 : pixelBytes};
    }

    // R, G, B, A bytes, as the working image has them.
    constexpr bool IsRgba() const { return bytes == 4 && masks == detail::kRgba8888; }
};

}  // namespace QXTextureConverter
