// ATC colour decoding on vectors: palettes of one block per lane, then the pixels of one block at a time.
// See vector_types.h for how it is compiled.
#ifndef ZORVAN_TEXCOMPRESS_ATITC_DECODE_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ATITC_DECODE_VECTOR_H

#include <cstddef>

#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

/// Colours of 8 bits per channel: red in the lower and blue in the upper half of one word, green in
/// another. Fields have room for sums.
struct SplitColors {
    I32 redBlue, green;
};

constexpr int32_t kFields = 0xFF00FF;

[[gnu::always_inline]] inline I32 ExpandFives(const I32& fives) {
    return fives << 3 | (fives >> 2 & 0x70007);
}

[[gnu::always_inline]] inline SplitColors Expand1555(const I32& codes) {
    return {ExpandFives((codes >> 10 & 31) | (codes & 31) << 16), ExpandFives(codes >> 5 & 31)};
}

[[gnu::always_inline]] inline SplitColors Expand565(const I32& codes) {
    const I32 green = codes >> 5 & 63;
    return {ExpandFives((codes >> 11 & 31) | (codes & 31) << 16), green << 2 | green >> 4};
}

[[gnu::always_inline]] inline I32 JoinColors(const I32& redBlue, const I32& green) {
    return (redBlue & kFields) | (green & 255) << 8;
}

/// The colour at 3/8 of the way from near to far.
[[gnu::always_inline]] inline I32 BlendColors(const SplitColors& near, const SplitColors& far) {
    const auto blend = [](const I32& major, const I32& minor) {
        return ((major << 2) + major + (minor << 1) + minor) >> 3;
    };
    return JoinColors(blend(near.redBlue, far.redBlue), blend(near.green, far.green));
}

/// medHigh less a quarter of high, at least 0.
[[gnu::always_inline]] inline I32 LowerColors(const SplitColors& medHigh, const SplitColors& high) {
    const auto lower = [](const I32& value, const I32& above) {
        const I16 difference = I16(value) - I16(above >> 2 & 0x3F003F);
        return I32(difference & (difference > 0));
    };
    return JoinColors(lower(medHigh.redBlue, high.redBlue), lower(medHigh.green, high.green));
}

/// Palettes of kLanes blocks; entry i of block n in lane n of palettes[i].
inline void AtcPalettes(const I32& colorWords, I32 (&palettes)[4]) {
    const SplitColors color0 = Expand1555(colorWords);
    const SplitColors color1 = Expand565(colorWords >> 16 & 0xFFFF);
    const I32 first = JoinColors(color0.redBlue, color0.green);
    const I32 black = (colorWords & 0x8000) != 0;
    palettes[0] = first & ~black;
    palettes[1] = Select(black, LowerColors(color0, color1), BlendColors(color0, color1));
    palettes[2] = Select(black, first, BlendColors(color1, color0));
    palettes[3] = JoinColors(color1.redBlue, color1.green);
}

/// Bit 2k of lane k, from pixel `first` on.
[[gnu::always_inline]] inline U32 IndexBits(int first) {
    U32 bits{};
    for (int i = 0; i < kLanes; ++i) {
        bits[i] = 1u << (2 * (first + i));
    }
    return bits;
}

inline void LookUpPixels(const I32 (&palettes)[4], int block, uint32_t indexWord, Tile& tile) {
    const I32 entry0 = I32{} + palettes[0][block];
    const I32 flips[3] = {entry0 ^ palettes[1][block], entry0 ^ palettes[2][block],
                          I32{} + (palettes[2][block] ^ palettes[3][block])};
    for (int k = 0; k < 16; k += kLanes) {
        const U32 lowBits = IndexBits(k);
        const U32 highBits = lowBits << 1;
        const auto odd = I32(((U32{} + indexWord) & lowBits) == lowBits);
        const auto upper = I32(((U32{} + indexWord) & highBits) == highBits);
        const I32 low = flips[0] & odd;
        const I32 high = flips[1] ^ (flips[2] & odd);
        StoreVector(tile.pixels + k, I32(entry0 ^ Select(upper, high, low)));
    }
}

inline void DecodeAtcOnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; i += kLanes) {
        const size_t some = count - i < kLanes ? count - i : kLanes;
        uint32_t colorWords[kLanes] = {};
        for (size_t n = 0; n < some; ++n) {
            colorWords[n] = LoadWord(blocks + (i + n) * stride);
        }
        I32 palettes[4];
        AtcPalettes(LoadVector<I32>(colorWords), palettes);
        for (size_t n = 0; n < some; ++n) {
            const uint32_t indexWord = LoadWord(blocks + (i + n) * stride + 4);
            LookUpPixels(palettes, static_cast<int>(n), indexWord, tiles[i + n]);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ATITC_DECODE_VECTOR_H
