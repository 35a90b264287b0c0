// Errors of ETC1 halves on vectors, one table per lane, in whole numbers. See vector_types.h for how it is
// compiled.
//
// The plain encoder compares sums of 0.299 dR^2 + 0.587 dG^2 + 0.114 dB^2 in double precision. A thousand
// times such a sum is a whole number below 2^31. Where two of these differ, so do the doubles, whose
// rounding is nine orders of magnitude smaller; only equal ones need the doubles themselves.
//
// Where no channel leaves 0..255, a modifier m adds 1000 m^2 - 2 m D to a pixel's error, with D the weighted
// sum of its channels less that of the base colour: D alone decides. The small modifiers s are best up to
// |D| = 500 (s + l), the large ones l beyond. Tables that do leave the range take the long way, unless a
// quick bound or a closer one tells that they are worse.
#pragma once

#include "texcompress/etc1_bases_vector.h"
#include "texcompress/etc1_encode.h"
#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// The pixels of the left, right, top and bottom half, in the order in which errors are summed.
constexpr uint8_t kEtc1Halves[4][8] = {{0, 1, 4, 5, 8, 9, 12, 13},
                                       {2, 3, 6, 7, 10, 11, 14, 15},
                                       {0, 1, 2, 3, 4, 5, 6, 7},
                                       {8, 9, 10, 11, 12, 13, 14, 15}};

// |D| up to which small modifiers are no worse than large ones, by table.
constexpr int32_t kEtc1Thresholds[8] = {5000, 11000, 19000, 27500, 39000, 52000, 69500, 115000};

// What the small modifiers add to eight pixels' errors where D is 0: 8000 of their squares.
constexpr int32_t kEtc1SmallSquares[8] = {32000,   200000,  648000,  1352000,
                                          2592000, 4608000, 8712000, 17672000};

// A tile as whole numbers.
struct Etc1Pixels {
    alignas(32) int32_t channels[3][16];  // as ByteFactors
    alignas(32) int32_t sums[16];         // weighted sums of the channels
    alignas(32) int32_t halfSums[4][8];   // the same of each half's pixels
    const Tile* tile;
    const Etc1HalfColors* group;  // the colours of the tile's group, the tile's in one lane
    size_t lane;
    bool flat;  // all pixels are equal
};

inline Etc1Pixels PixelsOf(const Tile& tile, const Etc1HalfColors& group, size_t lane) {
    Etc1Pixels pixels;
    I32 differences{};
    for (int k = 0; k < 16; k += kLanes) {
        const auto words = LoadVector<I32>(tile.pixels + k);
        differences |= words ^ static_cast<int32_t>(tile.pixels[0]);
        F32 sums{};
        for (int c = 0; c < 3; ++c) {
            const I32 channel = words >> (8 * c) & 255;
            sums += ToFloat(channel) * static_cast<float>(kEtc1Weights[c]);
            StoreVector(pixels.channels[c] + k, ByteFactor(channel));
        }
        StoreVector(pixels.sums + k, ToInt(sums));
    }
    for (int k = 0; k < 8; k += 4) {
        const auto upper = LoadVector<Quad>(pixels.sums + 2 * k);
        const auto lower = LoadVector<Quad>(pixels.sums + 2 * k + 4);
        StoreVector(pixels.halfSums[0] + k, Quad(__builtin_shufflevector(upper, lower, 0, 1, 4, 5)));
        StoreVector(pixels.halfSums[1] + k, Quad(__builtin_shufflevector(upper, lower, 2, 3, 6, 7)));
        StoreVector(pixels.halfSums[2 + k / 4], upper);
        StoreVector(pixels.halfSums[2 + k / 4] + 4, lower);
    }
    pixels.tile = &tile;
    pixels.group = &group;
    pixels.lane = lane;
    pixels.flat = !AnyLane(differences & 0xFFFFFF);
    return pixels;
}

// One half with a base colour and the best table.
struct Etc1Half {
    const Etc1Base* base;
    int32_t error;  // a thousand times the error, less the weighted squares of the pixels
    uint32_t table;

    // Whether some channel with some modifier leaves 0..255.
    bool Clamps() const { return kEtc1Columns[3][table] > base->room; }
    bool HasPaletteOf(const Etc1Half& other) const {
        return table == other.table && base->HasValuesOf(*other.base);
    }
};

// The distance from the colours of one column, less the square of the pixel: a plane.
struct ColumnPlane {
    I32 offset, slopes[3];

    ColumnPlane(const int32_t (&base)[3], const int32_t* modifiers) : offset{}, slopes{} {
        for (int c = 0; c < 3; ++c) {
            const F32 value = Min(Max(ToFloat(LoadVector<I32>(modifiers) + base[c]), F32{}), F32{} + 255.0f);
            const I32 weighted = ToInt(value * static_cast<float>(kEtc1Weights[c]));
            offset += Product(SplitFactor(weighted), ByteFactor(ToInt(value)));
            slopes[c] = SplitFactor(weighted + weighted);
        }
    }
    [[gnu::always_inline]] I32 At(const Etc1Pixels& pixels, int k) const {
        return offset - Product(slopes[0], I32{} + pixels.channels[0][k]) -
               Product(slopes[1], I32{} + pixels.channels[1][k]) -
               Product(slopes[2], I32{} + pixels.channels[2][k]);
    }
};

// Errors of a half with the tables of one vector.
[[gnu::noinline]] inline I32 EvaluateTables(const Etc1Pixels& pixels, int half, const int32_t (&base)[3],
                                            int table) {
    const ColumnPlane columns[4] = {
        ColumnPlane(base, kEtc1Columns[0] + table), ColumnPlane(base, kEtc1Columns[1] + table),
        ColumnPlane(base, kEtc1Columns[2] + table), ColumnPlane(base, kEtc1Columns[3] + table)};
    I32 sum{};
    for (const uint8_t k : kEtc1Halves[half]) {
        sum += Min(Min(columns[0].At(pixels, k), columns[1].At(pixels, k)),
                   Min(columns[2].At(pixels, k), columns[3].At(pixels, k)));
    }
    return sum;
}

// Errors of a half with each table, some in each lane.
struct Etc1Errors {
    I32 groups[kEtc1Groups];

    [[gnu::always_inline]] int32_t Least() const {
        const I32 lower = Min(groups[0], groups[kEtc1Groups - 1]);
        int32_t least = lower[0];
        for (int i = 1; i < kLanes; ++i) {
            least = lower[i] < least ? lower[i] : least;
        }
        return least;
    }
    // The tables with an error, a bit each.
    [[gnu::always_inline]] uint32_t TablesWith(int32_t error) const {
        I32 bits{};
        for (int group = 0; group < kEtc1Groups; ++group) {
            bits |= (groups[group] == error) & (I32{} + 1) << (LaneNumbers() + group * kLanes);
        }
        return JoinLanes(bits);
    }
};

// Errors as they would be if nothing clamped. Clamping moves colours towards the pixels, so that the errors
// of tables that do clamp are no larger than these.
[[gnu::always_inline]] inline Etc1Errors EvaluateByDistances(const Etc1Pixels& pixels, int half,
                                                             const Etc1Base& base) {
    alignas(32) int32_t distances[8];
    for (int i = 0; i < 8; i += kLanes) {
        StoreVector(distances + i, Absolute(LoadVector<I32>(pixels.halfSums[half] + i) - base.weighted));
    }
    int32_t total = 0;
    I32 beyond[kEtc1Groups] = {};
    for (const int32_t distance : distances) {
        total += distance;
        for (int group = 0; group < kEtc1Groups; ++group) {
            const I32 excess = distance - LoadVector<I32>(kEtc1Thresholds + group * kLanes);
            beyond[group] += excess & (excess > 0);
        }
    }
    Etc1Errors errors;
    for (int group = 0; group < kEtc1Groups; ++group) {
        const auto smalls = LoadVector<I32>(kEtc1Columns[2] + group * kLanes);
        const auto larges = LoadVector<I32>(kEtc1Columns[3] + group * kLanes);
        const I32 gain = Product(SplitFactor(I32{} + total), ByteFactor(smalls)) +
                         Product(SplitFactor(beyond[group]), ByteFactor(larges - smalls));
        errors.groups[group] =
            LoadVector<I32>(kEtc1SmallSquares + group * kLanes) + base.constant - (gain + gain);
    }
    return errors;
}

// The most that clamping takes off the error of a pixel with each modifier. In a channel with some headroom,
// clamping shortens the modifier m by e = m - headroom, which takes w e (2 m - e - 2 d) off for a pixel d
// away in its direction.
inline F32 GreatestGain(const Etc1Pixels& pixels, int half, const Etc1Base& base, const F32& modifiers) {
    F32 above{};
    F32 below{};
    for (int c = 0; c < 3; ++c) {
        const auto weight = static_cast<float>(kEtc1Weights[c]);
        const int32_t value = base.values[c];
        const int32_t beneath = value - pixels.group->lowest[half][c][pixels.lane];
        const int32_t beyond = pixels.group->highest[half][c][pixels.lane] - value;
        const F32 cutAbove = Max(modifiers - static_cast<float>(255 - value), F32{});
        const F32 cutBelow = Max(modifiers - static_cast<float>(value), F32{});
        above += cutAbove * (2.0f * modifiers - cutAbove + static_cast<float>(2 * beneath)) * weight;
        below += cutBelow * (2.0f * modifiers - cutBelow + static_cast<float>(2 * beyond)) * weight;
    }
    return Max(above, below);
}

// Whether one of a vector's tables that clamp may have no larger error than `best`.
[[gnu::noinline]] inline bool MayBeBetter(const Etc1Pixels& pixels, int half, const Etc1Base& base, int table,
                                          int32_t best) {
    constexpr float kRounding = 4096.0f;  // more than all roundings of sums below 2^32
    const auto larges = LoadVector<I32>(kEtc1Columns[3] + table);
    const F32 small = ToFloat(LoadVector<I32>(kEtc1Columns[2] + table));
    const F32 large = ToFloat(larges);
    const F32 ofSmall = 1000.0f * small * small - GreatestGain(pixels, half, base, small);
    const F32 ofLarge = 1000.0f * large * large - GreatestGain(pixels, half, base, large);
    F32 sum = F32{} + static_cast<float>(base.constant);
    for (const int32_t halfSum : pixels.halfSums[half]) {
        const int32_t difference = halfSum - base.weighted;
        const auto twice = static_cast<float>(difference < 0 ? -2 * difference : 2 * difference);
        sum += Min(ofSmall - small * twice, ofLarge - large * twice);
    }
    return AnyLane((larges > base.room) & I32(sum <= static_cast<float>(best) + kRounding));
}

// The first of some equally good tables, a bit each in `tied`, by the doubles of the plain encoder.
[[gnu::noinline]] inline uint32_t BreakTie(const Etc1Pixels& pixels, int half, const int32_t (&base)[3],
                                           uint32_t tied) {
    const Rgb plainBase{static_cast<uint8_t>(base[0]), static_cast<uint8_t>(base[1]),
                        static_cast<uint8_t>(base[2])};
    auto bestTable = static_cast<uint32_t>(__builtin_ctz(tied));
    double best = HalfErrorOfTable(*pixels.tile, half, plainBase, bestTable);
    for (uint32_t table = bestTable + 1; table < 8 && best > 0.0; ++table) {
        if ((tied >> table & 1) != 0) {
            const double error = HalfErrorOfTable(*pixels.tile, half, plainBase, table);
            bestTable = error < best ? table : bestTable;
            best = error < best ? error : best;
        }
    }
    return bestTable;
}

// The best table for a base colour, the first of equally good ones.
inline Etc1Half CodeHalf(const Etc1Pixels& pixels, int half, const Etc1Base& base) {
    // Were the best of these errors of a table that clamps, its bounds would be no larger.
    Etc1Errors errors = EvaluateByDistances(pixels, half, base);
    int32_t best = errors.Least();
    for (int group = 0; group < kEtc1Groups; ++group) {
        const int table = group * kLanes;
        if (kEtc1Columns[3][table + kLanes - 1] > base.room && base.bounds[group] <= best &&
            MayBeBetter(pixels, half, base, table, best)) {
            errors.groups[group] = EvaluateTables(pixels, half, base.values, table);
            best = errors.Least();
        }
    }
    const uint32_t tied = errors.TablesWith(best);
    const bool unique = (tied & (tied - 1)) == 0;
    return {&base, best,
            unique ? static_cast<uint32_t>(__builtin_ctz(tied)) : BreakTie(pixels, half, base.values, tied)};
}

}  // namespace
}  // namespace zorvan::texcompress
