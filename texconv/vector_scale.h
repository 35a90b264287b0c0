// Sums and means of boxes on vectors.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/vector_types.h"

namespace QXTextureConverter {
namespace {

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

}  // namespace
}  // namespace QXTextureConverter
