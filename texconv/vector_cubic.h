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

#if defined(__AVX2__)

// Four pixels are loaded into either half of a register, as its bytes move within the halves only; kFirst is
// the first of two that become floats, the other comes two later.
template <int kFirst>
[[gnu::always_inline]] inline void WidenEverySecond(const __m256i& copies, float* to) {
    constexpr int kPlace = static_cast<int>(0x80808000 | kFirst * 4);  // high bits give bytes of 0
    const __m256i places = _mm256_setr_epi32(kPlace, kPlace + 1, kPlace + 2, kPlace + 3, kPlace + 8,
                                             kPlace + 9, kPlace + 10, kPlace + 11);
    _mm256_storeu_ps(to, _mm256_cvtepi32_ps(_mm256_shuffle_epi8(copies, places)));
}

#endif

void WidenPairs(const std::uint8_t* __restrict rgba, std::size_t count, float* __restrict even,
                float* __restrict odd) {
    std::size_t i = 0;
#if defined(__AVX2__)
    for (; i + 2 <= count; i += 2) {
        const __m256i copies = _mm256_broadcastsi128_si256(LoadVector<__m128i>(rgba + i * 8));
        WidenEverySecond<0>(copies, even + i * 4);
        WidenEverySecond<1>(copies, odd + i * 4);
    }
#endif
    for (; i < count; ++i) {
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
