// The pixels' columns of ETC1 candidates on vectors, one pixel per lane. See vector_types.h for how it is
// compiled.
#pragma once

#include "texcompress/etc1_half_vector.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// One candidate block: its colour bits, without tables, and its halves.
struct Etc1Candidate {
    uint32_t bits;
    Etc1Half halves[2];
    bool flipped;

    int32_t Error() const { return halves[0].error + halves[1].error; }
    // Whether the halves' palettes are the same.
    bool HasOnePalette() const { return halves[0].HasPaletteOf(halves[1]); }
    uint32_t FirstWord() const { return bits | halves[0].table << 5 | halves[1].table << 2; }
};

// Bits of the pixels in either half of the second word.
constexpr int32_t kEtc1IndexBits[16] = {1 << 0, 1 << 4, 1 << 8,  1 << 12, 1 << 1, 1 << 5, 1 << 9,  1 << 13,
                                        1 << 2, 1 << 6, 1 << 10, 1 << 14, 1 << 3, 1 << 7, 1 << 11, 1 << 15};
constexpr int32_t kEtc1Right[16] = {0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1, -1};
constexpr int32_t kEtc1Bottom[16] = {0, 0, 0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1};

// The values of either half for pixels whose lanes of `second` are all ones in the second half.
[[gnu::always_inline]] inline I32 ChooseHalf(const I32& second, int32_t of0, int32_t of1) {
    return Select(second, I32{} + of1, I32{} + of0);
}

// Where pixels k, k + 1, ... are in a candidate's second half.
[[gnu::always_inline]] inline I32 SecondHalf(const Etc1Candidate& candidate, int k) {
    return LoadVector<I32>((candidate.flipped ? kEtc1Bottom : kEtc1Right) + k);
}

// The columns of a candidate's pixels.
struct Etc1Columns {
    uint32_t word2;  // the index word
    bool tied;       // whether for some pixel another column is as good, but not in each channel
};

// The errors of a candidate's pixels as the plain encoder computes and sums them.
struct Etc1PixelErrors {
    alignas(32) double values[16];

    double OfHalf(int half) const {
        double error = 0.0;
        for (const uint8_t k : kEtc1Halves[half]) {
            error += values[k];
        }
        return error;
    }
    double OfTile() const {
        double error = 0.0;
        for (const double value : values) {
            error += value;
        }
        return error;
    }
};

[[gnu::noinline]] inline Etc1PixelErrors ErrorsOf(const Etc1Pixels& pixels, const Etc1Candidate& candidate,
                                                  uint32_t word2) {
    Etc1PixelErrors errors;
    const Etc1Half& half0 = candidate.halves[0];
    const Etc1Half& half1 = candidate.halves[1];
    const I32 negatives = I32{} + static_cast<int32_t>(word2 >> 16);
    const I32 outers = I32{} + static_cast<int32_t>(word2 & 0xFFFF);
    for (int k = 0; k < 16; k += kLanes) {
        const I32 second = SecondHalf(candidate, k);
        const auto places = LoadVector<I32>(kEtc1IndexBits + k);
        const I32 negative = (negatives & places) != 0;
        const I32 smalls = ChooseHalf(second, kEtc1Columns[2][half0.table], kEtc1Columns[2][half1.table]);
        const I32 larges = ChooseHalf(second, kEtc1Columns[3][half0.table], kEtc1Columns[3][half1.table]);
        const I32 modifiers = (Select(I32((outers & places) != 0), larges, smalls) ^ negative) - negative;
        alignas(32) int32_t squares[3][kLanes];
        for (int c = 0; c < 3; ++c) {
            const F32 base = ToFloat(ChooseHalf(second, half0.base->values[c], half1.base->values[c]));
            const F32 value = Min(Max(base + ToFloat(modifiers), F32{}), F32{} + 255.0f);
            const F32 difference = ToFloat(LoadVector<I32>(pixels.channels[c] + k) & 255) - value;
            StoreVector(squares[c], ToInt(difference * difference));
        }
        for (int i = 0; i < kLanes; i += kLanes / 2) {
            const auto square = [&](int c) {
                return __builtin_convertvector(LoadVector<HalfI32>(squares[c] + i), F64);
            };
            StoreVector(errors.values + k + i, 0.299 * square(0) + 0.587 * square(1) + 0.114 * square(2));
        }
    }
    return errors;
}

// The best column of some pixels, one per lane.
struct BestColumns {
    I32 errors, squares[3], columns, tied;

    [[gnu::always_inline]] void Offer(const I32 (&offered)[3], int column) {
        const I32 sum =
            offered[0] * kEtc1Weights[0] + offered[1] * kEtc1Weights[1] + offered[2] * kEtc1Weights[2];
        const I32 better = sum < errors;
        const I32 differs = (offered[0] != squares[0]) | (offered[1] != squares[1]);
        tied = Select(better, I32{}, tied | ((sum == errors) & differs));
        errors = Select(better, sum, errors);
        columns = Select(better, I32{} + column, columns);
        for (int c = 0; c < 3; ++c) {
            squares[c] = Select(better, offered[c], squares[c]);
        }
    }
};

// The columns by D, see etc1_half_vector.h, for candidates whose tables do not leave the range.
inline Etc1Columns ColumnsByDistances(const Etc1Pixels& pixels, const Etc1Candidate& candidate) {
    const Etc1Half& half0 = candidate.halves[0];
    const Etc1Half& half1 = candidate.halves[1];
    I32 bits{};
    I32 tied{};
    for (int k = 0; k < 16; k += kLanes) {
        const I32 second = SecondHalf(candidate, k);
        const I32 difference =
            LoadVector<I32>(pixels.sums + k) - ChooseHalf(second, half0.base->weighted, half1.base->weighted);
        const I32 distance = Absolute(difference);
        const I32 threshold = ChooseHalf(second, kEtc1Thresholds[half0.table], kEtc1Thresholds[half1.table]);
        const I32 color = LoadVector<I32>(pixels.tile->pixels + k) & 0xFFFFFF;
        const I32 base = ChooseHalf(second, half0.base->Color(), half1.base->Color());
        // A pixel of the base colour itself is as far from both small columns in each channel.
        tied |= (distance == threshold) | ((difference == 0) & (color != base));
        const auto places = LoadVector<I32>(kEtc1IndexBits + k);
        bits |= (places << 16 & (difference <= 0)) | (places & (distance > threshold));
    }
    return {JoinLanes(bits), AnyLane(tied)};
}

// Best columns of kLanes pixels from pixel k on.
inline BestColumns FindColumns(const Etc1Pixels& pixels, const Etc1Candidate& candidate, int k) {
    const I32 second = SecondHalf(candidate, k);
    const Etc1Half& half0 = candidate.halves[0];
    const Etc1Half& half1 = candidate.halves[1];
    BestColumns best{I32{} + INT32_MAX, {}, {}, {}};
    for (const auto& column : kEtc1Columns) {
        const I32 modifiers = ChooseHalf(second, column[half0.table], column[half1.table]);
        I32 squares[3];
        for (int c = 0; c < 3; ++c) {
            const I32 value = ChooseHalf(second, half0.base->values[c], half1.base->values[c]) + modifiers;
            const I32 difference =
                (LoadVector<I32>(pixels.channels[c] + k) & 255) - Min(Max(value, I32{}), I32{} + 255);
            squares[c] = difference * difference;
        }
        best.Offer(squares, static_cast<int>(&column - kEtc1Columns));
    }
    return best;
}

[[gnu::noinline]] inline Etc1Columns ColumnsBySearch(const Etc1Pixels& pixels,
                                                     const Etc1Candidate& candidate) {
    I32 bits{};
    I32 tied{};
    for (int k = 0; k < 16; k += kLanes) {
        const BestColumns best = FindColumns(pixels, candidate, k);
        tied |= best.tied;
        // Index values of columns 0 to 3 are 3, 2, 0, 1.
        const auto places = LoadVector<I32>(kEtc1IndexBits + k);
        bits |= (places << 16 & (best.columns < 2)) | (places & ((best.columns == 0) | (best.columns == 3)));
    }
    return {JoinLanes(bits), AnyLane(tied)};
}

inline Etc1Columns AssignColumns(const Etc1Pixels& pixels, const Etc1Candidate& candidate) {
    if (!candidate.halves[0].Clamps() && !candidate.halves[1].Clamps()) {
        const Etc1Columns columns = ColumnsByDistances(pixels, candidate);
        if (!columns.tied) {
            return columns;
        }
    }
    return ColumnsBySearch(pixels, candidate);
}

}  // namespace
}  // namespace zorvan::texcompress
