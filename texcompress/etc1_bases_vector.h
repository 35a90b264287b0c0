// What ETC1 base colours tell of the halves' errors before any table is tried, one tile per lane. See
// vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/etc1_quantize_vector.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// Modifiers of each table, by column.
constexpr int32_t kEtc1Columns[4][8] = {{-8, -17, -29, -42, -60, -80, -106, -183},
                                        {-2, -5, -9, -13, -18, -24, -33, -47},
                                        {2, 5, 9, 13, 18, 24, 33, 47},
                                        {8, 17, 29, 42, 60, 80, 106, 183}};

// Vectors that the errors of eight tables fill.
constexpr int kEtc1Groups = 8 / kLanes;

// One half's base colour.
struct Etc1Base {
    int32_t values[3];
    int32_t weighted;             // weighted sum of the channels
    int32_t constant;             // error without a modifier, less the weighted squares of the pixels
    int32_t room;                 // the largest modifier that no channel leaves 0..255 with
    int32_t bounds[kEtc1Groups];  // no table of the group that leaves the range has a smaller error

    // As a pixel of a tile.
    int32_t Color() const { return values[0] | values[1] << 8 | values[2] << 16; }
    bool HasValuesOf(const Etc1Base& other) const {
        return values[0] == other.values[0] && values[1] == other.values[1] && values[2] == other.values[2];
    }
};

// The base colours of a group's halves; see Etc1Base.
struct Etc1BaseTerms {
    alignas(32) int32_t weighted[4][kLanes];
    alignas(32) int32_t constant[4][kLanes];
    alignas(32) int32_t room[4][kLanes];
    alignas(32) int32_t bounds[4][kEtc1Groups][kLanes];
};

// The least that a modifier in one direction, small or larger, adds to eight pixels' errors. With b a
// channel of the base colour, the modifier m moves it by x = min(m, headroom) to where it clamps; that adds
// w x (x - 2 d) for a pixel d away. This falls up to x = d and rises from there; d is at most the headroom.
// The sums are rounded, by less than what is taken off.
[[gnu::always_inline]] inline I32 LeastGrowth(const F32& small, const F32 (&headroom)[3],
                                              const F32 (&farthest)[3]) {
    F32 sum{};
    for (int c = 0; c < 3; ++c) {
        const F32 x = Max(Min(small, headroom[c]), farthest[c]);
        sum += x * (x - 2.0f * farthest[c]) * static_cast<float>(8 * kEtc1Weights[c]);
    }
    return ToInt(sum) - 1000;
}

inline void MeasureBases(const Etc1HalfColors& colors, const Etc1Bases& bases, int half,
                         Etc1BaseTerms& terms) {
    F32 below[3];
    F32 above[3];
    F32 deepest[3];
    F32 highest[3];
    F32 weighted{};
    I32 constant{};
    F32 room = F32{} + 255.0f;
    for (int c = 0; c < 3; ++c) {
        const F32 value = ToFloat(LoadVector<I32>(bases.values[half][c]));
        const F32 product = value * static_cast<float>(kEtc1Weights[c]);
        weighted += product;
        // Eight squared distances from the base colour, less the pixels' squares.
        constant += ToInt(product) * ToInt(8.0f * value - 16.0f * colors.averages[half][c]);
        below[c] = value;
        above[c] = 255.0f - value;
        room = Min(room, Min(below[c], above[c]));
        deepest[c] = value - ToFloat(colors.lowest[half][c]);
        highest[c] = ToFloat(colors.highest[half][c]) - value;
    }
    StoreVector(terms.weighted[half], ToInt(weighted));
    StoreVector(terms.constant[half], constant);
    StoreVector(terms.room[half], ToInt(room));
    // Of the tables that clamp, the first one has the smallest modifiers.
    F32 firstSmall = F32{} + static_cast<float>(kEtc1Columns[2][0]);
    for (int t = 0; t < 7; ++t) {
        const F32 next = F32{} + static_cast<float>(kEtc1Columns[2][t + 1]);
        firstSmall = room >= static_cast<float>(kEtc1Columns[3][t]) ? next : firstSmall;
    }
    for (int group = 0; group < kEtc1Groups; ++group) {
        const F32 small = Max(firstSmall, F32{} + static_cast<float>(kEtc1Columns[2][group * kLanes]));
        const I32 growth = Min(LeastGrowth(small, below, deepest), LeastGrowth(small, above, highest));
        StoreVector(terms.bounds[half][group], constant + growth);
    }
}

[[gnu::noinline]] inline void MeasureBases(const Etc1HalfColors& colors, const Etc1Bases& bases,
                                           Etc1BaseTerms& terms) {
    for (int half = 0; half < 4; ++half) {
        MeasureBases(colors, bases, half, terms);
    }
}

inline Etc1Base BaseOfLane(const Etc1Bases& bases, const Etc1BaseTerms& terms, int half, size_t lane) {
    const auto& values = bases.values[half];
    Etc1Base base{{values[0][lane], values[1][lane], values[2][lane]},
                  terms.weighted[half][lane],
                  terms.constant[half][lane],
                  terms.room[half][lane],
                  {}};
    for (int group = 0; group < kEtc1Groups; ++group) {
        base.bounds[group] = terms.bounds[half][group][lane];
    }
    return base;
}

}  // namespace
}  // namespace zorvan::texcompress
