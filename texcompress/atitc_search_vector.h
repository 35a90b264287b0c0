// The full ATC search on vectors: the same result as SearchSplits and its refinement, without looking at
// every pixel of every split. See vector_types.h for how it is compiled.
//
// Pixels sorted by luminance make every region of every split a run, so counts and colour sums come from
// prefix sums. With P a region's palette colour, n its count and S its colour sum, its squared error is
// (sum of squared colours) + P.(nP - 2S): the first term, summed over the regions, is the same for all
// splits of a tile. Region 0's colour depends on the lowest threshold alone and region 3's on the highest
// alone; so all splits of one highest threshold are compared at once, one per lane.
#ifndef ZORVAN_TEXCOMPRESS_ATITC_SEARCH_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ATITC_SEARCH_VECTOR_H

#include "texcompress/atitc_regions.h"
#include "texcompress/atitc_search.h"
#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

constexpr int kChannels = 3;

/// What the search needs of a tile. Everything that is multiplied is held as float: whole numbers below
/// 2^24 stay exact, and every processor multiplies floats fast. Arrays that lanes are loaded from have
/// room behind their last use.
struct SortedTile {
    alignas(32) int32_t luminance[16];           ///< rising
    alignas(32) int32_t prefix[kChannels][17];   ///< colour sums of the n darkest pixels
    alignas(32) int32_t end[16];                 ///< pixels not brighter than pixel i
    alignas(32) int32_t begin[16];               ///< pixels darker than pixel i
    alignas(32) float endCount[16];              ///< end
    alignas(32) float endSum[kChannels][16];     ///< prefix at end[i]
    alignas(32) float middleCount[40];           ///< end[i / 2]
    alignas(32) float middleSum[kChannels][40];  ///< prefix at end[i / 2]
    alignas(32) int32_t low[kChannels][16];      ///< region 0's decoded colour up to pixel i
    alignas(32) float lowError[16];              ///< region 0's share of the error
    alignas(32) int32_t high[kChannels][16];     ///< region 3's decoded colour from pixel i
    alignas(32) float highError[16];             ///< region 3's share of the error
    alignas(32) int32_t nearBlack[16];           ///< all ones where region 0's average is near black
    alignas(32) int32_t bright[16];              ///< all ones where region 3 is bright beside black
    int32_t squares;                             ///< sum of all squared colour values
    bool mayUseBlack;                            ///< some region 0 is near black
};

/// The widened code of Bits bits that the encoder chooses for an average; see NearestCode.
template <int Bits>
[[gnu::always_inline]] inline I32 DecodedNearest(const I32& value) {
    constexpr int kLowest = 1 << (8 - Bits);
    const I32 truncated = (value & (256 - kLowest)) | (value >> Bits);
    const I32 alternative = truncated ^ kLowest;
    const I32 below = value - truncated;
    const I32 beside = value - alternative;
    const I32 nearer = Max(beside, -beside) < Max(below, -below);
    const I32 code = Select(nearer, alternative, value) >> (8 - Bits);
    return code << (8 - Bits) | code >> (2 * Bits - 8);
}

inline void SortByLuminance(const RgbTile& pixels, SortedTile& tile) {
    alignas(32) int16_t keys[16];
    int32_t squares = 0;
    for (int k = 0; k < 16; ++k) {
        const Rgb& pixel = pixels[static_cast<size_t>(k)];
        const int luminance = (19 * pixel.r + 38 * pixel.g + 7 * pixel.b) >> 6;
        keys[k] = static_cast<int16_t>(luminance * 16 + k);
        squares += pixel.r * pixel.r + pixel.g * pixel.g + pixel.b * pixel.b;
    }
    tile.squares = squares;
    // A pixel's place is the number of smaller keys.
    alignas(32) int16_t place[16];
    for (int v = 0; v < 16; v += kShortLanes) {
        const auto some = LoadVector<I16>(keys + v);
        I16 places{};
        for (int k = 0; k < 16; ++k) {
            const I16 key = I16{} + keys[k];
            places -= key < some;
        }
        StoreVector(place + v, places);
    }
    uint8_t order[16];
    for (uint8_t k = 0; k < 16; ++k) {
        order[place[k]] = k;
    }
    int32_t sums[kChannels] = {};
    for (int i = 0; i < 16; ++i) {
        const Rgb& pixel = pixels[order[i]];
        tile.luminance[i] = keys[order[i]] >> 4;
        tile.prefix[0][i] = sums[0];
        tile.prefix[1][i] = sums[1];
        tile.prefix[2][i] = sums[2];
        sums[0] += pixel.r;
        sums[1] += pixel.g;
        sums[2] += pixel.b;
    }
    for (int c = 0; c < kChannels; ++c) {
        tile.prefix[c][16] = sums[c];
    }
}

inline void FindRuns(SortedTile& tile) {
    tile.begin[0] = 0;
    for (int i = 1; i < 16; ++i) {
        tile.begin[i] = tile.luminance[i] == tile.luminance[i - 1] ? tile.begin[i - 1] : i;
    }
    tile.end[15] = 16;
    for (int i = 14; i >= 0; --i) {
        tile.end[i] = tile.luminance[i] == tile.luminance[i + 1] ? tile.end[i + 1] : i + 1;
    }
    for (int i = 0; i < 16; ++i) {
        const auto count = static_cast<float>(tile.end[i]);
        tile.endCount[i] = count;
        tile.middleCount[2 * i] = tile.middleCount[2 * i + 1] = count;
        for (int c = 0; c < kChannels; ++c) {
            const auto sum = static_cast<float>(tile.prefix[c][tile.end[i]]);
            tile.endSum[c][i] = sum;
            tile.middleSum[c][2 * i] = tile.middleSum[c][2 * i + 1] = sum;
        }
    }
}

// Brightness is 100 x largest channel / 255.
constexpr int kNearBlackChannel = 38;  // the largest channel of a brightness below 15
constexpr int kBrightChannel = 143;    // the smallest largest channel of a brightness from 56 on

inline void QuantizeEnds(SortedTile& tile) {
    alignas(32) float highCounts[16];
    alignas(32) float highSums[kChannels][16];
    for (int i = 0; i < 16; ++i) {
        highCounts[i] = static_cast<float>(16 - tile.begin[i]);
        for (int c = 0; c < kChannels; ++c) {
            highSums[c][i] = static_cast<float>(tile.prefix[c][16] - tile.prefix[c][tile.begin[i]]);
        }
    }
    I32 anyNearBlack{};
    for (int v = 0; v < 16; v += kLanes) {
        const auto lowCount = LoadVector<F32>(tile.endCount + v);
        const auto highCount = LoadVector<F32>(highCounts + v);
        F32 lowError{};
        F32 highError{};
        I32 lowLargest{};
        I32 highLargest{};
        for (int c = 0; c < kChannels; ++c) {
            const auto lowSum = LoadVector<F32>(tile.endSum[c] + v);
            const auto highSum = LoadVector<F32>(highSums[c] + v);
            // Quotients are at least 1/16 off the next whole number: the division's rounding is harmless.
            const I32 lowAverage = ToInt(lowSum / lowCount);
            const I32 highAverage = ToInt(highSum / highCount);
            const I32 low = DecodedNearest<5>(lowAverage);
            const I32 high = c == 1 ? DecodedNearest<6>(highAverage) : DecodedNearest<5>(highAverage);
            lowError += ToFloat(low) * (lowCount * ToFloat(low) - 2 * lowSum);
            highError += ToFloat(high) * (highCount * ToFloat(high) - 2 * highSum);
            lowLargest = Max(lowLargest, lowAverage);
            highLargest = Max(highLargest, highAverage);
            StoreVector(tile.low[c] + v, low);
            StoreVector(tile.high[c] + v, high);
        }
        const I32 nearBlack = lowLargest <= kNearBlackChannel;
        anyNearBlack |= nearBlack;
        StoreVector(tile.lowError + v, lowError);
        StoreVector(tile.highError + v, highError);
        StoreVector(tile.nearBlack + v, nearBlack);
        StoreVector(tile.bright + v, I32(highLargest >= kBrightChannel));
    }
    tile.mayUseBlack = AnyLane(anyNearBlack);
}

/// A split by its three run boundaries.
struct Split {
    int end0, end1, end2;
};

inline Split SplitAt(const SortedTile& tile, int l, int h) {
    const int top = tile.begin[h];
    const int low = tile.end[l];
    const int middle = tile.end[(l + h) / 2];
    return {low < top ? low : top, middle < top ? middle : top, top};
}

inline Rgb RunAverage(const SortedTile& tile, int first, int last) {
    const int count = last > first ? last - first : 1;
    const auto average = [&](int c) {
        return static_cast<uint8_t>((tile.prefix[c][last] - tile.prefix[c][first]) / count);
    };
    return {average(0), average(1), average(2)};
}

inline Regions RunRegions(const SortedTile& tile, const Split& split) {
    Regions regions;
    regions.counts = {split.end0, split.end1 - split.end0, split.end2 - split.end1, 16 - split.end2};
    regions.colors = {RunAverage(tile, 0, split.end0), RunAverage(tile, split.end0, split.end1),
                      RunAverage(tile, split.end1, split.end2), RunAverage(tile, split.end2, 16)};
    return regions;
}

inline int32_t RunError(int32_t color, int32_t count, int32_t sum) {
    return color * (count * color - 2 * sum);
}

/// Replaces the error, less the squares, of a split where the palette that begins with black helps.
inline void UseBlackWhereHelpful(const SortedTile& tile, const Split& split, float& error) {
    Regions regions = RunRegions(tile, split);
    const bool second = regions.counts[2] > 0;
    if (!ApplyBlackTrickIfHelpful(regions)) {
        return;
    }
    const Rgb high = Color565To888(Color888To565(regions.colors[3]));
    Rgb medHigh;
    Color1555To888(Color888To1555(regions.colors[2], true), medHigh);
    const Rgb medLow = DeriveMedLowFromHighAndMedHighColors(high, medHigh);
    // Without a second region the first one has taken its place.
    const int end1 = second ? split.end1 : split.end0;
    const int32_t colors[3][kChannels] = {
        {medLow.r, medLow.g, medLow.b}, {medHigh.r, medHigh.g, medHigh.b}, {high.r, high.g, high.b}};
    int32_t sum = 0;
    for (int c = 0; c < kChannels; ++c) {
        const int32_t* prefix = tile.prefix[c];
        sum += RunError(colors[0][c], end1 - split.end0, prefix[end1] - prefix[split.end0]) +
               RunError(colors[1][c], split.end2 - end1, prefix[split.end2] - prefix[end1]) +
               RunError(colors[2][c], 16 - split.end2, prefix[16] - prefix[split.end2]);
    }
    error = static_cast<float>(sum);
}

/// Errors, less the squares, of the splits of all lanes, from l on below h with the plain palette.
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

/// The smallest error of each lane and the number of the split that has it.
struct BestLanes {
    F32 errors;
    I32 splits;

    [[gnu::always_inline]] void Offer(const F32& offered, const I32& numbers) {
        const I32 better = offered < errors;
        errors = better ? offered : errors;
        splits = Select(better, numbers, splits);
    }
};

/// Splits in the order of the search: h falls from 15 to 1, l rises from 0.
constexpr int SplitNumber(int l, int h) {
    return (15 - h) * 16 + l;
}

/// Number of the first split with the smallest error. A split at equal luminances l and h equals the one
/// at the pixel below h's run, which comes earlier; where there is none, all pixels are in region 3.
inline int FindBestSplit(const SortedTile& tile) {
    const I32 laneNumbers = LaneNumbers();
    constexpr float kNever = 16777216.0f;
    BestLanes best{F32{} + kNever, I32{}};
    bool triedFlat = false;
    for (int h = 15; h >= 1; --h) {
        const int top = tile.begin[h];
        if (top == 0) {
            if (!triedFlat) {
                best.Offer(F32{} + tile.highError[h], I32{} + SplitNumber(0, h));
                triedFlat = true;
            }
            continue;
        }
        for (int l = 0; l < top; l += kLanes) {
            F32 errors = PlainErrors(tile, l, h);
            if (tile.mayUseBlack && tile.bright[h] != 0) {
                alignas(32) float patched[kLanes];
                StoreVector(patched, errors);
                for (int i = 0; i < kLanes && l + i < top; ++i) {
                    if (tile.nearBlack[l + i] != 0) {
                        UseBlackWhereHelpful(tile, SplitAt(tile, l + i, h), patched[i]);
                    }
                }
                errors = LoadVector<F32>(patched);
            }
            const I32 valid = laneNumbers + l < top;
            best.Offer(valid ? errors : F32{} + kNever, laneNumbers + SplitNumber(l, h));
        }
    }
    alignas(32) float errors[kLanes];
    alignas(32) int32_t splits[kLanes];
    StoreVector(errors, best.errors);
    StoreVector(splits, best.splits);
    int first = 0;
    for (int i = 1; i < kLanes; ++i) {
        if (errors[i] < errors[first] || (errors[i] == errors[first] && splits[i] < splits[first])) {
            first = i;
        }
    }
    return splits[first];
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ATITC_SEARCH_VECTOR_H
