// The two kinds of working pixel, bytes and floats, and the arithmetic in which they differ.
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "texconv/half_float.h"

namespace QXTextureConverter {

// Processors differ in the sign and payload of the NaN that an operation yields.
inline float OneNan(float value) {
    return std::isnan(value) ? std::bit_cast<float>(0x7FC00000u) : value;
}

struct BytePixel {
    using Channel = std::uint8_t;
    using Sum = std::uint64_t;
    static constexpr std::uint32_t kBytes = 4;

    static Channel Mean(Sum sum, std::uint64_t count) { return static_cast<Channel>(sum / count); }
    static Channel MeanOfFour(Sum sum) { return static_cast<Channel>(sum >> 2); }
    static Channel FromFloat(float value) { return static_cast<Channel>(TruncateToUnsigned(value)); }
};

struct FloatPixel {
    using Channel = float;
    using Sum = float;
    static constexpr std::uint32_t kBytes = 16;

    static Channel Mean(Sum sum, std::uint64_t count) { return OneNan(sum / static_cast<float>(count)); }
    static Channel MeanOfFour(Sum sum) { return OneNan(sum * 0.25f); }
    static Channel FromFloat(float value) { return OneNan(value); }
};

template <typename Pixel>
using Channels = std::array<typename Pixel::Channel, 4>;

template <typename Pixel>
Channels<Pixel> LoadPixel(const unsigned char* bytes) {
    static_assert(sizeof(Channels<Pixel>) == Pixel::kBytes);
    Channels<Pixel> pixel;
    std::memcpy(pixel.data(), bytes, Pixel::kBytes);
    return pixel;
}

template <typename Pixel>
void AddPixel(std::array<typename Pixel::Sum, 4>& sums, const unsigned char* bytes) {
    const Channels<Pixel> pixel = LoadPixel<Pixel>(bytes);
    for (std::size_t c = 0; c < sums.size(); ++c) {
        sums[c] += pixel[c];
    }
}

template <typename Pixel>
void StorePixel(const Channels<Pixel>& pixel, unsigned char* bytes) {
    std::memcpy(bytes, pixel.data(), Pixel::kBytes);
}

}  // namespace QXTextureConverter
