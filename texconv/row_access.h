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

// The same with the four bytes that begin where each pixel does, whatever its size: `bytes` holds `count`
// such words.
template <typename Kernel>
void ReadWordsInRow(const std::uint8_t* data, std::uint64_t limit, std::uint64_t offset,
                    std::uint32_t pixelBytes, std::uint32_t width, const Kernel& kernel) {
    constexpr std::uint32_t kWordBytes = 4;
    constexpr std::uint32_t kPartPixels = 256;
    std::array<std::uint8_t, std::size_t{kPartPixels} * kWordBytes> words;
    for (std::uint32_t first = 0; first < width; first += kPartPixels) {
        const std::uint32_t count = std::min(width - first, kPartPixels);
        const std::uint64_t start = offset + std::uint64_t{first} * pixelBytes;
        if (start + std::uint64_t{count - 1} * pixelBytes + kWordBytes <= limit) {
            for (std::uint32_t i = 0; i < count; ++i) {
                std::memcpy(words.data() + std::size_t{i} * kWordBytes,
                            data + start + std::size_t{i} * pixelBytes, kWordBytes);
            }
        } else {
            words.fill(0);
            for (std::uint32_t i = 0; i < count; ++i) {
                const std::uint64_t at = std::min(start + std::uint64_t{i} * pixelBytes, limit);
                std::memcpy(words.data() + std::size_t{i} * kWordBytes, data + at,
                            static_cast<std::size_t>(std::min<std::uint64_t>(limit - at, kWordBytes)));
            }
        }
        kernel(words.data(), first, count);
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
