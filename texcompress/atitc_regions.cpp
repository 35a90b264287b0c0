#include "texcompress/atitc_regions.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace zorvan::texcompress {
namespace {

template <typename Threshold>
uint32_t Collate(const LuminanceTile& luminance, Threshold t1, Threshold t2, Threshold t3) {
    uint32_t mask = 0;
    for (uint32_t k = 0; k < kTilePixels; ++k) {
        const auto value = static_cast<Threshold>(luminance[k]);
        const uint32_t region = value >= t3 ? 3 : value > t2 ? 2 : value > t1 ? 1 : 0;
        mask |= region << (2 * k);
    }
    return mask;
}

struct HueAndSaturation {
    int hue, saturation;
};

HueAndSaturation HueAndSaturationOf(const Rgb& color) {
    HueAndSaturation result;
    ColorHueAndSaturation(color, result.hue, result.saturation);
    return result;
}

bool IsSaturatedBeside(int saturation, int reference) {
    return saturation > 2 * reference || saturation > 70;
}

}  // namespace

int ColorBrightness(const Rgb& color) {
    return 100 * std::max({color.r, color.g, color.b}) / 255;
}

void ColorHueAndSaturation(const Rgb& color, int& hue, int& saturation) {
    const int high = std::max({color.r, color.g, color.b});
    const int range = high - std::min({color.r, color.g, color.b});
    saturation = high == 0 ? 0 : 100 * range / high;
    if (saturation == 0) {
        hue = -1;
        return;
    }
    const auto d = static_cast<float>(range);
    float sextant;
    if (color.r == high) {
        sextant = static_cast<float>(color.g - color.b) / d;
    } else if (color.g == high) {
        sextant = 2.0f + static_cast<float>(color.b - color.r) / d;
    } else {
        sextant = 4.0f + static_cast<float>(color.r - color.g) / d;
    }
    hue = static_cast<int>(sextant * 60.0f);
    if (hue < 0) {
        hue += 360;
    }
}

bool HuesNotNear(int hue1, int hue2) {
    if (hue1 < 0 || hue2 < 0) {
        return false;
    }
    const int difference = std::abs(hue1 - hue2);
    return difference > 30 && difference < 181;
}

bool NearBlack(const Rgb& color) {
    return ColorBrightness(color) < 15;
}

uint32_t CollatePixelsIntoRegions2(const LuminanceTile& luminance, int t1, int t2, int t3) {
    return Collate(luminance, t1, t2, t3);
}

uint32_t CollatePixelsIntoRegions(const LuminanceTile& luminance, float t1, float t2, float t3) {
    return Collate(luminance, t1, t2, t3);
}

Regions CalcRegionColors(const RgbTile& pixels, uint32_t mask) {
    struct Sum {
        int r = 0, g = 0, b = 0;
    };
    std::array<Sum, 4> sums;
    Regions regions;
    regions.mask = mask;
    for (const Rgb& pixel : pixels) {
        const uint32_t region = mask & 3;
        mask >>= 2;
        sums[region].r += pixel.r;
        sums[region].g += pixel.g;
        sums[region].b += pixel.b;
        ++regions.counts[region];
    }
    for (size_t i = 0; i < sums.size(); ++i) {
        const int count = std::max(1, regions.counts[i]);
        regions.colors[i] = {static_cast<uint8_t>(sums[i].r / count), static_cast<uint8_t>(sums[i].g / count),
                             static_cast<uint8_t>(sums[i].b / count)};
    }
    return regions;
}

bool ApplyBlackTrickIfHelpful(Regions& regions) {
    auto& [mask, colors, counts] = regions;
    if (counts[0] == 0 || !NearBlack(colors[0]) || ColorBrightness(colors[3]) < 56) {
        return false;
    }
    const HueAndSaturation high = HueAndSaturationOf(colors[3]);
    const HueAndSaturation medHigh = counts[2] > 0 ? HueAndSaturationOf(colors[2]) : high;
    const HueAndSaturation medLow = counts[1] > 0 ? HueAndSaturationOf(colors[1]) : high;
    const bool helpful = HuesNotNear(high.hue, medHigh.hue) || HuesNotNear(high.hue, medLow.hue) ||
                         (counts[2] > 0 && IsSaturatedBeside(medHigh.saturation, high.saturation)) ||
                         (counts[1] > 0 && IsSaturatedBeside(medLow.saturation, high.saturation));
    if (!helpful) {
        return false;
    }
    if (counts[2] == 0) {
        colors[2] = std::exchange(colors[1], Rgb{0, 0, 0});
        counts[2] = std::exchange(counts[1], 0);
        const uint32_t regionOne = mask & ~(mask >> 1) & 0x55555555u;
        mask ^= regionOne | regionOne << 1;
    }
    return true;
}

}  // namespace zorvan::texcompress
