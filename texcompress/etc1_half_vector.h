// Errors of ETC1 halves on vectors, one table per lane, in whole numbers. See vector_types.h for how it is
// compiled.
//
// The plain encoder compares sums of 0.299 dR^2 + 0.587 dG^2 + 0.114 dB^2 in double precision. A thousand
// times such a sum is a whole number below 2^31. Where two of these differ, so do the doubles, whose
// rounding is nine orders of magnitude smaller; only equal ones need the doubles themselves.
#ifndef ZORVAN_TEXCOMPRESS_ETC1_HALF_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ETC1_HALF_VECTOR_H

#include "texcompress/etc1_encode.h"
#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

/// The pixels of the left, right, top and bottom half, in the order in which errors are summed.
constexpr uint8_t kEtc1Halves[4][8] = {{0, 1, 4, 5, 8, 9, 12, 13},
                                       {2, 3, 6, 7, 10, 11, 14, 15},
                                       {0, 1, 2, 3, 4, 5, 6, 7},
                                       {8, 9, 10, 11, 12, 13, 14, 15}};

constexpr int32_t kEtc1Weights[3] = {299, 587, 114};

/// Modifiers of each table, by column.
constexpr int32_t kEtc1Columns[4][8] = {{-8, -17, -29, -42, -60, -80, -106, -183},
                                        {-2, -5, -9, -13, -18, -24, -33, -47},
                                        {2, 5, 9, 13, 18, 24, 33, 47},
                                        {8, 17, 29, 42, 60, 80, 106, 183}};

/// A tile as whole numbers.
struct Etc1Pixels {
    alignas(32) int32_t channels[3][16];
    const Tile* tile;
    bool flat;  ///< all pixels are equal
};

/// One half with a base colour and the best table.
struct Etc1Half {
    int32_t base[3];
    int32_t error;  ///< a thousand times the error, less the weighted squares of the pixels
    uint32_t table;

    bool HasBase(const int32_t (&other)[3]) const {
        return base[0] == other[0] && base[1] == other[1] && base[2] == other[2];
    }
    Rgb PlainBase() const {
        return {static_cast<uint8_t>(base[0]), static_cast<uint8_t>(base[1]), static_cast<uint8_t>(base[2])};
    }
};

/// The distance from the colours of one column, less the square of the pixel: a plane.
struct ColumnPlane {
    I32 offset, slopes[3];

    ColumnPlane(const int32_t (&base)[3], const int32_t* modifiers) : offset{}, slopes{} {
        for (int c = 0; c < 3; ++c) {
            const I32 value = Min(Max(LoadVector<I32>(modifiers) + base[c], I32{}), I32{} + 255);
            const I32 weighted = value * kEtc1Weights[c];
            offset += weighted * value;
            slopes[c] = weighted + weighted;
        }
    }
    [[gnu::always_inline]] I32 At(const Etc1Pixels& pixels, int k) const {
        return offset - slopes[0] * pixels.channels[0][k] - slopes[1] * pixels.channels[1][k] -
               slopes[2] * pixels.channels[2][k];
    }
};

/// Errors of a half with each table.
[[gnu::noinline]] inline void EvaluateTables(const Etc1Pixels& pixels, int half, const int32_t (&base)[3],
                                             int32_t* errors) {
    for (int t = 0; t < 8; t += kLanes) {
        const ColumnPlane columns[4] = {
            ColumnPlane(base, kEtc1Columns[0] + t), ColumnPlane(base, kEtc1Columns[1] + t),
            ColumnPlane(base, kEtc1Columns[2] + t), ColumnPlane(base, kEtc1Columns[3] + t)};
        I32 sum{};
        for (const uint8_t k : kEtc1Halves[half]) {
            sum += Min(Min(columns[0].At(pixels, k), columns[1].At(pixels, k)),
                       Min(columns[2].At(pixels, k), columns[3].At(pixels, k)));
        }
        StoreVector(errors + t, sum);
    }
}

/// The first of some equally good tables, a bit each in `tied`, by the doubles of the plain encoder.
[[gnu::noinline]] inline uint32_t BreakTie(const Etc1Pixels& pixels, int half, const Rgb& base,
                                           uint32_t tied) {
    auto bestTable = static_cast<uint32_t>(__builtin_ctz(tied));
    double best = HalfErrorOfTable(*pixels.tile, half, base, bestTable);
    for (uint32_t table = bestTable + 1; table < 8 && best > 0.0; ++table) {
        if ((tied >> table & 1) != 0) {
            const double error = HalfErrorOfTable(*pixels.tile, half, base, table);
            bestTable = error < best ? table : bestTable;
            best = error < best ? error : best;
        }
    }
    return bestTable;
}

/// The best table for a base colour, the first of equally good ones.
inline Etc1Half CodeHalf(const Etc1Pixels& pixels, int half, const int32_t (&base)[3]) {
    alignas(32) int32_t errors[8];
    EvaluateTables(pixels, half, base, errors);
    int32_t best = errors[0];
    for (const int32_t error : errors) {
        best = error < best ? error : best;
    }
    uint32_t tied = 0;
    for (int table = 0; table < 8; ++table) {
        tied |= (errors[table] == best ? 1u : 0u) << table;
    }
    Etc1Half code{{base[0], base[1], base[2]}, best, static_cast<uint32_t>(__builtin_ctz(tied))};
    if ((tied & (tied - 1)) != 0) {
        code.table = BreakTie(pixels, half, code.PlainBase(), tied);
    }
    return code;
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ETC1_HALF_VECTOR_H
