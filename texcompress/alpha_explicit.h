// Explicit alpha blocks: sixteen 4-bit values, pixel 0 in the lowest nibble of the first byte.
#pragma once

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Encodes 8-bit alphas by their top nibbles. block receives kBlockBytes bytes.
void atiEncodeAlphaBlockATITCA4(const ChannelTile& alpha, uint8_t* block);
// Encodes alphas that have 4 bits already; bits above them are dropped.
void EncodeAlphaBlock(const ChannelTile& alpha4, uint8_t* block);

// Decodes one block to 8-bit alphas: nibble n becomes n x 17.
void DecodeAlphaBlock(ChannelTile& alpha, const uint8_t* block);
// The same decoder under the name that goes with atiEncodeAlphaBlockATITCA4.
void atiDecodeAlphaBlockATITCA4(ChannelTile& alpha, const uint8_t* block);

}  // namespace zorvan::texcompress
