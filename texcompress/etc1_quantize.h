// ETC1 blocks: base colours from the float averages of half blocks.
#pragma once

#include <array>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Average red, green and blue, 0..255.
using AverageColor = std::array<float, 3>;

// A base colour as its codes (0..31 or 0..15 per channel) and as the 8-bit colour that they stand for.
struct BaseColor {
    std::array<int, 3> codes;
    Rgb expanded;
};

// Average of the 2 wide, 4 high half at (x, y) of an image of packed pixels, width pixels a row.
AverageColor computeAverageColor2x4noQuantFloat(const Rgb* image, int width, int x, int y);
// Average of the 4 wide, 2 high half at (x, y).
AverageColor computeAverageColor4x2noQuantFloat(const Rgb* image, int width, int x, int y);

// Chooses codes of 5 bits per channel, above or below the average, such that the channels' errors
// differ least from each other: a common error is what the modifiers can make good.
BaseColor quantize555ColorCombinedPerceptual(const AverageColor& average);
// The same with codes of 4 bits.
BaseColor quantize444ColorCombinedPerceptual(const AverageColor& average);

// Rounds each channel to the nearest code of 5 bits.
BaseColor Quantize555Nearest(const AverageColor& average);
// Rounds each channel to the nearest code of 4 bits.
BaseColor Quantize444Nearest(const AverageColor& average);

}  // namespace zorvan::texcompress
