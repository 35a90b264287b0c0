// The pixels' columns of ETC1 candidates on vectors, one pixel per lane. See vector_types.h for how it is
// compiled.
#ifndef ZORVAN_TEXCOMPRESS_ETC1_COLUMNS_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ETC1_COLUMNS_VECTOR_H

#include "texcompress/etc1_half_vector.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

/// One candidate block: its colour bits, without tables, and its halves.
struct Etc1Candidate {
    uint32_t bits;
    Etc1Half halves[2];
    bool flipped;

    int32_t Error() const { return halves[0].error + halves[1].error; }
    uint32_t FirstWord() const { return bits | halves[0].table << 5 | halves[1].table << 2; }
};

/// Bits of the pixels in either half of the second word.
constexpr int32_t kEtc1IndexBits[16] = {1 << 0, 1 << 4, 1 << 8,  1 << 12, 1 << 1, 1 << 5, 1 << 9,  1 << 13,
                                        1 << 2, 1 << 6, 1 << 10, 1 << 14, 1 << 3, 1 << 7, 1 << 11, 1 << 15};
constexpr int32_t kEtc1Right[16] = {0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1, -1, 0, 0, -1, -1};
constexpr int32_t kEtc1Bottom[16] = {0, 0, 0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1};

/// The best columns of a tile's pixels and their squared differences.
struct Etc1Columns {
    uint32_t word2;  ///< the index word
    bool tied;       ///< whether for some pixel another column is as good, but not in each channel
    alignas(32) int32_t squares[3][16];

    double PixelError(int k) const {
        return 0.299 * squares[0][k] + 0.587 * squares[1][k] + 0.114 * squares[2][k];
    }
    double HalfError(int half) const {
        double error = 0.0;
        for (const uint8_t k : kEtc1Halves[half]) {
            error += PixelError(k);
        }
        return error;
    }
    double TileError() const {
        double error = 0.0;
        for (int k = 0; k < 16; ++k) {
            error += PixelError(k);
        }
        return error;
    }
};

/// The best column of some pixels, one per lane.
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

/// Best columns of kLanes pixels from pixel k on.
inline BestColumns FindColumns(const Etc1Pixels& pixels, const Etc1Candidate& candidate, int k) {
    const auto second = LoadVector<I32>((candidate.flipped ? kEtc1Bottom : kEtc1Right) + k);
    const Etc1Half& half0 = candidate.halves[0];
    const Etc1Half& half1 = candidate.halves[1];
    BestColumns best{I32{} + INT32_MAX, {}, {}, {}};
    for (const auto& column : kEtc1Columns) {
        const I32 modifiers = Select(second, I32{} + column[half1.table], I32{} + column[half0.table]);
        I32 squares[3];
        for (int c = 0; c < 3; ++c) {
            const I32 value = Select(second, I32{} + half1.base[c], I32{} + half0.base[c]) + modifiers;
            const I32 difference =
                LoadVector<I32>(pixels.channels[c] + k) - Min(Max(value, I32{}), I32{} + 255);
            squares[c] = difference * difference;
        }
        best.Offer(squares, static_cast<int>(&column - kEtc1Columns));
    }
    return best;
}

[[gnu::noinline]] inline Etc1Columns AssignColumns(const Etc1Pixels& pixels, const Etc1Candidate& candidate) {
    Etc1Columns assigned;
    I32 bits{};
    I32 tied{};
    for (int k = 0; k < 16; k += kLanes) {
        const BestColumns best = FindColumns(pixels, candidate, k);
        tied |= best.tied;
        for (int c = 0; c < 3; ++c) {
            StoreVector(assigned.squares[c] + k, best.squares[c]);
        }
        // Index values of columns 0 to 3 are 3, 2, 0, 1.
        const auto places = LoadVector<I32>(kEtc1IndexBits + k);
        bits |= (places << 16 & (best.columns < 2)) | (places & ((best.columns == 0) | (best.columns == 3)));
    }
    assigned.word2 = 0;
    for (int i = 0; i < kLanes; ++i) {
        assigned.word2 |= static_cast<uint32_t>(bits[i]);
    }
    assigned.tied = AnyLane(tied);
    return assigned;
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ETC1_COLUMNS_VECTOR_H
