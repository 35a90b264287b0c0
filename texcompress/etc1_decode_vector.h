// ETC1 decoding on vectors, pixels in 16-bit lanes. See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// Small and large modifier of each table; the others are their negatives.
constexpr int16_t kEtc1Modifiers[8][2] = {{2, 8},   {5, 17},  {9, 29},   {13, 42},
                                          {18, 60}, {24, 80}, {33, 106}, {47, 183}};

// Two halves' values of one channel.
struct Etc1Pair {
    uint8_t values[2];
};

// The base values in the eight bits of the first word that begin at shift. A differential second value
// outside of 0..31 wraps.
[[gnu::always_inline]] inline Etc1Pair Etc1BaseValues(uint32_t word1, int shift) {
    const int bits = static_cast<int>(word1 >> shift & 255);
    if ((word1 & 2) == 0) {
        return {{static_cast<uint8_t>((bits >> 4) * 17), static_cast<uint8_t>((bits & 15) * 17)}};
    }
    const int first = bits >> 3;
    const int second = first + ((bits & 7) ^ 4) - 4;
    return {{static_cast<uint8_t>(first << 3 | first >> 2), static_cast<uint8_t>(second << 3 | second >> 2)}};
}

// What depends on a pixel's place alone. Lane k belongs to pixel k, counted from 0 or 8.
struct Etc1Places {
    I16 bits;           // its bit in either half of the second word
    I16 right, bottom;  // all ones in the second half, unflipped and flipped
};

inline Etc1Places Etc1PlacesFrom(int first) {
    Etc1Places places{};
    for (int i = 0; i < kShortLanes; ++i) {
        const int row = (first + i) / 4;
        const int column = (first + i) % 4;
        places.bits[i] = static_cast<int16_t>(1u << (4 * column + row));
        places.right[i] = column < 2 ? 0 : -1;
        places.bottom[i] = row < 2 ? 0 : -1;
    }
    return places;
}

struct Etc1Block {
    uint32_t word1, word2;

    [[gnu::always_inline]] I16 Channel(int shift, const I16& second, const I16& modifiers) const {
        const Etc1Pair base = Etc1BaseValues(word1, shift);
        const I16 values = Select(second, I16{} + base.values[1], I16{} + base.values[0]) + modifiers;
        return Min(Max(values, I16{}), I16{} + static_cast<int16_t>(255));
    }

    [[gnu::always_inline]] void Decode(const Etc1Places& places, uint32_t* pixels) const {
        const int16_t(&table0)[2] = kEtc1Modifiers[word1 >> 5 & 7];
        const int16_t(&table1)[2] = kEtc1Modifiers[word1 >> 2 & 7];
        const I16 second = (word1 & 1) != 0 ? places.bottom : places.right;
        const I16 negative = ((I16{} + static_cast<int16_t>(word2 >> 16)) & places.bits) == places.bits;
        const I16 large = ((I16{} + static_cast<int16_t>(word2)) & places.bits) == places.bits;
        const I16 smalls = Select(second, I16{} + table1[0], I16{} + table0[0]);
        const I16 larges = Select(second, I16{} + table1[1], I16{} + table0[1]);
        const I16 modifiers = (Select(large, larges, smalls) ^ negative) - negative;
        const I16 red = Channel(24, second, modifiers);
        const I16 green = Channel(16, second, modifiers);
        const I16 blue = Channel(8, second, modifiers);
        Interleave(red | green << 8, blue, pixels);
    }
};

inline void DecodeEtc1OnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (int first = 0; first < 16; first += kShortLanes) {
        const Etc1Places places = Etc1PlacesFrom(first);
        for (size_t i = 0; i < count; ++i) {
            const uint8_t* words = blocks + i * stride;
            const Etc1Block block{LoadBigEndianWord(words), LoadBigEndianWord(words + 4)};
            block.Decode(places, tiles[i].pixels + first);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress
