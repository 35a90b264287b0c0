// ATC colour encoding: the split of a tile into four regions by luminance, and the choice of the
// palette that starts with black.
#pragma once

#include <array>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Luminances 0..255 of a tile's pixels.
using LuminanceTile = std::array<int, kTilePixels>;

// A split of a tile: region 0 is the darkest. The region of pixel k stands at bits 2k and 2k+1 of
// mask, which thereby is the block's index word.
struct Regions {
    uint32_t mask = 0;
    std::array<Rgb, 4> colors{};  // average of each region, black for an empty one
    std::array<int, 4> counts{};  // pixels of each region
};

// 100 x the largest channel / 255, 0..100.
int ColorBrightness(const Rgb& color);
// Hue in whole degrees 0..359, or -1 for a colour without one; saturation 0..100.
void ColorHueAndSaturation(const Rgb& color, int& hue, int& saturation);
// Whether two hues differ by 31 to 180 degrees. Larger differences count as near: there is no
// wrap-around. An undefined hue (-1) is near to all.
bool HuesNotNear(int hue1, int hue2);
// Whether a colour's brightness is below 15.
bool NearBlack(const Rgb& color);

// The mask of a split at t1 <= t2 <= t3: region 3 from t3 on, region 2 above t2, region 1 above t1.
uint32_t CollatePixelsIntoRegions2(const LuminanceTile& luminance, int t1, int t2, int t3);
// As CollatePixelsIntoRegions2, with thresholds between the luminances.
uint32_t CollatePixelsIntoRegions(const LuminanceTile& luminance, float t1, float t2, float t3);

// Counts and averages (rounded down) of the regions that a mask describes.
Regions CalcRegionColors(const RgbTile& pixels, uint32_t mask);

// Decides whether a block should use the palette that starts with black: its darkest region is near
// black, its brightest is not, and one of the others differs clearly in hue or saturation. If so and
// region 2 is empty, region 1 becomes region 2.
bool ApplyBlackTrickIfHelpful(Regions& regions);

}  // namespace zorvan::texcompress
