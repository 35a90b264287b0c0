#include "texcompress/pixel_target.h"

#include <algorithm>
#include <cstddef>

#include "texcompress/texcompress.h"

namespace zorvan::texcompress {

void ScatterTile(const Tile& tile, const PixelTarget& target, uint32_t x, uint32_t y) {
    const uint32_t columns = std::min(kTileSize, target.width - x);
    const uint32_t rows = std::min(kTileSize, target.height - y);
    const size_t pitch = static_cast<size_t>(target.width) * target.bytesPerPixel;
    const size_t redByte = target.order == TXC_ORDER_RGB ? 0 : 2;
    for (uint32_t row = 0; row < rows; ++row) {
        uint8_t* pixel = target.pixels + (y + row) * pitch + static_cast<size_t>(x) * target.bytesPerPixel;
        for (uint32_t column = 0; column < columns; ++column) {
            const uint32_t word = tile.pixels[row * kTileSize + column];
            pixel[redByte] = static_cast<uint8_t>(word);
            pixel[1] = static_cast<uint8_t>(word >> 8);
            pixel[2 - redByte] = static_cast<uint8_t>(word >> 16);
            if (target.bytesPerPixel == 4) {
                pixel[3] = static_cast<uint8_t>(word >> 24);
            }
            pixel += target.bytesPerPixel;
        }
    }
}

}  // namespace zorvan::texcompress
