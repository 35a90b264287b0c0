#include "texcompress/etc1_encode.h"

#include <limits>

#include "texcompress/etc1_decode.h"
#include "texcompress/etc1_quantize.h"
#include "texcompress/etc1_tables.h"

namespace zorvan::texcompress {
namespace {

double PerceptualError(const Rgb& a, const Rgb& b) {
    const int dr = a.r - b.r;
    const int dg = a.g - b.g;
    const int db = a.b - b.b;
    return wR2 * (dr * dr) + wG2 * (dg * dg) + wB2 * (db * db);
}

// How one half is coded: the modifier table and the bits of its pixels' index values.
struct HalfCode {
    uint32_t table = 0;
    uint32_t indicesMSB = 0;
    uint32_t indicesLSB = 0;
    double error = std::numeric_limits<double>::max();
};

struct ColumnChoice {
    uint32_t column;
    double error;
};

ColumnChoice BestColumn(const Rgb& pixel, const Rgb& base, const std::array<int32_t, 4>& modifiers) {
    ColumnChoice best{0, PerceptualError(pixel, AddModifier(base, modifiers[0]))};
    for (uint32_t column = 1; column < modifiers.size(); ++column) {
        const double error = PerceptualError(pixel, AddModifier(base, modifiers[column]));
        if (error < best.error) {
            best = {column, error};
        }
    }
    return best;
}

template <int Columns, int Rows>
HalfCode TryTable(const Rgb* half, int width, const Rgb& base, uint32_t table) {
    HalfCode code{table, 0, 0, 0.0};
    for (int row = 0; row < Rows; ++row) {
        for (int column = 0; column < Columns; ++column) {
            const ColumnChoice choice =
                BestColumn(half[row * width + column], base, compressParams[2 * table]);
            const uint32_t index = scramble[choice.column];
            const int bit = 4 * column + row;
            code.indicesMSB |= (index >> 1) << bit;
            code.indicesLSB |= (index & 1) << bit;
            code.error += choice.error;
        }
    }
    return code;
}

template <int Columns, int Rows>
double TryAllTables(const Rgb* half, int width, const Rgb& base, uint32_t& bestTable,
                    uint32_t& bestIndicesMSB, uint32_t& bestIndicesLSB) {
    HalfCode best;
    for (uint32_t table = 0; table < 8; ++table) {
        const HalfCode code = TryTable<Columns, Rows>(half, width, base, table);
        if (code.error < best.error) {
            best = code;
        }
    }
    bestTable = best.table;
    bestIndicesMSB = best.indicesMSB;
    bestIndicesLSB = best.indicesLSB;
    return best.error;
}

// One way to quantize base colours, for both code sizes.
struct BaseQuantizer {
    BaseColor (*toFiveBits)(const AverageColor& average);
    BaseColor (*toFourBits)(const AverageColor& average);
};

constexpr BaseQuantizer kAverage{Quantize555Nearest, Quantize444Nearest};
constexpr BaseQuantizer kCombined{quantize555ColorCombinedPerceptual, quantize444ColorCombinedPerceptual};

// The two base colours of a block with their bits of the first word, the diff bit among them.
struct BaseColors {
    Rgb first, second;
    uint32_t bits;
};

bool FitsDifferentialMode(const BaseColor& first, const BaseColor& second) {
    for (size_t c = 0; c < 3; ++c) {
        const int difference = second.codes[c] - first.codes[c];
        if (difference < -4 || difference > 3) {
            return false;
        }
    }
    return true;
}

BaseColors ChooseBaseColors(const AverageColor& average1, const AverageColor& average2,
                            const BaseQuantizer& quantizer) {
    BaseColor first = quantizer.toFiveBits(average1);
    BaseColor second = quantizer.toFiveBits(average2);
    uint32_t bits = 0;
    if (FitsDifferentialMode(first, second)) {
        for (size_t c = 0; c < 3; ++c) {
            const auto difference = static_cast<uint32_t>(second.codes[c] - first.codes[c]) & 7;
            bits |= (static_cast<uint32_t>(first.codes[c]) << 3 | difference) << (24 - 8 * c);
        }
        return {first.expanded, second.expanded, bits | kEtc1DiffBit};
    }
    first = quantizer.toFourBits(average1);
    second = quantizer.toFourBits(average2);
    for (size_t c = 0; c < 3; ++c) {
        bits |= static_cast<uint32_t>(first.codes[c] << 4 | second.codes[c]) << (24 - 8 * c);
    }
    return {first.expanded, second.expanded, bits};
}

struct BlockCode {
    uint32_t word1, word2;
    double error;
};

// Joins the halves' codes; the second half's index bits lie shift above the first's.
BlockCode AssembleBlock(uint32_t colorBits, const HalfCode& first, const HalfCode& second, int shift) {
    const uint32_t msb = first.indicesMSB | second.indicesMSB << shift;
    const uint32_t lsb = first.indicesLSB | second.indicesLSB << shift;
    return {colorBits | first.table << 5 | second.table << 2, msb << 16 | lsb, first.error + second.error};
}

BlockCode EncodeUnflipped(const Rgb* image, int width, int x, int y, const BaseQuantizer& quantizer) {
    const BaseColors bases =
        ChooseBaseColors(computeAverageColor2x4noQuantFloat(image, width, x, y),
                         computeAverageColor2x4noQuantFloat(image, width, x + 2, y), quantizer);
    HalfCode left;
    HalfCode right;
    left.error = tryalltables_3bittable2x4percep(image, width, x, y, bases.first, left.table, left.indicesMSB,
                                                 left.indicesLSB);
    right.error = tryalltables_3bittable2x4percep(image, width, x + 2, y, bases.second, right.table,
                                                  right.indicesMSB, right.indicesLSB);
    return AssembleBlock(bases.bits, left, right, 8);
}

BlockCode EncodeFlipped(const Rgb* image, int width, int x, int y, const BaseQuantizer& quantizer) {
    const BaseColors bases =
        ChooseBaseColors(computeAverageColor4x2noQuantFloat(image, width, x, y),
                         computeAverageColor4x2noQuantFloat(image, width, x, y + 2), quantizer);
    HalfCode top;
    HalfCode bottom;
    top.error = tryalltables_3bittable4x2percep(image, width, x, y, bases.first, top.table, top.indicesMSB,
                                                top.indicesLSB);
    bottom.error = tryalltables_3bittable4x2percep(image, width, x, y + 2, bases.second, bottom.table,
                                                   bottom.indicesMSB, bottom.indicesLSB);
    return AssembleBlock(bases.bits | kEtc1FlipBit, top, bottom, 2);
}

void EncodeBlock(const Rgb* image, int width, int x, int y, const BaseQuantizer& quantizer, uint32_t& word1,
                 uint32_t& word2) {
    const BlockCode unflipped = EncodeUnflipped(image, width, x, y, quantizer);
    const BlockCode flipped = EncodeFlipped(image, width, x, y, quantizer);
    const BlockCode& best = flipped.error < unflipped.error ? flipped : unflipped;
    word1 = best.word1;
    word2 = best.word2;
}

}  // namespace

double tryalltables_3bittable2x4percep(const Rgb* image, int width, int x, int y, const Rgb& base,
                                       uint32_t& bestTable, uint32_t& bestIndicesMSB,
                                       uint32_t& bestIndicesLSB) {
    return TryAllTables<2, 4>(image + y * width + x, width, base, bestTable, bestIndicesMSB, bestIndicesLSB);
}

double tryalltables_3bittable4x2percep(const Rgb* image, int width, int x, int y, const Rgb& base,
                                       uint32_t& bestTable, uint32_t& bestIndicesMSB,
                                       uint32_t& bestIndicesLSB) {
    return TryAllTables<4, 2>(image + y * width + x, width, base, bestTable, bestIndicesMSB, bestIndicesLSB);
}

double HalfErrorOfTable(const Tile& tile, int half, const Rgb& base, uint32_t table) {
    RgbTile pixels;
    for (size_t k = 0; k < kTilePixels; ++k) {
        const uint32_t word = tile.pixels[k];
        pixels[k] = {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8),
                     static_cast<uint8_t>(word >> 16)};
    }
    const bool flipped = half >= 2;
    const Rgb* corner = pixels.data() + (half % 2) * (flipped ? 8 : 2);
    return flipped ? TryTable<4, 2>(corner, 4, base, table).error
                   : TryTable<2, 4>(corner, 4, base, table).error;
}

void compressBlockDiffFlipAveragePerceptual(const Rgb* image, int width, int x, int y, uint32_t& word1,
                                            uint32_t& word2) {
    EncodeBlock(image, width, x, y, kAverage, word1, word2);
}

void compressBlockDiffFlipCombinedPerceptual(const Rgb* image, int width, int x, int y, uint32_t& word1,
                                             uint32_t& word2) {
    EncodeBlock(image, width, x, y, kCombined, word1, word2);
}

void compressBlockDiffFlipFastPerceptual(const Rgb* image, Rgb* decodeScratch, int width, int x, int y,
                                         uint32_t& word1, uint32_t& word2) {
    compressBlockDiffFlipAveragePerceptual(image, width, x, y, word1, word2);
    decompressBlockDiffFlip(word1, word2, decodeScratch, width, x, y);
    const double averageError = calcBlockPerceptualErrorRGB(image, decodeScratch, width, x, y);

    uint32_t combined1;
    uint32_t combined2;
    compressBlockDiffFlipCombinedPerceptual(image, width, x, y, combined1, combined2);
    decompressBlockDiffFlip(combined1, combined2, decodeScratch, width, x, y);
    if (calcBlockPerceptualErrorRGB(image, decodeScratch, width, x, y) < averageError) {
        word1 = combined1;
        word2 = combined2;
    }
}

double calcBlockPerceptualErrorRGB(const Rgb* imageA, const Rgb* imageB, int width, int x, int y) {
    double error = 0.0;
    for (int row = y; row < y + 4; ++row) {
        for (int column = x; column < x + 4; ++column) {
            error += PerceptualError(imageA[row * width + column], imageB[row * width + column]);
        }
    }
    return error;
}

void atiEncodeRGBBlockETC(const RgbTile& tile, uint32_t& word1, uint32_t& word2) {
    RgbTile scratch;
    compressBlockDiffFlipFastPerceptual(tile.data(), scratch.data(), 4, 0, 0, word1, word2);
}

}  // namespace zorvan::texcompress
