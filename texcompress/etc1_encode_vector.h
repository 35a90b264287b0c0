// ETC1 encoding on vectors. See vector_types.h for how it is compiled.
#ifndef ZORVAN_TEXCOMPRESS_ETC1_ENCODE_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ETC1_ENCODE_VECTOR_H

#include <cstddef>

#include "texcompress/block_kernels.h"
#include "texcompress/etc1_half_vector.h"
#include "texcompress/etc1_quantize_vector.h"

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

/// Halves that have the same base colour in another candidate are not searched again.
inline Etc1Candidate CodeOrientation(const Etc1Pixels& pixels, const Etc1Bases& bases, size_t lane,
                                     bool flipped, const Etc1Candidate* other) {
    Etc1Candidate candidate;
    candidate.flipped = flipped;
    candidate.bits = bases.bits[flipped ? 1 : 0][lane];
    const int first = flipped ? 2 : 0;
    for (int i = 0; i < 2; ++i) {
        const auto& values = bases.values[first + i];
        const int32_t base[3] = {values[0][lane], values[1][lane], values[2][lane]};
        const bool known = other != nullptr && other->halves[i].HasBase(base);
        candidate.halves[i] = known ? other->halves[i] : CodeHalf(pixels, first + i, base);
    }
    return candidate;
}

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

/// The better of two orientations, and its columns once they are known.
struct Etc1Choice {
    const Etc1Candidate* candidate;
    Etc1Columns columns;
    bool hasColumns;
    bool undecided;  ///< only the plain encoder can tell

    void NeedColumns(const Etc1Pixels& pixels) {
        if (!hasColumns) {
            columns = AssignColumns(pixels, *candidate);
            undecided = undecided || columns.tied;
            hasColumns = true;
        }
    }
};

/// The flipped candidate only where it is strictly better.
inline void ChooseOrientation(const Etc1Pixels& pixels, const Etc1Candidate& unflipped,
                              const Etc1Candidate& flipped, Etc1Choice& choice) {
    choice.hasColumns = false;
    choice.undecided = false;
    if (flipped.Error() != unflipped.Error() || pixels.flat) {
        choice.candidate = flipped.Error() < unflipped.Error() ? &flipped : &unflipped;
        return;
    }
    const Etc1Columns ofUnflipped = AssignColumns(pixels, unflipped);
    const Etc1Columns ofFlipped = AssignColumns(pixels, flipped);
    const bool flip =
        ofFlipped.HalfError(2) + ofFlipped.HalfError(3) < ofUnflipped.HalfError(0) + ofUnflipped.HalfError(1);
    choice.candidate = flip ? &flipped : &unflipped;
    choice.columns = flip ? ofFlipped : ofUnflipped;
    choice.hasColumns = true;
    choice.undecided = ofUnflipped.tied || ofFlipped.tied;
}

inline Etc1Pixels PixelsOf(const Tile& tile) {
    Etc1Pixels pixels;
    I32 differences{};
    for (int k = 0; k < 16; k += kLanes) {
        const auto words = LoadVector<I32>(tile.pixels + k);
        differences |= words ^ static_cast<int32_t>(tile.pixels[0]);
        for (int c = 0; c < 3; ++c) {
            StoreVector(pixels.channels[c] + k, I32(words >> (8 * c) & 255));
        }
    }
    pixels.tile = &tile;
    pixels.flat = !AnyLane(differences & 0xFFFFFF);
    return pixels;
}

/// Encodes one tile, whose base colours stand in a lane; false where only the plain encoder can decide.
inline bool EncodeEtc1Tile(const Tile& tile, const Etc1Bases& averageBases, const Etc1Bases& combinedBases,
                           size_t lane, uint8_t* block) {
    const Etc1Pixels pixels = PixelsOf(tile);
    Etc1Choice average;
    const Etc1Candidate averageUnflipped = CodeOrientation(pixels, averageBases, lane, false, nullptr);
    const Etc1Candidate averageFlipped =
        CodeOrientation(pixels, averageBases, lane, true, pixels.flat ? &averageUnflipped : nullptr);
    ChooseOrientation(pixels, averageUnflipped, averageFlipped, average);
    Etc1Choice combined;
    const Etc1Candidate combinedUnflipped =
        CodeOrientation(pixels, combinedBases, lane, false, &averageUnflipped);
    const Etc1Candidate combinedFlipped = CodeOrientation(pixels, combinedBases, lane, true,
                                                          pixels.flat ? &combinedUnflipped : &averageFlipped);
    ChooseOrientation(pixels, combinedUnflipped, combinedFlipped, combined);

    const int32_t gain = average.candidate->Error() - combined.candidate->Error();
    bool takeCombined = gain > 0;
    if (gain == 0 && combined.candidate->FirstWord() != average.candidate->FirstWord()) {
        average.NeedColumns(pixels);
        combined.NeedColumns(pixels);
        takeCombined = combined.columns.TileError() < average.columns.TileError();
    }
    Etc1Choice& best = takeCombined ? combined : average;
    best.NeedColumns(pixels);
    StoreBigEndianWord(block, best.candidate->FirstWord());
    StoreBigEndianWord(block + 4, best.columns.word2);
    return !average.undecided && !combined.undecided;
}

inline void EncodeEtc1OnVectors(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    I32 words[16];
    Etc1Bases averageBases;
    Etc1Bases combinedBases;
    for (size_t i = 0; i < count; ++i) {
        const size_t lane = i % kLanes;
        if (lane == 0) {
            LoadTileGroup(tiles + i, count - i, words);
            const Etc1Averages averages = AverageHalves(words);
            ChooseBases<NearestCodes>(averages, averageBases);
            ChooseBases<CombinedCodes>(averages, combinedBases);
        }
        if (!EncodeEtc1Tile(tiles[i], averageBases, combinedBases, lane, blocks + i * stride)) {
            kScalarKernels.encodeEtc1(tiles + i, 1, blocks + i * stride, stride);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ETC1_ENCODE_VECTOR_H
