#include "texcompress/image_drivers.h"

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
            const size_t k = row * kTileSize + column;
            pixel[redByte] = tile.rgb[k].r;
            pixel[1] = tile.rgb[k].g;
            pixel[2 - redByte] = tile.rgb[k].b;
            if (target.bytesPerPixel == 4) {
                pixel[3] = tile.alpha[k];
            }
            pixel += target.bytesPerPixel;
        }
    }
}

}  // namespace zorvan::texcompress
