// The nearest colour of a palette in a loop that compilers turn into vectors.
#pragma once

#include "texconv/row_kernels.h"

namespace QXTextureConverter {
namespace {

// Distances take 18 bits; the entry's number below them makes the least sum the first of equal ones.
std::uint32_t Nearest(const PaletteColors& palette, const std::uint8_t* rgba) {
    constexpr std::int32_t kFarthest = 0x7FFFFFFF;
    const auto red = static_cast<std::int16_t>(rgba[0]);
    const auto green = static_cast<std::int16_t>(rgba[1]);
    const auto blue = static_cast<std::int16_t>(rgba[2]);
    const auto alpha = static_cast<std::int16_t>(rgba[3]);
    const auto count = static_cast<std::int32_t>(palette.count);
    std::int32_t best = kFarthest;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto dr = static_cast<std::int16_t>(palette.red[i] - red);
        const auto dg = static_cast<std::int16_t>(palette.green[i] - green);
        const auto db = static_cast<std::int16_t>(palette.blue[i] - blue);
        const auto da = static_cast<std::int16_t>(palette.alpha[i] - alpha);
        const std::int32_t distance = dr * dr + dg * dg + db * db + da * da;
        const std::int32_t ranked = distance * 256 + i;
        best = ranked < best ? ranked : best;
    }
    return static_cast<std::uint32_t>(best) & 0xFF;
}

}  // namespace
}  // namespace QXTextureConverter
