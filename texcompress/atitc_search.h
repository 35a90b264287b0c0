// ATC colour encoding: the full search over splits and the fast encoder with one split.
#pragma once

#include <cstdint>

#include "texcompress/atitc_color.h"
#include "texcompress/atitc_regions.h"
#include "texcompress/tile.h"

namespace zorvan::texcompress {

// 16-bit codes of a block's end colours.
struct BlockColors {
    uint32_t color0, color1;
};

// The end colours of a split. The legacy format has no mode bit: the order of its colours tells the decoder
// to use black, which may go wrong where they are about as bright.
BlockColors CandidateColors(const Regions& regions, bool blackTrick, uint32_t format);

// The block's error: squared distances of source and decoded pixels, summed without weights.
uint32_t CalcBlockMSE(uint32_t indexWord, uint32_t color0, uint32_t color1, const RgbTile& pixels,
                      uint32_t format);

// Moves each pixel to its nearest palette entry, the first of equally near ones. Returns whether that
// changed the mask and the new mask was accepted, which takes pixels in region 3 and, unless the
// palette starts with black or region 3 holds all, in region 0; otherwise mask stays as it is.
bool CheckPixelRegionAssignment(const RgbTile& pixels, const Palette& palette, bool blackTrick,
                                uint32_t& mask);

// Encodes one block by trying all 120 pairs of luminances as the bounds of the split. format is
// TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY; color0 and color1 receive 16-bit codes. Returns the index
// word.
uint32_t EncodeRGBBlock(const RgbTile& pixels, uint32_t* color0, uint32_t* color1, uint32_t format);
// EncodeRGBBlock for TXC_FORMAT_ATC.
uint32_t atiEncodeRGBBlockATITC(const RgbTile& pixels, uint32_t* color0, uint32_t* color1);

// As EncodeRGBBlock with one split at quarters of the luminance range; error receives CalcBlockMSE of
// the result.
uint32_t EncodeRGBBlockFast(const RgbTile& pixels, uint32_t* color0, uint32_t* color1, uint32_t format,
                            uint32_t* error);

}  // namespace zorvan::texcompress
