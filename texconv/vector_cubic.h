// The cubic filter on vectors.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/scale_axis.h"
#include "texconv/vector_types.h"

namespace QXTextureConverter {
namespace {

// As many working pixels of floats as a register holds.
#ifdef __AVX2__
constexpr std::size_t kPixelsAtOnce = 2;
#else
constexpr std::size_t kPixelsAtOnce = 1;
#endif
using FloatPixels = float __attribute__((vector_size(16 * kPixelsAtOnce)));

// The vector unit of 32-bit ARM takes denormal floats for 0.
#if defined(__arm__) && defined(__ARM_NEON)
constexpr bool kVectorsKeepDenormals = false;
#else
constexpr bool kVectorsKeepDenormals = true;
#endif

// The pixel of a line at a place, and as many as fit at the places of the same tap of the next results.
template <typename Pixels>
[[gnu::always_inline]] inline Pixels PixelsAt(const float* line, const std::uint32_t* places) {
    Floats first;
    std::memcpy(&first, line + places[0], sizeof(first));
    if constexpr (sizeof(Pixels) == sizeof(Floats)) {
        return first;
    } else {
        Floats second;
        std::memcpy(&second, line + places[kTaps], sizeof(second));
        return __builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7);
    }
}

// Column after column, in each from the upper line to the lower; the sums start at 0.
template <int kUsedTaps, typename Pixels>
[[gnu::always_inline]] inline Pixels CubicSums(const float* const* lines, const std::uint32_t* places) {
    Pixels sums{};
#pragma GCC unroll 4
    for (int column = 0; column < kUsedTaps; ++column) {
#pragma GCC unroll 4
        for (int line = 0; line < kUsedTaps; ++line) {
            sums += kSplineWeights[column] * kSplineWeights[line] *
                    PixelsAt<Pixels>(lines[line], places + column);
        }
    }
    return sums;
}

void WidenBytes(const std::uint8_t* __restrict bytes, std::size_t count, float* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(bytes[i]);
    }
}

[[gnu::always_inline]] inline void Truncate(const float* __restrict sums, std::size_t count,
                                            std::uint8_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(sums[i]));
    }
}

// The last tap's weight of 0 changes no sum of bytes.
void CubicBytes(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    constexpr int kUsedTaps = kTaps - 1;
    float sums[kPartResults * 4];
    for (std::size_t first = 0; first < count; first += kPartResults) {
        const std::size_t here = count - first < kPartResults ? count - first : kPartResults;
        const std::uint32_t* places = taps + first * kTaps;
        std::size_t i = 0;
        for (; i + kPixelsAtOnce <= here; i += kPixelsAtOnce) {
            const auto results = CubicSums<kUsedTaps, FloatPixels>(lines, places + i * kTaps);
            std::memcpy(sums + i * 4, &results, sizeof(results));
        }
        for (; i < here; ++i) {
            const auto result = CubicSums<kUsedTaps, Floats>(lines, places + i * kTaps);
            std::memcpy(sums + i * 4, &result, sizeof(result));
        }
        Truncate(sums, here * 4, to + first * 4);
    }
}

// The weight of 0 counts where it meets an infinity.
void CubicFloats(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    if constexpr (!kVectorsKeepDenormals) {
        return kScalarRowKernels.cubicFloats(lines, taps, count, to);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Floats sums = CubicSums<kTaps, Floats>(lines, taps + i * kTaps);
        for (int c = 0; c < 4; ++c) {
            const float sum = sums[c] == sums[c] ? sums[c] : __builtin_nanf("");
            std::memcpy(to, &sum, sizeof(sum));
            to += sizeof(sum);
        }
    }
}

}  // namespace
}  // namespace QXTextureConverter
