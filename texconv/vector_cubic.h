// The cubic filter on vectors.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/scale_axis.h"
#include "texconv/vector_types.h"

namespace QXTextureConverter {
namespace {

// The vector unit of 32-bit ARM takes denormal floats for 0.
#if defined(__arm__) && defined(__ARM_NEON)
constexpr bool kVectorsKeepDenormals = false;
#else
constexpr bool kVectorsKeepDenormals = true;
#endif

void WidenBytes(const std::uint8_t* __restrict bytes, std::size_t count, float* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(bytes[i]);
    }
}

void WidenPairs(const std::uint8_t* __restrict rgba, std::size_t count, float* __restrict even,
                float* __restrict odd) {
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < 4; ++c) {
            even[i * 4 + c] = static_cast<float>(rgba[i * 8 + c]);
            odd[i * 4 + c] = static_cast<float>(rgba[i * 8 + 4 + c]);
        }
    }
}

// Column after column, in each from the upper line to the lower. A sum of bytes need not start at 0.
void CubicBytes(const float* const* runs, std::size_t count, std::uint8_t* __restrict to) {
    constexpr auto weight = [](int run) {
        return kSplineWeights[run / kByteTaps] * kSplineWeights[run % kByteTaps];
    };
    const float* at[kByteTaps * kByteTaps];
    std::memcpy(at, runs, sizeof(at));
    for (std::size_t i = 0; i < count * 4; ++i) {
        float sum = weight(0) * at[0][i];
#pragma GCC unroll 8
        for (int run = 1; run < kByteTaps * kByteTaps; ++run) {
            sum += weight(run) * at[run][i];
        }
        to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(sum));
    }
}

void CubicFloats(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    if constexpr (!kVectorsKeepDenormals) {
        return kScalarRowKernels.cubicFloats(lines, taps, count, to);
    }
    for (std::size_t i = 0; i < count; ++i, taps += kTaps) {
        Floats sums{};
#pragma GCC unroll 16
        for (int tap = 0; tap < kTaps * kTaps; ++tap) {
            Floats pixel;
            std::memcpy(&pixel, lines[tap % kTaps] + taps[tap / kTaps], sizeof(pixel));
            sums += kSplineWeights[tap / kTaps] * kSplineWeights[tap % kTaps] * pixel;
        }
        for (int c = 0; c < 4; ++c) {
            const float sum = sums[c] == sums[c] ? sums[c] : __builtin_nanf("");
            std::memcpy(to, &sum, sizeof(sum));
            to += sizeof(sum);
        }
    }
}

}  // namespace
}  // namespace QXTextureConverter
