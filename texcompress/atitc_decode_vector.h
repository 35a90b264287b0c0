// ATC colour decoding on vectors: palettes of one block per lane, then the pixels of one block at a time.
// See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/texcompress.h"
#include "texcompress/tile.h"
#include "texcompress/tile_group_vector.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// Colours of 8 bits per channel: red in the lower and blue in the upper half of one word, green in
// another. Fields have room for sums.
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

// The colour at 3/8 of the way from near to far.
[[gnu::always_inline]] inline I32 BlendColors(const SplitColors& near, const SplitColors& far) {
    const auto blend = [](const I32& major, const I32& minor) {
        return ((major << 2) + major + (minor << 1) + minor) >> 3;
    };
    return JoinColors(blend(near.redBlue, far.redBlue), blend(near.green, far.green));
}

// medHigh less a quarter of high, at least 0.
[[gnu::always_inline]] inline I32 LowerColors(const SplitColors& medHigh, const SplitColors& high) {
    const auto lower = [](const I32& value, const I32& above) {
        const I16 difference = I16(value) - I16(above >> 2 & 0x3F003F);
        return I32(difference & (difference > 0));
    };
    return JoinColors(lower(medHigh.redBlue, high.redBlue), lower(medHigh.green, high.green));
}

// Palettes of kLanes blocks, as what the bits of an index change: entry 0, what the lower bit flips, what
// the upper bit flips, and what both flip besides.
struct AtcPalettes {
    alignas(32) int32_t first[kLanes], lower[kLanes], upper[kLanes], both[kLanes];

    // Colours of TXC_FORMAT_ATC.
    static AtcPalettes Of(const I32& colorWords) {
        return {Expand1555(colorWords), Expand565(colorWords >> 16 & 0xFFFF), (colorWords & 0x8000) != 0};
    }
    // Colours of TXC_FORMAT_ATC_LEGACY: beside black, the first one is the high one.
    static AtcPalettes OfLegacy(const I32& colorWords) {
        const SplitColors first = Expand565(colorWords & 0xFFFF);
        const SplitColors second = Expand565(colorWords >> 16 & 0xFFFF);
        const I32 black = LeastLuminance(first.redBlue & 255, first.green, first.redBlue >> 16) >
                          GreatestLuminance(second.redBlue & 255, second.green, second.redBlue >> 16);
        const auto choose = [&black](const SplitColors& yes, const SplitColors& no) {
            return SplitColors{Select(black, yes.redBlue, no.redBlue), Select(black, yes.green, no.green)};
        };
        return {choose(second, first), choose(first, second), black};
    }

    // low has index 0, or 2 beside black; high has index 3.
    AtcPalettes(const SplitColors& low, const SplitColors& high, const I32& black) {
        const I32 plain0 = JoinColors(low.redBlue, low.green);
        const I32 entry0 = plain0 & ~black;
        const I32 entry1 = Select(black, LowerColors(low, high), BlendColors(low, high));
        const I32 entry2 = Select(black, plain0, BlendColors(high, low));
        const I32 entry3 = JoinColors(high.redBlue, high.green);
        StoreVector(first, entry0);
        StoreVector(lower, I32(entry0 ^ entry1));
        StoreVector(upper, I32(entry0 ^ entry2));
        StoreVector(both, I32(entry0 ^ entry1 ^ entry2 ^ entry3));
    }

    [[gnu::always_inline]] void LookUp(size_t block, uint32_t indexWord, Tile& tile) const;
};

// Bit 2k of lane k, from pixel `first` on.
[[gnu::always_inline]] inline U32 IndexBits(int first) {
    U32 bits{};
    for (int i = 0; i < kLanes; ++i) {
        bits[i] = 1u << (2 * (first + i));
    }
    return bits;
}

inline void AtcPalettes::LookUp(size_t block, uint32_t indexWord, Tile& tile) const {
    const I32 ofFirst = I32{} + first[block];
    const I32 ofLower = I32{} + lower[block];
    const I32 ofUpper = I32{} + upper[block];
    const I32 ofBoth = I32{} + both[block];
    for (int k = 0; k < 16; k += kLanes) {
        const U32 lowBits = IndexBits(k);
        const U32 highBits = lowBits << 1;
        const auto odd = I32(((U32{} + indexWord) & lowBits) == lowBits);
        const auto high = I32(((U32{} + indexWord) & highBits) == highBits);
        const I32 changed = (odd & (ofLower ^ (high & ofBoth))) ^ (high & ofUpper);
        StoreVector(tile.pixels + k, I32(ofFirst ^ changed));
    }
}

template <uint32_t Format>
inline void DecodeAtcOnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; i += kLanes) {
        const size_t some = count - i < kLanes ? count - i : kLanes;
        uint32_t colorWords[kLanes] = {};
        for (size_t n = 0; n < some; ++n) {
            colorWords[n] = LoadWord(blocks + (i + n) * stride);
        }
        const auto words = LoadVector<I32>(colorWords);
        const AtcPalettes palettes =
            Format == TXC_FORMAT_ATC ? AtcPalettes::Of(words) : AtcPalettes::OfLegacy(words);
        for (size_t n = 0; n < some; ++n) {
            palettes.LookUp(n, LoadWord(blocks + (i + n) * stride + 4), tiles[i + n]);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress
