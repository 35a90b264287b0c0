// Encoding of alpha and 3Dc blocks on vectors. See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/alpha_decode_vector.h"
#include "texcompress/alpha_search_vector.h"
#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// 16 values of one channel.
struct AlphaValues {
    alignas(32) int16_t values[16];
    int lowest, highest;
};

// End values in the order that their mode asks for.
struct AlphaEnds {
    int a0, a1;
};

inline AlphaEnds EightValueEnds(int low, int high) {
    return {high, low};
}

inline AlphaEnds SixValueEnds(int low, int high) {
    return low < high ? AlphaEnds{low, high} : AlphaEnds{high, low};
}

inline AlphaValues ValuesOf(const Tile& tile, int shift) {
    AlphaValues values;
    int16_t lowest = 255;
    int16_t highest = 0;
    for (int k = 0; k < 16; ++k) {
        const auto value = static_cast<int16_t>(tile.pixels[k] >> shift & 255);
        values.values[k] = value;
        lowest = value < lowest ? value : lowest;
        highest = value > highest ? value : highest;
    }
    values.lowest = lowest;
    values.highest = highest;
    return values;
}

// The ends of values whose range counts as exact. Only the number of distinct values matters: bit n of
// the set stands for the value n above the lowest.
inline AlphaEnds FindNarrowEnds(const AlphaValues& values) {
    uint64_t present = 0;
    for (const int16_t value : values.values) {
        present |= uint64_t{1} << (value - values.lowest);
    }
    const bool fewerThanThree = (present & (present - 1) & ((present & (present - 1)) - 1)) == 0;
    if (fewerThanThree) {
        return EightValueEnds(values.lowest, values.highest);
    }
    // The six-value mode has 0 and 255 beside its ramp, which stand for their neighbours as well.
    if (values.lowest < 2) {
        present &= ~uint64_t{0} << (2 - values.lowest);
    }
    if (values.highest > 253) {
        present &= (uint64_t{1} << (254 - values.lowest)) - 1;
    }
    const int low = values.lowest + __builtin_ctzll(present);
    const int high = values.lowest + 63 - __builtin_clzll(present);
    return SixValueEnds(low, low == high ? low + 1 : high);
}

// The ends of any values; see FindAlphaEndpoints. Where the six-value mode is exact, the other one
// cannot win.
inline AlphaEnds FindWideEnds(const AlphaValues& values) {
    uint8_t sorted[16];
    for (int k = 0; k < 16; ++k) {
        int place = k;
        for (; place > 0 && sorted[place - 1] > values.values[k]; --place) {
            sorted[place] = sorted[place - 1];
        }
        sorted[place] = static_cast<uint8_t>(values.values[k]);
    }
    AlphaSet all;
    AlphaSet inner;
    all.size = 0;
    inner.size = 0;
    for (const uint8_t value : sorted) {
        all.Add(value);
        if (value > 1 && value < 254) {
            inner.Add(value);
        }
    }
    if (all.size < 3) {
        return EightValueEnds(values.lowest, values.highest);
    }
    if (inner.size == 0) {
        return {128, 129};
    }
    if (inner.size == 1) {
        return {inner.lowest, inner.lowest + 1};
    }
    if (inner.size == 2 || inner.highest - inner.lowest <= kNarrowBytes) {
        return SixValueEnds(inner.lowest, inner.highest);
    }
    const auto round = [](float value) { return static_cast<int>(255.0f * value + 0.5f); };
    const AlphaPair six = SearchPairs(inner, 6);
    const AlphaPair eight = SearchPairs(all, 8);
    return six.error <= eight.error ? SixValueEnds(round(six.a), round(six.b))
                                    : EightValueEnds(round(eight.a), round(eight.b));
}

// The indices of the nearest palette entries, the first of equally near ones.
inline uint64_t NearestEntries(const AlphaValues& values, const uint32_t (&entries)[8]) {
    alignas(32) int16_t indices[16];
    for (int k = 0; k < 16; k += kShortLanes) {
        const auto value = LoadVector<I16>(values.values + k);
        I16 best = I16{} + static_cast<int16_t>(256);
        I16 index{};
        for (int i = 0; i < 8; ++i) {
            const I16 difference = value - static_cast<int16_t>(entries[i]);
            const I16 distance = Max(difference, -difference);
            index = Select(I16(distance < best), I16{} + static_cast<int16_t>(i), index);
            best = Min(distance, best);
        }
        StoreVector(indices + k, index);
    }
    uint64_t bits = 0;
    for (int k = 0; k < 16; ++k) {
        bits |= static_cast<uint64_t>(indices[k]) << (3 * k);
    }
    return bits;
}

inline void EncodeInterpolated(const Tile& tile, int shift, uint8_t* block) {
    const AlphaValues values = ValuesOf(tile, shift);
    const bool narrow = values.highest - values.lowest <= kNarrowBytes;
    const AlphaEnds ends = narrow ? FindNarrowEnds(values) : FindWideEnds(values);
    uint64_t bits = static_cast<uint64_t>(ends.a0 | ends.a1 << 8);
    StoreWord(block, static_cast<uint32_t>(bits));
    StoreWord(block + 4, 0);
    if (ends.a0 == ends.a1) {
        return;
    }
    bits |= NearestEntries(values, InterpolatedBlock(block).entries) << 16;
    StoreWord(block, static_cast<uint32_t>(bits));
    StoreWord(block + 4, static_cast<uint32_t>(bits >> 32));
}

inline void EncodeAlphaInterpolatedOnVectors(const Tile* tiles, size_t count, uint8_t* blocks,
                                             size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        EncodeInterpolated(tiles[i], 24, blocks + i * stride);
    }
}

inline void EncodeAti1nOnVectors(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        EncodeInterpolated(tiles[i], 0, blocks + i * stride);
    }
}

inline void EncodeAti2nOnVectors(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        EncodeInterpolated(tiles[i], 8, blocks + i * stride);
        EncodeInterpolated(tiles[i], 0, blocks + i * stride + kBlockBytes);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
