// 3Dc blocks: one (ATI1N) or two (ATI2N) interpolated blocks of a tile's colour channels.
#pragma once

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Encodes channel 0. block receives kBlockBytes bytes.
void atiEncodeATI1N(const RgbTile& tile, uint8_t* block);
// Decodes one block into all three channels.
void atiDecodeATI1N(RgbTile& tile, const uint8_t* block);

// Encodes channel 1, then channel 0. block receives 2 x kBlockBytes bytes.
void atiEncodeATI2N(const RgbTile& tile, uint8_t* block);
// Decodes channel 1, then channel 0; channel 2 becomes 255.
void atiDecodeATI2N(RgbTile& tile, const uint8_t* block);

}  // namespace zorvan::texcompress
