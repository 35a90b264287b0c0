// The full ATC search on vectors: the same split as the plain search's, without looking at every pixel of
// every split. See vector_types.h for how it is compiled.
//
// Pixels sorted by luminance make every region of every split a run, so counts and colour sums come from
// prefix sums. With P a region's palette colour, n its count and S its colour sum, its squared error is
// (sum of squared colours) + P.(nP - 2S): the first term, summed over the regions, is the same for all
// splits of a tile. Region 0's colour depends on the lowest threshold alone and region 3's on the highest
// alone; so all splits of one highest threshold are compared at once, one per lane.
#pragma once

#include "texcompress/atitc_sorted_tile_vector.h"
#include "texcompress/atitc_split.h"
#include "texcompress/tile_group_vector.h"

namespace zorvan::texcompress {
namespace {

// The split at pixels l and h.
inline SplitSums SplitAt(const SortedTile& tile, int l, int h) {
    const int top = tile.begin[h];
    const int low = tile.end[l];
    const int middle = tile.end[(l + h) / 2];
    const int bounds[5] = {0, low < top ? low : top, middle < top ? middle : top, top, 16};
    SplitSums split;
    for (int i = 0; i < 4; ++i) {
        split.counts[i] = bounds[i + 1] - bounds[i];
        for (int c = 0; c < kChannels; ++c) {
            split.sums[i][c] = tile.prefix[c][bounds[i + 1]] - tile.prefix[c][bounds[i]];
        }
    }
    return split;
}

// Errors, less the squares, of the splits of all lanes, from l on below h with the plain palette.
[[gnu::always_inline]] inline F32 PlainErrors(const SortedTile& tile, int l, int h) {
    const int top = tile.begin[h];
    const auto topCount = static_cast<float>(top);
    const F32 middleCount = Min(LoadVector<F32>(tile.middleCount + l + h), F32{} + topCount);
    const F32 count1 = middleCount - LoadVector<F32>(tile.endCount + l);
    const F32 count2 = topCount - middleCount;
    F32 errors = LoadVector<F32>(tile.lowError + l) + tile.highError[h];
    for (int c = 0; c < kChannels; ++c) {
        const auto topSum = static_cast<float>(tile.prefix[c][top]);
        const F32 middleSum = Min(LoadVector<F32>(tile.middleSum[c] + l + h), F32{} + topSum);
        const F32 sum1 = middleSum - LoadVector<F32>(tile.endSum[c] + l);
        const F32 sum2 = topSum - middleSum;
        const auto low = LoadVector<I32>(tile.low[c] + l);
        const int32_t high = tile.high[c][h];
        const F32 color1 = ToFloat((low + (low << 2) + 3 * high) >> 3);
        const F32 color2 = ToFloat((low + (low << 1) + 5 * high) >> 3);
        errors += color1 * (count1 * color1 - (sum1 + sum1));
        errors += color2 * (count2 * color2 - (sum2 + sum2));
    }
    return errors;
}

// The smallest error of each lane and the number of the split that has it.
struct BestLanes {
    F32 errors;
    I32 splits;

    [[gnu::always_inline]] void Offer(const F32& offered, const I32& numbers) {
        const I32 better = offered < errors;
        errors = better ? offered : errors;
        splits = Select(better, numbers, splits);
    }
};

// Splits in the order of the search: h falls from 15 to 1, l rises from 0.
constexpr int SplitNumber(int l, int h) {
    return (15 - h) * 16 + l;
}

// Replaces the errors of some of the splits from l on below h.
template <uint32_t Format>
[[gnu::noinline]] inline F32 ReplaceErrors(const SortedTile& tile, int l, int h, F32 errors,
                                           const I32& replaced) {
    for (int i = 0; i < kLanes && l + i < tile.begin[h]; ++i) {
        if (replaced[i] != 0) {
            errors[i] = static_cast<float>(SplitError(SplitAt(tile, l + i, h), Format));
        }
    }
    return errors;
}

// Where the palette of splits from l on below h may begin with black: where that may help, and where the
// legacy format's decoder takes it so.
template <uint32_t Format>
[[gnu::always_inline]] inline I32 MayBeginWithBlack(const SortedTile& tile, int l, int h) {
    const I32 helpful = LoadVector<I32>(tile.nearBlack + l) & tile.bright[h];
    if (Format == TXC_FORMAT_ATC) {
        return helpful;
    }
    return helpful | (LoadVector<I32>(tile.lowLuminance + l) > tile.highLuminance[h]);
}

// The first of the splits with the smallest error among the lanes' best ones.
inline int FirstBest(const BestLanes& best, float& bestError) {
    int first = 0;
    for (int i = 1; i < kLanes; ++i) {
        const bool earlier = best.errors[i] == best.errors[first] && best.splits[i] < best.splits[first];
        first = best.errors[i] < best.errors[first] || earlier ? i : first;
    }
    bestError = best.errors[first];
    return best.splits[first];
}

// Number of the first split with the smallest error; bestError receives that, less the squares. A split
// at equal luminances l and h equals the one at the pixel below h's run, which comes earlier; where
// there is none, all pixels are in region 3.
template <uint32_t Format>
inline int FindBestSplit(const SortedTile& tile, float& bestError) {
    constexpr float kNever = 16777216.0f;
    BestLanes best{F32{} + kNever, I32{}};
    for (int h = 15; h >= 1; --h) {
        const int top = tile.begin[h];
        if (top == 0) {
            best.Offer(F32{} + tile.highError[h], I32{} + SplitNumber(0, h));
            break;
        }
        for (int l = 0; l < top; l += kLanes) {
            F32 errors = PlainErrors(tile, l, h);
            const I32 black = MayBeginWithBlack<Format>(tile, l, h);
            if (AnyLane(black)) {
                errors = ReplaceErrors<Format>(tile, l, h, errors, black);
            }
            const I32 valid = LaneNumbers() + l < top;
            best.Offer(valid ? errors : F32{} + kNever, LaneNumbers() + SplitNumber(l, h));
        }
    }
    return FirstBest(best, bestError);
}

// Finds the best split of a tile and stores the pixels' regions; false where no split's error is below
// the limit of the plain search.
template <uint32_t Format>
inline bool SearchSplits(const Tile& pixels, Tile& regions) {
    constexpr float kErrorLimit = 16 * 255 * 255;
    SortedTile tile;
    SortByLuminance(pixels, tile);
    FindRuns(tile);
    QuantizeEnds<Format>(tile);
    float error;
    const int split = FindBestSplit<Format>(tile, error);
    const int h = 15 - split / 16;
    const int l = split % 16;
    for (int k = 0; k < 16; k += kLanes) {
        const auto luminance = LoadVector<I32>(tile.pixelLuminance + k);
        const I32 lower = -(luminance > tile.luminance[l]) - (luminance > tile.luminance[(l + h) / 2]);
        StoreVector(regions.pixels + k, Select(I32(luminance >= tile.luminance[h]), I32{} + 3, lower));
    }
    return tile.squares + error < kErrorLimit;
}

}  // namespace
}  // namespace zorvan::texcompress
