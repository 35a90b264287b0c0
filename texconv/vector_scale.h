// Sums and means of boxes, and the cubic filter, on vectors.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/scale_axis.h"

namespace QXTextureConverter {
namespace {

// One working pixel of four channels.
using Ints = std::int32_t __attribute__((vector_size(16)));
using Floats = float __attribute__((vector_size(16)));

// As many working pixels of floats as a register holds.
#ifdef __AVX2__
constexpr std::size_t kPixelsAtOnce = 2;
#else
constexpr std::size_t kPixelsAtOnce = 1;
#endif
using FloatPixels = float __attribute__((vector_size(16 * kPixelsAtOnce)));

// Results wait here for their conversion to bytes.
constexpr std::size_t kPartResults = 256;

void AddBytes(const std::uint8_t* __restrict bytes, std::size_t count, std::uint32_t* __restrict sums) {
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] += bytes[i];
    }
}

// Two channels of two pixels in one number of 64 bits: room for sums of four.
void Halve(const std::uint8_t* __restrict upper, const std::uint8_t* __restrict lower, std::size_t count,
           std::uint8_t* __restrict to) {
    constexpr std::uint64_t kEveryOther = 0x00FF00FF00FF00FF;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t a;
        std::uint64_t b;
        std::memcpy(&a, upper + i * 8, sizeof(a));
        std::memcpy(&b, lower + i * 8, sizeof(b));
        const std::uint64_t even = (a & kEveryOther) + (b & kEveryOther);
        const std::uint64_t odd = (a >> 8 & kEveryOther) + (b >> 8 & kEveryOther);
        const std::uint64_t evenMeans = (even + (even >> 32)) >> 2 & kEveryOther;
        const std::uint64_t oddMeans = (odd + (odd >> 32)) >> 2 & kEveryOther;
        const auto pixel = static_cast<std::uint32_t>(evenMeans | oddMeans << 8);
        std::memcpy(to + i * 4, &pixel, sizeof(pixel));
    }
}

// The means by multiplication: half of one more keeps a product from falling below a whole quotient, and the
// next whole number is farther away than the roundings reach (2^-15) as long as counts stay within
// kMostInMean = 2^13.
void AverageSpans(const std::uint32_t* sums, const Span* spans, std::size_t count, std::uint32_t lines,
                  std::uint8_t* to) {
    float means[kPartResults * 4];
    for (std::size_t first = 0; first < count; first += kPartResults) {
        const std::size_t here = count - first < kPartResults ? count - first : kPartResults;
        for (std::size_t i = 0; i < here; ++i) {
            const Span span = spans[first + i];
            const std::uint32_t* from = sums + std::size_t{span.first} * 4;
            Ints sum{};
            for (std::uint32_t x = 0; x < span.count; ++x) {
                Ints column;
                std::memcpy(&column, from + std::size_t{x} * 4, sizeof(column));
                sum += column;
            }
            const float factor = 1.0f / static_cast<float>(span.count * lines);
            const Floats mean = (__builtin_convertvector(sum, Floats) + 0.5f) * factor;
            std::memcpy(means + i * 4, &mean, sizeof(mean));
        }
        for (std::size_t i = 0; i < here * 4; ++i) {
            to[first * 4 + i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(means[i]));
        }
    }
}

void WidenBytes(const std::uint8_t* __restrict bytes, std::size_t count, float* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(bytes[i]);
    }
}

// The pixels of a line at one tap of neighbouring results.
[[gnu::always_inline]] inline FloatPixels PixelsAt(const float* line, const std::uint32_t* taps) {
#ifdef __AVX2__
    Floats first;
    Floats second;
    std::memcpy(&first, line + taps[0], sizeof(first));
    std::memcpy(&second, line + taps[kTaps], sizeof(second));
    return __builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7);
#else
    FloatPixels pixel;
    std::memcpy(&pixel, line + taps[0], sizeof(pixel));
    return pixel;
#endif
}

// Column after column, in each from the upper line to the lower; the sums start at 0.
template <int kUsedTaps>
[[gnu::always_inline]] inline FloatPixels CubicSums(const float* const* lines, const std::uint32_t* taps) {
    FloatPixels sums{};
#pragma GCC unroll 4
    for (int column = 0; column < kUsedTaps; ++column) {
#pragma GCC unroll 4
        for (int line = 0; line < kUsedTaps; ++line) {
            sums += kSplineWeights[column] * kSplineWeights[line] * PixelsAt(lines[line], taps + column);
        }
    }
    return sums;
}

// Calls store(first, count, sums) for every part of the row.
template <int kUsedTaps, typename Store>
[[gnu::always_inline]] inline void CubicRow(const float* const* lines, const std::uint32_t* taps,
                                            std::size_t count, const Store& store) {
    float sums[(kPartResults + kPixelsAtOnce) * 4];
    for (std::size_t first = 0; first < count; first += kPartResults) {
        const std::size_t here = count - first < kPartResults ? count - first : kPartResults;
        for (std::size_t i = 0; i < here; i += kPixelsAtOnce) {
            // The last pixel may stand alone; its neighbour then repeats it.
            const std::uint32_t* at = taps + (first + i) * kTaps;
            std::uint32_t twice[2 * kTaps];
            if (i + kPixelsAtOnce > here) {
                std::memcpy(twice, at, sizeof(twice) / 2);
                std::memcpy(twice + kTaps, at, sizeof(twice) / 2);
                at = twice;
            }
            const FloatPixels results = CubicSums<kUsedTaps>(lines, at);
            std::memcpy(sums + i * 4, &results, sizeof(results));
        }
        store(first * 4, here * 4, sums);
    }
}

// The last tap's weight of 0 changes no sum of bytes.
void CubicBytes(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    CubicRow<kTaps - 1>(lines, taps, count, [to](std::size_t first, std::size_t channels, const float* sums) {
        for (std::size_t i = 0; i < channels; ++i) {
            to[first + i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(sums[i]));
        }
    });
}

// It does where it meets an infinity.
void CubicFloats(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    CubicRow<kTaps>(lines, taps, count, [to](std::size_t first, std::size_t channels, const float* sums) {
        for (std::size_t i = 0; i < channels; ++i) {
            const float sum = sums[i] == sums[i] ? sums[i] : __builtin_nanf("");
            std::memcpy(to + (first + i) * sizeof(sum), &sum, sizeof(sum));
        }
    });
}

}  // namespace
}  // namespace QXTextureConverter
