// Rows of the caller's pixels, clipped to the bytes that may be touched.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace QXTextureConverter {

inline constexpr std::uint32_t kLargestPixel = 16;  // bytes

// How many of `width` elements of `elementBits` each, starting at byte `offset`, lie whole inside
// the first `limit` bytes.
inline std::uint32_t ElementsInside(std::uint64_t limit, std::uint64_t offset, std::uint32_t elementBits,
                                    std::uint32_t width) {
    const std::uint64_t bytes = offset < limit ? limit - offset : 0;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes * 8 / elementBits, width));
}

// Calls kernel(bytes, first, count) so that every pixel of a row is read once, in order: `bytes`
// holds `count` pixels from number `first` on. Bytes from `limit` on are not touched; they read
// as 0. pixelBytes is 1 to kLargestPixel.
template <typename Kernel>
void ReadRow(const std::uint8_t* data, std::uint64_t limit, std::uint64_t offset, std::uint32_t pixelBytes,
             std::uint32_t width, const Kernel& kernel) {
    const std::uint32_t whole = ElementsInside(limit, offset, pixelBytes * 8, width);
    if (whole > 0) {
        kernel(data + offset, 0u, whole);
    }
    std::array<std::uint8_t, kLargestPixel> pixel{};
    for (std::uint32_t x = whole; x < width; ++x) {
        const std::uint64_t start = offset + std::uint64_t{x} * pixelBytes;
        if (start < limit) {
            std::memcpy(pixel.data(), data + start, static_cast<std::size_t>(limit - start));
        }
        kernel(pixel.data(), x, 1u);
        pixel.fill(0);
    }
}

// Calls kernel(bytes, x, 1) for every pixel x of a row, with the four bytes that begin where the pixel
// does, whatever its size. Bytes from `limit` on are not touched; they read as 0.
template <typename Kernel>
void ReadWordsInRow(const std::uint8_t* data, std::uint64_t limit, std::uint64_t offset,
                    std::uint32_t pixelBytes, std::uint32_t width, const Kernel& kernel) {
    for (std::uint32_t x = 0; x < width; ++x) {
        const std::uint64_t start = offset + std::uint64_t{x} * pixelBytes;
        ReadRow(data, limit, start, 4, 1,
                [&](const std::uint8_t* bytes, std::uint32_t, std::uint32_t) { kernel(bytes, x, 1u); });
    }
}

// The same for writing: kernel(bytes, first, count) stores pixels; what would fall on bytes from
// `limit` on is dropped.
template <typename Kernel>
void WriteRow(std::uint8_t* data, std::uint64_t limit, std::uint64_t offset, std::uint32_t pixelBytes,
              std::uint32_t width, const Kernel& kernel) {
    const std::uint32_t whole = ElementsInside(limit, offset, pixelBytes * 8, width);
    if (whole > 0) {
        kernel(data + offset, 0u, whole);
    }
    const std::uint64_t start = offset + std::uint64_t{whole} * pixelBytes;
    if (whole < width && start < limit) {
        std::array<std::uint8_t, kLargestPixel> pixel{};
        kernel(pixel.data(), whole, 1u);
        std::memcpy(data + start, pixel.data(), static_cast<std::size_t>(limit - start));
    }
}

}  // namespace QXTextureConverter
