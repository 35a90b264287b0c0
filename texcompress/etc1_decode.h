// ETC1 blocks: the decoder.
#pragma once

#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Decodes one block into the 4x4 pixels at (x, y) of an image of packed pixels, width pixels a row.
// A differential block whose second colour leaves 0..31, which the format does not define, wraps to
// 8 bits.
void decompressBlockDiffFlip(uint32_t word1, uint32_t word2, Rgb* image, int width, int x, int y);

// Decodes one block into a tile.
void atiDecodeRGBBlockETC(RgbTile& tile, uint32_t word1, uint32_t word2);

}  // namespace zorvan::texcompress
