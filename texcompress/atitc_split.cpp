#include "texcompress/atitc_split.h"

#include <algorithm>

#include "texcompress/atitc_color.h"
#include "texcompress/atitc_regions.h"

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

/// A region's squared error with one colour for all of its pixels, less the sum of their squares.
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

void ReplaceByBlackError(const SplitSums& split, float& error) {
    Regions regions = RegionsOf(split);
    if (!ApplyBlackTrickIfHelpful(regions)) {
        return;
    }
    const Rgb high = Color565To888(Color888To565(regions.colors[3]));
    Rgb medHigh;
    Color1555To888(Color888To1555(regions.colors[2], true), medHigh);
    const Rgb medLow = DeriveMedLowFromHighAndMedHighColors(high, medHigh);
    // Without a second region the first one has taken its place.
    const Rgb& first = split.counts[2] > 0 ? medLow : medHigh;
    error = static_cast<float>(RegionError(first, split.counts[1], split.sums[1]) +
                               RegionError(medHigh, split.counts[2], split.sums[2]) +
                               RegionError(high, split.counts[3], split.sums[3]));
}

}  // namespace zorvan::texcompress
