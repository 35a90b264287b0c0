// ETC1 encoding on vectors. See vector_types.h for how it is compiled.
#ifndef ZORVAN_TEXCOMPRESS_ETC1_ENCODE_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ETC1_ENCODE_VECTOR_H

#include <cstddef>

#include "texcompress/block_kernels.h"
#include "texcompress/etc1_columns_vector.h"
#include "texcompress/etc1_half_vector.h"
#include "texcompress/etc1_quantize_vector.h"

namespace zorvan::texcompress {
namespace {

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

/// Both orientations with one way to choose base colours. Searches of `other` are used again.
struct Etc1Orientations {
    Etc1Candidate unflipped, flipped;

    Etc1Orientations(const Etc1Pixels& pixels, const Etc1Bases& bases, size_t lane,
                     const Etc1Orientations* other)
        : unflipped(CodeOrientation(pixels, bases, lane, false, other ? &other->unflipped : nullptr)),
          // The halves of a flat tile are all the same.
          flipped(CodeOrientation(pixels, bases, lane, true,
                                  pixels.flat ? &unflipped : (other ? &other->flipped : nullptr))) {}

    bool SameAs(const Etc1Orientations& other) const {
        return unflipped.FirstWord() == other.unflipped.FirstWord() &&
               flipped.FirstWord() == other.flipped.FirstWord();
    }
};

/// Whether the combined choice is strictly better.
inline bool IsCombinedBetter(const Etc1Pixels& pixels, Etc1Choice& average, Etc1Choice& combined) {
    const int32_t gain = average.candidate->Error() - combined.candidate->Error();
    if (gain != 0 || combined.candidate->FirstWord() == average.candidate->FirstWord()) {
        return gain > 0;
    }
    average.NeedColumns(pixels);
    combined.NeedColumns(pixels);
    return combined.columns.TileError() < average.columns.TileError();
}

/// Encodes one tile, whose base colours stand in a lane; false where only the plain encoder can decide.
inline bool EncodeEtc1Tile(const Tile& tile, const Etc1Bases& averageBases, const Etc1Bases& combinedBases,
                           size_t lane, uint8_t* block) {
    const Etc1Pixels pixels = PixelsOf(tile);
    const Etc1Orientations averages(pixels, averageBases, lane, nullptr);
    const Etc1Orientations combinations(pixels, combinedBases, lane, &averages);
    Etc1Choice average;
    ChooseOrientation(pixels, averages.unflipped, averages.flipped, average);
    Etc1Choice combined;
    Etc1Choice* best = &average;
    if (!combinations.SameAs(averages)) {
        ChooseOrientation(pixels, combinations.unflipped, combinations.flipped, combined);
        best = IsCombinedBetter(pixels, average, combined) ? &combined : &average;
        average.undecided = average.undecided || combined.undecided;
    }
    best->NeedColumns(pixels);
    StoreBigEndianWord(block, best->candidate->FirstWord());
    StoreBigEndianWord(block + 4, best->columns.word2);
    return !average.undecided && !best->undecided;
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
