// Sizes of images, mip levels and their blocks.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// How the blocks of an image are laid out.
struct BlockLayout {
    size_t blockBytes;   // bytes of one 4x4 block, alpha block included
    size_t colorOffset;  // where the colour block begins in it
};

// The layout of formats with one 8-byte colour block and, if alpha is set, an alpha block before it.
constexpr BlockLayout ColorLayout(bool alpha) {
    return alpha ? BlockLayout{2 * kBlockBytes, kBlockBytes} : BlockLayout{kBlockBytes, 0};
}

// A mip level's width or height: halved level times, at least 1.
constexpr uint32_t LevelExtent(uint32_t extent, uint32_t level) {
    return level < 32 ? std::max(1u, extent >> level) : 1;
}

// Number of 4x4 blocks that cover width x height pixels.
constexpr uint64_t BlockCount(uint32_t width, uint32_t height) {
    return ((uint64_t{width} + 3) / 4) * ((uint64_t{height} + 3) / 4);
}

// Bytes of the first levels of a mip chain, no more than the chain has. Size is uint32_t for sizes
// that wrap as the interface states them, size_t for distances in memory.
template <typename Size>
constexpr Size ChainBytes(uint32_t width, uint32_t height, uint32_t levels, size_t blockBytes) {
    const auto extent = [](uint32_t pixels) { return std::max<Size>(4, (Size{pixels} + 3) / 4 * 4); };
    // A 4x4 block of 16 bytes has one byte per pixel, one of 8 bytes half of that.
    const int shift = blockBytes == 2 * kBlockBytes ? 0 : 1;
    const auto chainLevels = static_cast<uint32_t>(std::bit_width(std::max(width, height)));
    Size bytes = 0;
    for (uint32_t level = 0; level < std::min(levels, chainLevels); ++level) {
        const Size pixels = extent(LevelExtent(width, level)) * extent(LevelExtent(height, level));
        bytes += pixels >> shift;
    }
    return bytes;
}

// Whether `count` items of `bytes` bytes fit into a buffer of `capacity` bytes; bytes is not 0.
constexpr bool Fits(uint64_t count, uint64_t bytes, uint32_t capacity) {
    return count <= capacity / bytes;
}

}  // namespace zorvan::texcompress
