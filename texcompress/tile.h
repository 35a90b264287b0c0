// The 4x4 tile that every block codec works on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zorvan::texcompress {

inline constexpr uint32_t kTileSize = 4;     // pixels on one side
inline constexpr uint32_t kTilePixels = 16;  // pixels of one tile

// One pixel, 8 bits per channel; r, g and b are channels 0, 1 and 2.
struct Rgb {
    uint8_t r, g, b;
    bool operator==(const Rgb&) const = default;
};

// 16 pixels in row order: pixel k lies in row k / 4, column k % 4.
using RgbTile = std::array<Rgb, kTilePixels>;

// 16 values of one channel, in the order of RgbTile.
using ChannelTile = std::array<uint8_t, kTilePixels>;

// What the image drivers hand to the block kernels and get back from them: pixels in the order of
// RgbTile, red in the lowest byte, then green, blue and alpha.
struct Tile {
    alignas(32) uint32_t pixels[kTilePixels];
    bool operator==(const Tile&) const = default;
};

// Bytes of one colour, alpha or single-channel block.
inline constexpr size_t kBlockBytes = 8;

// Always inlined, so that files compiled for other instruction sets leave no copies to the linker.

// Reads a little-endian 32-bit word.
[[gnu::always_inline]] inline uint32_t LoadWord(const uint8_t* bytes) {
    return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16 |
           static_cast<uint32_t>(bytes[3]) << 24;
}

// Writes a little-endian 32-bit word.
[[gnu::always_inline]] inline void StoreWord(uint8_t* bytes, uint32_t word) {
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<uint8_t>(word >> (8 * i));
    }
}

// Reads a big-endian 32-bit word.
[[gnu::always_inline]] inline uint32_t LoadBigEndianWord(const uint8_t* bytes) {
    return bytes[3] | static_cast<uint32_t>(bytes[2]) << 8 | static_cast<uint32_t>(bytes[1]) << 16 |
           static_cast<uint32_t>(bytes[0]) << 24;
}

// Writes a big-endian 32-bit word.
[[gnu::always_inline]] inline void StoreBigEndianWord(uint8_t* bytes, uint32_t word) {
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<uint8_t>(word >> (24 - 8 * i));
    }
}

}  // namespace zorvan::texcompress
