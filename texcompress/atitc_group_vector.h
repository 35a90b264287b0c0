// ATC colour encoding on vectors, one tile per lane: the end colours of splits. See vector_types.h for how
// it is compiled.
#pragma once

#include "texcompress/atitc_sorted_tile_vector.h"
#include "texcompress/atitc_split.h"
#include "texcompress/tile_group_vector.h"

namespace zorvan::texcompress {
namespace {

// Pixels and their regions.
struct AtcGroup {
    I32 words[16];
    I32 regions[16];
};

// Counts and colour sums of the four regions, two per vector: a sum is below 2^13.
struct RegionSums {
    I32 redBlue[4];     // red in the lower, blue in the upper half
    I32 greenCount[4];  // green in the lower half, the count in the upper

    [[gnu::always_inline]] I32 Count(int region) const { return greenCount[region] >> 16; }
    [[gnu::always_inline]] I32 Sum(int region, int channel) const {
        switch (channel) {
            case 0:
                return redBlue[region] & 0xFFFF;
            case 1:
                return greenCount[region] & 0xFFFF;
            default:
                return redBlue[region] >> 16;
        }
    }
};

// Decoded end colours: those of index 0, or 2 beside black, and of index 3.
struct AtcColors {
    I32 low[kChannels], high[kChannels];
    I32 black;      // all ones where the palette starts with black
    I32 misjudged;  // all ones where the legacy format's decoder takes the opposite from the colours
};

inline RegionSums SumRegions(const AtcGroup& group) {
    RegionSums sums{};
    for (int k = 0; k < 16; ++k) {
        const I32 redBlue = group.words[k] & 0xFF00FF;
        const I32 greenCount = (group.words[k] >> 8 & 255) | 0x10000;
        for (int i = 1; i < 4; ++i) {
            const I32 inside = group.regions[k] == i;
            sums.redBlue[i] += redBlue & inside;
            sums.greenCount[i] += greenCount & inside;
        }
        sums.redBlue[0] += redBlue;
        sums.greenCount[0] += greenCount;
    }
    for (int i = 1; i < 4; ++i) {
        sums.redBlue[0] -= sums.redBlue[i];
        sums.greenCount[0] -= sums.greenCount[i];
    }
    return sums;
}

// Averages rounded down, 0 for an empty region; returns the largest.
inline I32 AverageRegion(const RegionSums& sums, int region, I32 (&average)[kChannels]) {
    const F32 count = Max(ToFloat(sums.Count(region)), F32{} + 1.0f);
    I32 largest{};
    for (int c = 0; c < kChannels; ++c) {
        // Quotients are at least 1/16 off the next whole number: the division's rounding is harmless.
        average[c] = ToInt(ToFloat(sums.Sum(region, c)) / count);
        largest = Max(largest, average[c]);
    }
    return largest;
}

inline SplitSums SumsOfLane(const RegionSums& sums, int lane) {
    SplitSums split;
    for (int i = 0; i < 4; ++i) {
        split.counts[i] = sums.Count(i)[lane];
        for (int c = 0; c < kChannels; ++c) {
            split.sums[i][c] = sums.Sum(i, c)[lane];
        }
    }
    return split;
}

// Moves region 1 of one tile to region 2, which is empty.
inline void MoveRegion(AtcGroup& group, RegionSums& sums, int lane) {
    for (I32& regions : group.regions) {
        regions[lane] = regions[lane] == 1 ? 2 : regions[lane];
    }
    sums.redBlue[2][lane] = sums.redBlue[1][lane];
    sums.greenCount[2][lane] = sums.greenCount[1][lane];
    sums.redBlue[1][lane] = 0;
    sums.greenCount[1][lane] = 0;
}

// Where the palette that starts with black helps, replaces region 0's average by that of region 2.
inline I32 UseBlackWhereHelpful(AtcGroup& group, RegionSums& sums, const I32& candidates,
                                I32 (&average)[kChannels]) {
    I32 black{};
    for (int lane = 0; lane < kLanes; ++lane) {
        int32_t medHigh[kChannels];
        if (candidates[lane] == 0 || !BlackHelps(SumsOfLane(sums, lane), medHigh)) {
            continue;
        }
        black[lane] = -1;
        for (int c = 0; c < kChannels; ++c) {
            average[c][lane] = medHigh[c];
        }
        if (sums.Count(2)[lane] == 0) {
            MoveRegion(group, sums, lane);
        }
    }
    return black;
}

// The end colours of the groups' splits; where black helps and region 2 is empty, region 1 moves there.
// Tiles with all pixels in region 3 have no black to gain from.
template <uint32_t Format>
inline AtcColors ChooseColors(AtcGroup& group, RegionSums& sums) {
    I32 low[kChannels];
    I32 high[kChannels];
    const I32 nearBlack = AverageRegion(sums, 0, low) <= kNearBlackChannel;
    const I32 bright = AverageRegion(sums, 3, high) >= kBrightChannel;
    const I32 candidates = nearBlack & bright & (sums.Count(0) > 0);
    AtcColors colors{};
    if (AnyLane(candidates)) {
        colors.black = UseBlackWhereHelpful(group, sums, candidates, low);
    }
    for (int c = 0; c < kChannels; ++c) {
        colors.low[c] = c == 1 ? DecodedNearest<kLowGreenBits<Format>>(low[c]) : DecodedNearest<5>(low[c]);
        colors.high[c] = c == 1 ? DecodedNearest<6>(high[c]) : DecodedNearest<5>(high[c]);
    }
    if (Format == TXC_FORMAT_ATC_LEGACY) {
        const I32 lowFirst = LeastLuminance(colors.low[0], colors.low[1], colors.low[2]) >
                             GreatestLuminance(colors.high[0], colors.high[1], colors.high[2]);
        const I32 highFirst = LeastLuminance(colors.high[0], colors.high[1], colors.high[2]) >
                              GreatestLuminance(colors.low[0], colors.low[1], colors.low[2]);
        colors.misjudged = Select(colors.black, ~highFirst, lowFirst);
    }
    return colors;
}

}  // namespace
}  // namespace zorvan::texcompress
