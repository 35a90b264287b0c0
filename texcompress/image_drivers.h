// The loops over an image's blocks, in raster order and in batches of tiles on the stack.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "texcompress/block_kernels.h"
#include "texcompress/pixel_target.h"
#include "texcompress/source_pixels.h"
#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Tiles that are handed to a kernel at once, at most.
inline constexpr size_t kBatchTiles = 16;

// Calls visit(column, row, count) for runs of up to kBatchTiles blocks that cover width x height
// pixels, in raster order; column and row are those of the first block, in blocks.
template <typename Visit>
void ForEachBatch(uint32_t width, uint32_t height, Visit visit) {
    const uint32_t columns = width / kTileSize + (width % kTileSize != 0);
    const uint32_t rows = height / kTileSize + (height % kTileSize != 0);
    if (columns == 0) {
        return;
    }
    for (uint32_t row = 0; row < rows; ++row) {
        for (uint32_t column = 0; column < columns; column += kBatchTiles) {
            visit(column, row, std::min<size_t>(kBatchTiles, columns - column));
        }
    }
}

// Gathers an image's tiles and calls encode(tiles, count, blocks) for each run of them. blocks
// receives blockBytes bytes per block.
template <typename Encode>
void EncodeTiles(GatherKernel gather, const SourcePixels& source, size_t blockBytes, void* blocks,
                 Encode encode) {
    std::array<Tile, kBatchTiles> tiles;
    auto* out = static_cast<uint8_t*>(blocks);
    ForEachBatch(source.Width(), source.Height(), [&](uint32_t column, uint32_t row, size_t count) {
        gather(source, column * kTileSize, row * kTileSize, count, tiles.data());
        encode(tiles.data(), count, out);
        out += count * blockBytes;
    });
}

// Calls decode(blocks, count, tiles) for each run of blocks and writes the tiles to the target.
template <typename Decode>
void DecodeTiles(ScatterKernel scatter, const uint8_t* blocks, size_t blockBytes, const PixelTarget& target,
                 Decode decode) {
    std::array<Tile, kBatchTiles> tiles;
    ForEachBatch(target.width, target.height, [&](uint32_t column, uint32_t row, size_t count) {
        decode(blocks, count, tiles.data());
        scatter(tiles.data(), count, target, column * kTileSize, row * kTileSize);
        blocks += count * blockBytes;
    });
}

}  // namespace zorvan::texcompress
