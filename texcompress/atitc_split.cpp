#include "texcompress/atitc_split.h"

#include <algorithm>

#include "texcompress/atitc_color.h"
#include "texcompress/atitc_regions.h"
#include "texcompress/atitc_search.h"

namespace zorvan::texcompress {
namespace {

Regions RegionsOf(const SplitSums& split) {
    Regions regions;
    for (size_t i = 0; i < 4; ++i) {
        regions.counts[i] = split.counts[i];
        const int32_t count = std::max(1, split.counts[i]);
        const int32_t* sums = split.sums[i];
        regions.colors[i] = {static_cast<uint8_t>(sums[0] / count), static_cast<uint8_t>(sums[1] / count),
                             static_cast<uint8_t>(sums[2] / count)};
    }
    return regions;
}

// A region's squared error with one colour for all of its pixels, less the sum of their squares.
int32_t RegionError(const Rgb& color, int32_t count, const int32_t* sums) {
    const auto error = [count](int32_t value, int32_t sum) { return value * (count * value - 2 * sum); };
    return error(color.r, sums[0]) + error(color.g, sums[1]) + error(color.b, sums[2]);
}

}  // namespace

bool BlackHelps(const SplitSums& split, int32_t (&medHigh)[3]) {
    Regions regions = RegionsOf(split);
    if (!ApplyBlackTrickIfHelpful(regions)) {
        return false;
    }
    medHigh[0] = regions.colors[2].r;
    medHigh[1] = regions.colors[2].g;
    medHigh[2] = regions.colors[2].b;
    return true;
}

int32_t SplitError(const SplitSums& split, uint32_t format) {
    Regions regions = RegionsOf(split);
    const bool black = ApplyBlackTrickIfHelpful(regions);
    const BlockColors colors = CandidateColors(regions, black, format);
    Palette palette;
    SetDecoderColors(colors.color0, colors.color1, palette, format);
    if (black && split.counts[2] == 0) {
        palette[1] = palette[2];  // region 1 has taken the place of region 2
    }
    int32_t error = 0;
    for (size_t i = 0; i < palette.size(); ++i) {
        error += RegionError(palette[i], split.counts[i], split.sums[i]);
    }
    return error;
}

}  // namespace zorvan::texcompress
