// Decoded images in the caller's memory.
#pragma once

#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Packed pixels.
struct PixelTarget {
    uint8_t* pixels;
    uint32_t width, height;
    uint32_t bytesPerPixel;  // 3, or 4 with alpha
    uint32_t order;          // TXC_ORDER_RGB or TXC_ORDER_BGR
};

// Writes the pixels of a tile that lie inside the target.
void ScatterTile(const Tile& tile, const PixelTarget& target, uint32_t x, uint32_t y);

}  // namespace zorvan::texcompress
