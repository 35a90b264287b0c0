// ETC1 blocks: the perceptual encoders. Images are packed pixels, width pixels a row; blocks are the
// 4x4 pixels at (x, y). word1 receives the colours, tables and mode bits, word2 the index bits.
#pragma once

#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Codes one 2 wide, 4 high half with a given base colour: tries all tables and returns the smallest
// weighted squared error. Index bit 4 x column + row, counted from the half's corner, belongs to the
// pixel in that column and row.
double tryalltables_3bittable2x4percep(const Rgb* image, int width, int x, int y, const Rgb& base,
                                       uint32_t& bestTable, uint32_t& bestIndicesMSB,
                                       uint32_t& bestIndicesLSB);
// The same for a 4 wide, 2 high half.
double tryalltables_3bittable4x2percep(const Rgb* image, int width, int x, int y, const Rgb& base,
                                       uint32_t& bestTable, uint32_t& bestIndicesMSB,
                                       uint32_t& bestIndicesLSB);

// The error of one half of a tile (left, right, top or bottom) with a given base colour and table, as
// tryalltables_3bittable2x4percep and the 4 wide form compute it.
double HalfErrorOfTable(const Tile& tile, int half, const Rgb& base, uint32_t table);

// Encodes with each half's average rounded to the nearest code as its base colour.
void compressBlockDiffFlipAveragePerceptual(const Rgb* image, int width, int x, int y, uint32_t& word1,
                                            uint32_t& word2);
// Encodes with base colours whose channels are quantized together.
void compressBlockDiffFlipCombinedPerceptual(const Rgb* image, int width, int x, int y, uint32_t& word1,
                                             uint32_t& word2);
// The better of the two encoders above, the average one where they are equally good. decodeScratch is
// an image of the same size whose block is overwritten.
void compressBlockDiffFlipFastPerceptual(const Rgb* image, Rgb* decodeScratch, int width, int x, int y,
                                         uint32_t& word1, uint32_t& word2);

// Sum of the weighted squared differences of two images' blocks.
double calcBlockPerceptualErrorRGB(const Rgb* imageA, const Rgb* imageB, int width, int x, int y);

// Encodes one tile with compressBlockDiffFlipFastPerceptual.
void atiEncodeRGBBlockETC(const RgbTile& tile, uint32_t& word1, uint32_t& word2);

}  // namespace zorvan::texcompress
