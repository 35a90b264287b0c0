// The constants of ETC1 blocks.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// The intensity modifiers: rows 2t and 2t + 1 hold table t of the format, in ascending order.
inline constexpr std::array<std::array<int32_t, 4>, 16> compressParams = {{
    {-8, -2, 2, 8},
    {-8, -2, 2, 8},
    {-17, -5, 5, 17},
    {-17, -5, 5, 17},
    {-29, -9, 9, 29},
    {-29, -9, 9, 29},
    {-42, -13, 13, 42},
    {-42, -13, 13, 42},
    {-60, -18, 18, 60},
    {-60, -18, 18, 60},
    {-80, -24, 24, 80},
    {-80, -24, 24, 80},
    {-106, -33, 33, 106},
    {-106, -33, 33, 106},
    {-183, -47, 47, 183},
    {-183, -47, 47, 183},
}};

// Whether compressParams is ready, always 1: the table is constant data, so that every thread sees
// its values from the start.
constexpr int readCompressParams() {
    return 1;
}

// From a column of compressParams to the index value in a block, and back.
inline constexpr std::array<uint8_t, 4> scramble = {3, 2, 0, 1};
inline constexpr std::array<uint8_t, 4> unscramble = {2, 3, 1, 0};

// The weights of the channels' squared errors.
inline constexpr double wR2 = 0.299;
inline constexpr double wG2 = 0.587;
inline constexpr double wB2 = 0.114;

// Bits of the first word.
inline constexpr uint32_t kEtc1DiffBit = 2;
inline constexpr uint32_t kEtc1FlipBit = 1;

// Expands a 5-bit code by repeating its top bits.
constexpr int Expand5(int code) {
    return code << 3 | code >> 2;
}

// One channel of a pixel: base colour plus modifier, kept to 0..255.
constexpr uint8_t AddModifier(int base, int modifier) {
    return static_cast<uint8_t>(std::clamp(base + modifier, 0, 255));
}

// A pixel of a half with the given base colour.
constexpr Rgb AddModifier(const Rgb& base, int modifier) {
    return {AddModifier(base.r, modifier), AddModifier(base.g, modifier), AddModifier(base.b, modifier)};
}

}  // namespace zorvan::texcompress
