// ATC colour encoding on vectors, one tile per lane: from the first split to the block, for the full and
// the fast encoder. See vector_types.h for how it is compiled.
#pragma once

#include "texcompress/atitc_group_vector.h"
#include "texcompress/atitc_search_vector.h"
#include "texcompress/block_kernels.h"
#include "texcompress/tile_group_vector.h"

namespace zorvan::texcompress {
namespace {

struct AtcPalette {
    F32 entries[4][kChannels];
};

inline AtcPalette PaletteOf(const AtcColors& colors) {
    AtcPalette palette;
    for (int c = 0; c < kChannels; ++c) {
        const I32 low = colors.low[c];
        const I32 high = colors.high[c];
        const I32 nearLow = (5 * low + 3 * high) >> 3;
        const I32 nearHigh = (3 * low + 5 * high) >> 3;
        const I32 below = Max(low - (high >> 2), I32{});
        palette.entries[0][c] = ToFloat(low & ~colors.black);
        palette.entries[1][c] = ToFloat(Select(colors.black, below, nearLow));
        palette.entries[2][c] = ToFloat(Select(colors.black, low, nearHigh));
        palette.entries[3][c] = ToFloat(high);
    }
    return palette;
}

// An entry of the palette as the squared distance from it, less that from entry 0: a plane.
struct DistancePlane {
    F32 offset, slopes[kChannels];

    [[gnu::always_inline]] F32 At(const Channels& pixel) const {
        return offset + slopes[0] * pixel.r + slopes[1] * pixel.g + slopes[2] * pixel.b;
    }
};

inline DistancePlane PlaneOf(const AtcPalette& palette, int entry) {
    DistancePlane plane{};
    for (int c = 0; c < kChannels; ++c) {
        const F32 first = palette.entries[0][c];
        const F32 other = palette.entries[entry][c];
        plane.offset += other * other - first * first;
        plane.slopes[c] = 2.0f * (first - other);
    }
    return plane;
}

// Moves each pixel to its nearest palette entry where the new regions are usable; see
// CheckPixelRegionAssignment. Returns whether any tile has changed.
inline bool RefineRegions(AtcGroup& group, const AtcColors& colors) {
    const AtcPalette palette = PaletteOf(colors);
    const DistancePlane planes[3] = {PlaneOf(palette, 1), PlaneOf(palette, 2), PlaneOf(palette, 3)};
    I32 nearest[16];
    I32 changed{};
    I32 count0{};
    I32 count3{};
    for (int k = 0; k < 16; ++k) {
        const Channels pixel = ChannelsOf(group.words[k]);
        F32 best{};
        I32 entry{};
        for (int i = 0; i < 3; ++i) {
            const F32 distance = planes[i].At(pixel);
            entry = Select(I32(distance < best), I32{} + (i + 1), entry);
            best = Min(distance, best);
        }
        nearest[k] = entry;
        changed |= entry ^ group.regions[k];
        count0 -= entry == 0;
        count3 -= entry == 3;
    }
    const I32 accepted = (changed != 0) & (count3 > 0) & ((count0 > 0) | (count3 == 16) | colors.black);
    for (int k = 0; k < 16; ++k) {
        group.regions[k] = Select(accepted, nearest[k], group.regions[k]);
    }
    return AnyLane(accepted);
}

// Recomputes colours from the refined regions. The full search takes back a refinement that changes
// whether the palette starts with black.
template <uint32_t Format>
inline void RefineFully(AtcGroup& group, AtcColors& colors) {
    AtcGroup refined = group;
    if (!RefineRegions(refined, colors)) {
        return;
    }
    RegionSums sums = SumRegions(refined);
    const AtcColors newColors = ChooseColors<Format>(refined, sums);
    const I32 keep = newColors.black == colors.black;
    for (int k = 0; k < 16; ++k) {
        group.regions[k] = Select(keep, refined.regions[k], group.regions[k]);
    }
    for (int c = 0; c < kChannels; ++c) {
        colors.low[c] = Select(keep, newColors.low[c], colors.low[c]);
        colors.high[c] = Select(keep, newColors.high[c], colors.high[c]);
    }
}

// The codes of the end colours, the first one in the lower half.
template <uint32_t Format>
inline I32 CodesOf(const AtcColors& colors) {
    const auto& [low, high, black, misjudged] = colors;
    const I32 highCode = high[0] >> 3 << 11 | high[1] >> 2 << 5 | high[2] >> 3;
    if (Format == TXC_FORMAT_ATC) {
        return (black & 0x8000) | low[0] >> 3 << 10 | low[1] >> 3 << 5 | low[2] >> 3 | highCode << 16;
    }
    const I32 lowCode = low[0] >> 3 << 11 | low[1] >> 2 << 5 | low[2] >> 3;
    return Select(black, highCode | lowCode << 16, lowCode | highCode << 16);
}

inline void StoreAtcBlocks(const AtcGroup& group, const I32& colorWords, size_t count, uint8_t* blocks,
                           size_t stride) {
    I32 indexWords{};
    for (int k = 0; k < 16; ++k) {
        indexWords |= group.regions[k] << (2 * k);
    }
    for (size_t i = 0; i < count; ++i) {
        StoreWord(blocks + i * stride, static_cast<uint32_t>(colorWords[i]));
        StoreWord(blocks + i * stride + 4, static_cast<uint32_t>(indexWords[i]));
    }
}

// Splits at quarters of the luminances' range; see EncodeRGBBlockFast.
inline void SplitAtQuarters(AtcGroup& group) {
    F32 luminance[16];
    F32 lowest = F32{} + 255.0f;
    F32 highest{};
    for (int k = 0; k < 16; ++k) {
        luminance[k] = ToFloat(LuminanceOf(ChannelsOf(group.words[k])));
        lowest = Min(lowest, luminance[k]);
        highest = Max(highest, luminance[k]);
    }
    const F32 quarter = (highest - lowest) * 0.25f;
    const F32 t1 = lowest + quarter;
    const F32 t2 = t1 + quarter;
    const F32 t3 = highest - quarter;
    for (int k = 0; k < 16; ++k) {
        const I32 lower = -(luminance[k] > t1) - (luminance[k] > t2);
        group.regions[k] = Select(I32(luminance[k] >= t3), I32{} + 3, lower);
    }
}

// The squared error of each tile: that of a region with palette colour P is P.(nP - 2S) more than its
// sum of squares.
inline I32 ErrorsOf(const AtcGroup& group, const RegionSums& sums, const AtcColors& colors) {
    const AtcPalette palette = PaletteOf(colors);
    F32 errors{};
    for (const I32& words : group.words) {
        const Channels pixel = ChannelsOf(words);
        errors += pixel.r * pixel.r + pixel.g * pixel.g + pixel.b * pixel.b;
    }
    for (int i = 0; i < 4; ++i) {
        const F32 regionCount = ToFloat(sums.Count(i));
        for (int c = 0; c < kChannels; ++c) {
            const F32 color = palette.entries[i][c];
            errors += color * (regionCount * color - 2.0f * ToFloat(sums.Sum(i, c)));
        }
    }
    return ToInt(errors);
}

// The plain kernels.
template <uint32_t Format>
inline EncodeKernel PlainAtc() {
    return Format == TXC_FORMAT_ATC ? kScalarKernels.encodeAtc : kScalarKernels.encodeAtcLegacy;
}
template <uint32_t Format>
inline MeasuringEncodeKernel PlainAtcFast() {
    return Format == TXC_FORMAT_ATC ? kScalarKernels.encodeAtcFast : kScalarKernels.encodeAtcLegacyFast;
}

template <uint32_t Format>
inline void EncodeAtcGroup(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    AtcGroup group;
    Tile regions[kLanes];
    bool usable = true;
    for (size_t i = 0; i < count; ++i) {
        usable &= SearchSplits<Format>(tiles[i], regions[i]);
    }
    if (!usable) {
        PlainAtc<Format>()(tiles, count, blocks, stride);
        return;
    }
    LoadTileGroup(tiles, count, group.words);
    LoadTileGroup(regions, count, group.regions);
    RegionSums sums = SumRegions(group);
    AtcColors colors = ChooseColors<Format>(group, sums);
    const I32 misjudged = colors.misjudged;
    RefineFully<Format>(group, colors);
    StoreAtcBlocks(group, CodesOf<Format>(colors), count, blocks, stride);
    for (size_t i = 0; i < count && AnyLane(misjudged); ++i) {
        if (misjudged[i] != 0) {
            PlainAtc<Format>()(tiles + i, 1, blocks + i * stride, stride);
        }
    }
}

template <uint32_t Format>
inline void EncodeAtcGroupFast(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride,
                               uint32_t* errors) {
    AtcGroup group;
    LoadTileGroup(tiles, count, group.words);
    SplitAtQuarters(group);
    RegionSums sums = SumRegions(group);
    AtcColors colors = ChooseColors<Format>(group, sums);
    I32 misjudged = colors.misjudged;
    // Flat tiles stay in region 3, even where black would be nearer than the quantized colour.
    const I32 flat = sums.Count(3) == 16;
    AtcGroup refined = group;
    if (RefineRegions(refined, colors)) {
        for (int k = 0; k < 16; ++k) {
            group.regions[k] = Select(flat, group.regions[k], refined.regions[k]);
        }
        sums = SumRegions(group);
        colors = ChooseColors<Format>(group, sums);
        misjudged |= colors.misjudged;
    }
    StoreAtcBlocks(group, CodesOf<Format>(colors), count, blocks, stride);
    const I32 groupErrors = ErrorsOf(group, sums, colors);
    for (size_t i = 0; i < count; ++i) {
        errors[i] = static_cast<uint32_t>(groupErrors[i]);
        if (misjudged[i] != 0) {
            PlainAtcFast<Format>()(tiles + i, 1, blocks + i * stride, stride, errors + i);
        }
    }
}

template <uint32_t Format>
inline void EncodeAtcOnVectors(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; i += kLanes) {
        const size_t some = count - i < kLanes ? count - i : kLanes;
        EncodeAtcGroup<Format>(tiles + i, some, blocks + i * stride, stride);
    }
}

template <uint32_t Format>
inline void EncodeAtcFastOnVectors(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride,
                                   uint32_t* errors) {
    for (size_t i = 0; i < count; i += kLanes) {
        const size_t some = count - i < kLanes ? count - i : kLanes;
        EncodeAtcGroupFast<Format>(tiles + i, some, blocks + i * stride, stride, errors + i);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
