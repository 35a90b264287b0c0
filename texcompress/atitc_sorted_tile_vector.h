// What the full ATC search on vectors needs of a tile. See vector_types.h for how it is compiled.
#pragma once

#include "texcompress/texcompress.h"
#include "texcompress/tile_group_vector.h"

namespace zorvan::texcompress {
namespace {

constexpr int kChannels = 3;

// What the search needs of a tile. Everything that is multiplied is held as float: whole numbers below
// 2^24 stay exact, and every processor multiplies floats fast. Arrays that lanes are loaded from have
// room behind their last use.
struct SortedTile {
    alignas(32) int32_t pixelLuminance[16];      // in the tile's order
    alignas(32) int32_t luminance[16];           // rising
    alignas(32) int32_t prefix[kChannels][17];   // colour sums of the n darkest pixels
    alignas(32) int32_t end[16];                 // pixels not brighter than pixel i
    alignas(32) int32_t begin[16];               // pixels darker than pixel i
    alignas(32) float endCount[16];              // end
    alignas(32) float endSum[kChannels][16];     // prefix at end[i]
    alignas(32) float middleCount[40];           // end[i / 2]
    alignas(32) float middleSum[kChannels][40];  // prefix at end[i / 2]
    alignas(32) int32_t low[kChannels][16];      // region 0's decoded colour up to pixel i
    alignas(32) float lowError[16];              // region 0's share of the error
    alignas(32) int32_t high[kChannels][16];     // region 3's decoded colour from pixel i
    alignas(32) float highError[16];             // region 3's share of the error
    alignas(32) int32_t nearBlack[16];           // all ones where region 0's average is near black
    alignas(32) int32_t bright[16];              // all ones where region 3 is bright beside black
    alignas(32) int32_t lowLuminance[16];        // the least one of region 0's code, of the legacy format
    alignas(32) int32_t highLuminance[16];       // the greatest one of region 3's code, likewise
    float squares;                               // sum of all squared colour values
};

// The widened code of Bits bits that the encoder chooses for an average; see NearestCode.
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

// Sorts by luminance, pixels of one luminance by their place.
inline void SortByLuminance(const Tile& pixels, SortedTile& tile) {
    alignas(32) int32_t keys32[16];
    F32 squares{};
    for (int k = 0; k < 16; k += kLanes) {
        const Channels some = ChannelsOf(LoadVector<I32>(pixels.pixels + k));
        squares += some.r * some.r + some.g * some.g + some.b * some.b;
        const I32 luminance = LuminanceOf(some);
        StoreVector(tile.pixelLuminance + k, luminance);
        StoreVector(keys32 + k, I32((luminance << 4) + LaneNumbers() + k));
    }
    tile.squares = 0;
    for (int i = 0; i < kLanes; ++i) {
        tile.squares += squares[i];
    }
    alignas(32) int16_t keys[16];
    for (int k = 0; k < 16; ++k) {
        keys[k] = static_cast<int16_t>(keys32[k]);
    }
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
        const uint32_t pixel = pixels.pixels[order[i]];
        tile.luminance[i] = keys[order[i]] >> 4;
        tile.prefix[0][i] = sums[0];
        tile.prefix[1][i] = sums[1];
        tile.prefix[2][i] = sums[2];
        sums[0] += static_cast<int32_t>(pixel & 255);
        sums[1] += static_cast<int32_t>(pixel >> 8 & 255);
        sums[2] += static_cast<int32_t>(pixel >> 16 & 255);
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
static_assert(100 * kNearBlackChannel / 255 < 15 && 100 * (kNearBlackChannel + 1) / 255 >= 15);
static_assert(100 * kBrightChannel / 255 >= 56 && 100 * (kBrightChannel - 1) / 255 < 56);

// Bits of green in the colour of the darkest region.
template <uint32_t Format>
constexpr int kLowGreenBits = Format == TXC_FORMAT_ATC ? 5 : 6;

template <uint32_t Format>
inline void QuantizeEnds(SortedTile& tile) {
    alignas(32) float highCounts[16];
    alignas(32) float highSums[kChannels][16];
    for (int i = 0; i < 16; ++i) {
        highCounts[i] = static_cast<float>(16 - tile.begin[i]);
        for (int c = 0; c < kChannels; ++c) {
            highSums[c][i] = static_cast<float>(tile.prefix[c][16] - tile.prefix[c][tile.begin[i]]);
        }
    }
    for (int v = 0; v < 16; v += kLanes) {
        const auto lowCount = LoadVector<F32>(tile.endCount + v);
        const auto highCount = LoadVector<F32>(highCounts + v);
        F32 lowError{};
        F32 highError{};
        I32 lowLargest{};
        I32 highLargest{};
        I32 lows[kChannels];
        I32 highs[kChannels];
        for (int c = 0; c < kChannels; ++c) {
            const auto lowSum = LoadVector<F32>(tile.endSum[c] + v);
            const auto highSum = LoadVector<F32>(highSums[c] + v);
            // Quotients are at least 1/16 off the next whole number: the division's rounding is harmless.
            const I32 lowAverage = ToInt(lowSum / lowCount);
            const I32 highAverage = ToInt(highSum / highCount);
            const I32 low =
                c == 1 ? DecodedNearest<kLowGreenBits<Format>>(lowAverage) : DecodedNearest<5>(lowAverage);
            const I32 high = c == 1 ? DecodedNearest<6>(highAverage) : DecodedNearest<5>(highAverage);
            lowError += ToFloat(low) * (lowCount * ToFloat(low) - 2 * lowSum);
            highError += ToFloat(high) * (highCount * ToFloat(high) - 2 * highSum);
            lowLargest = Max(lowLargest, lowAverage);
            highLargest = Max(highLargest, highAverage);
            StoreVector(tile.low[c] + v, low);
            StoreVector(tile.high[c] + v, high);
            lows[c] = low;
            highs[c] = high;
        }
        const I32 nearBlack = lowLargest <= kNearBlackChannel;
        StoreVector(tile.lowError + v, lowError);
        StoreVector(tile.highError + v, highError);
        StoreVector(tile.nearBlack + v, nearBlack);
        StoreVector(tile.bright + v, I32(highLargest >= kBrightChannel));
        if (Format == TXC_FORMAT_ATC_LEGACY) {
            StoreVector(tile.lowLuminance + v, LeastLuminance(lows[0], lows[1], lows[2]));
            StoreVector(tile.highLuminance + v, GreatestLuminance(highs[0], highs[1], highs[2]));
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress
