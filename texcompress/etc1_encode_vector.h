// ETC1 encoding on vectors. See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/block_kernels.h"
#include "texcompress/etc1_columns_vector.h"
#include "texcompress/etc1_half_vector.h"
#include "texcompress/etc1_quantize_vector.h"

namespace zorvan::texcompress {
namespace {

// The base colours of a group of tiles by one way to choose them.
struct Etc1GroupBases {
    Etc1Bases bases;
    Etc1BaseTerms terms;

    template <typename Codes>
    void Choose(const Etc1HalfColors& colors) {
        ChooseBases<Codes>(colors, bases);
        MeasureBases(colors, bases, terms);
    }
};

// The base colours of one of the tiles.
struct Etc1TileBases {
    Etc1Base halves[4];
    uint32_t bits[2];

    Etc1TileBases(const Etc1GroupBases& group, size_t lane)
        : halves{BaseOfLane(group.bases, group.terms, 0, lane), BaseOfLane(group.bases, group.terms, 1, lane),
                 BaseOfLane(group.bases, group.terms, 2, lane),
                 BaseOfLane(group.bases, group.terms, 3, lane)},
          bits{group.bases.bits[0][lane], group.bases.bits[1][lane]} {}
};

// Halves that have the same base colour in another candidate are not searched again.
inline Etc1Candidate CodeOrientation(const Etc1Pixels& pixels, const Etc1TileBases& bases, bool flipped,
                                     const Etc1Candidate* other) {
    Etc1Candidate candidate;
    candidate.flipped = flipped;
    candidate.bits = bases.bits[flipped ? 1 : 0];
    for (int i = 0; i < 2; ++i) {
        const int half = flipped ? 2 + i : i;
        const Etc1Base& base = bases.halves[half];
        const bool known = other != nullptr && other->halves[i].base->HasValuesOf(base);
        candidate.halves[i] = known ? other->halves[i] : CodeHalf(pixels, half, base);
    }
    return candidate;
}

// The better of two orientations, and its columns once they are known.
struct Etc1Choice {
    const Etc1Candidate* candidate;
    Etc1Columns columns;
    bool hasColumns;
    bool undecided;  // only the plain encoder can tell

    void NeedColumns(const Etc1Pixels& pixels) {
        if (!hasColumns) {
            columns = AssignColumns(pixels, *candidate);
            undecided = undecided || columns.tied;
            hasColumns = true;
        }
    }
    double TileError(const Etc1Pixels& pixels) const {
        return ErrorsOf(pixels, *candidate, columns.word2).OfTile();
    }
};

// The flipped candidate only where it is strictly better.
inline void ChooseOrientation(const Etc1Pixels& pixels, const Etc1Candidate& unflipped,
                              const Etc1Candidate& flipped, Etc1Choice& choice) {
    choice.hasColumns = false;
    choice.undecided = false;
    if (flipped.Error() != unflipped.Error() || pixels.flat) {
        choice.candidate = flipped.Error() < unflipped.Error() ? &flipped : &unflipped;
        return;
    }
    const Etc1Columns ofUnflipped = AssignColumns(pixels, unflipped);
    const Etc1PixelErrors unflippedErrors = ErrorsOf(pixels, unflipped, ofUnflipped.word2);
    Etc1Columns ofFlipped = ofUnflipped;
    Etc1PixelErrors flippedErrors = unflippedErrors;
    if (!unflipped.HasOnePalette() || !flipped.HasOnePalette() ||
        !unflipped.halves[0].HasPaletteOf(flipped.halves[0])) {
        ofFlipped = AssignColumns(pixels, flipped);
        flippedErrors = ErrorsOf(pixels, flipped, ofFlipped.word2);
    }
    const bool flip = flippedErrors.OfHalf(2) + flippedErrors.OfHalf(3) <
                      unflippedErrors.OfHalf(0) + unflippedErrors.OfHalf(1);
    choice.candidate = flip ? &flipped : &unflipped;
    choice.columns = flip ? ofFlipped : ofUnflipped;
    choice.hasColumns = true;
    choice.undecided = ofUnflipped.tied || ofFlipped.tied;
}

// Both orientations with one way to choose base colours. Searches of `other` are used again.
struct Etc1Orientations {
    Etc1Candidate unflipped, flipped;

    Etc1Orientations(const Etc1Pixels& pixels, const Etc1TileBases& bases, const Etc1Orientations* other)
        : unflipped(CodeOrientation(pixels, bases, false, other ? &other->unflipped : nullptr)),
          // The halves of a flat tile are all the same.
          flipped(CodeOrientation(pixels, bases, true,
                                  pixels.flat ? &unflipped : (other ? &other->flipped : nullptr))) {}

    bool SameAs(const Etc1Orientations& other) const {
        return unflipped.FirstWord() == other.unflipped.FirstWord() &&
               flipped.FirstWord() == other.flipped.FirstWord();
    }
};

// Whether the combined choice is strictly better.
inline bool IsCombinedBetter(const Etc1Pixels& pixels, Etc1Choice& average, Etc1Choice& combined) {
    const int32_t gain = average.candidate->Error() - combined.candidate->Error();
    if (gain != 0 || combined.candidate->FirstWord() == average.candidate->FirstWord()) {
        return gain > 0;
    }
    average.NeedColumns(pixels);
    combined.NeedColumns(pixels);
    return combined.TileError(pixels) < average.TileError(pixels);
}

// Encodes one tile, whose base colours stand in a lane; false where only the plain encoder can decide.
inline bool EncodeEtc1Tile(const Tile& tile, const Etc1HalfColors& colors, const Etc1GroupBases& averageGroup,
                           const Etc1GroupBases& combinedGroup, size_t lane, uint8_t* block) {
    const Etc1Pixels pixels = PixelsOf(tile, colors, lane);
    const Etc1TileBases averageBases(averageGroup, lane);
    const Etc1TileBases combinedBases(combinedGroup, lane);
    const Etc1Orientations averages(pixels, averageBases, nullptr);
    const Etc1Orientations combinations(pixels, combinedBases, &averages);
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
    Etc1HalfColors colors;
    Etc1GroupBases averageGroup;
    Etc1GroupBases combinedGroup;
    for (size_t i = 0; i < count; ++i) {
        const size_t lane = i % kLanes;
        if (lane == 0) {
            LoadTileGroup(tiles + i, count - i, words);
            colors = MeasureHalves(words);
            averageGroup.Choose<NearestCodes>(colors);
            combinedGroup.Choose<CombinedCodes>(colors);
        }
        if (!EncodeEtc1Tile(tiles[i], colors, averageGroup, combinedGroup, lane, blocks + i * stride)) {
            kScalarKernels.encodeEtc1(tiles + i, 1, blocks + i * stride, stride);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress
