#include <gtest/gtest.h>

#include "test_images.h"
#include "texcompress/etc1_decode.h"
#include "texcompress/etc1_encode.h"
#include "texcompress/etc1_tables.h"

namespace zorvan::texcompress {
namespace {

struct Words {
    uint32_t word1, word2;
    bool operator==(const Words&) const = default;
};

RgbTile Decoded(const Words& words) {
    RgbTile tile;
    atiDecodeRGBBlockETC(tile, words.word1, words.word2);
    return tile;
}

double ErrorOf(const Words& words, const RgbTile& tile) {
    return calcBlockPerceptualErrorRGB(tile.data(), Decoded(words).data(), 4, 0, 0);
}

RgbTile Halves(const Rgb& first, const Rgb& second, bool flipped) {
    RgbTile tile;
    for (uint32_t k = 0; k < tile.size(); ++k) {
        tile[k] = (flipped ? k / 4 : k % 4) < 2 ? first : second;
    }
    return tile;
}

TEST(Etc1Decoder, DecodesHandMadeBlocks) {
    struct Row {
        const char* name;
        Words words;
        Rgb first, second;
    };
    // Individual: (15, 8, 0) with table 0 and (0, 0, 15) with table 7. Differential: (16, 28, 0) with
    // table 1, then (-4, +3, 0) away with table 2.
    const std::array<Row, 6> table = {{
        {"large positive", {0xF0800F1C, 0x0000FFFF}, {255, 144, 8}, {183, 183, 255}},
        {"small positive", {0xF0800F1C, 0x00000000}, {255, 138, 2}, {47, 47, 255}},
        {"small negative", {0xF0800F1C, 0xFFFF0000}, {253, 134, 0}, {0, 0, 208}},
        {"large negative", {0xF0800F1C, 0xFFFFFFFF}, {247, 128, 0}, {0, 0, 72}},
        {"differential", {0x84E3002A, 0x00000000}, {137, 236, 5}, {108, 255, 9}},
        {"undefined difference", {0xFB04FB02, 0x00000000}, {255, 2, 255}, {26, 255, 26}},
    }};
    for (const Row& row : table) {
        for (const bool flipped : {false, true}) {
            const Words words{row.words.word1 | (flipped ? kEtc1FlipBit : 0), row.words.word2};
            EXPECT_EQ(Decoded(words), Halves(row.first, row.second, flipped)) << row.name << ' ' << flipped;
        }
    }
    // Bit 9 is the pixel in column 2, row 1.
    RgbTile single = Halves({2, 2, 2}, {2, 2, 2}, false);
    single[6] = {8, 8, 8};
    EXPECT_EQ(Decoded({kEtc1DiffBit, 1u << 9}), single);
}

TEST(Etc1Decoder, IndexMapsAreInverse) {
    for (uint32_t column = 0; column < 4; ++column) {
        EXPECT_EQ(unscramble[scramble[column]], column);
    }
    EXPECT_EQ(readCompressParams(), 1);
}

TEST(Etc1Encoder, UniformTilesStayUniform) {
    Lcg random(2);
    for (int i = 0; i < 500; ++i) {
        const auto value = [&random] { return static_cast<uint8_t>(random.Next(256)); };
        const Rgb color{value(), value(), value()};
        Words words;
        atiEncodeRGBBlockETC(Halves(color, color, false), words.word1, words.word2);
        EXPECT_EQ(words.word1 & (0x07070700 | kEtc1DiffBit), kEtc1DiffBit) << "differential, no difference";
        const RgbTile decoded = Decoded(words);
        EXPECT_EQ(decoded, Halves(decoded[0], decoded[0], false));
    }
}

TEST(Etc1Encoder, TheFirstOfEqualTablesAndColumnsWins) {
    // Clamping makes every table exact for black and white, and two columns of each.
    for (const auto& [level, expected] :
         {std::pair{0, Words{0x00000002, 0xFFFFFFFF}}, {255, {0xF8F8F802, 0}}}) {
        const auto value = static_cast<uint8_t>(level);
        Words words;
        atiEncodeRGBBlockETC(Halves({value, value, value}, {value, value, value}, false), words.word1,
                             words.word2);
        EXPECT_EQ(words, expected) << level;
    }
}

TEST(Etc1Encoder, FarHalvesUseIndividualColors) {
    // Codes 10 and 13 or 14 in red; 82 is code 10, 107 code 13, 115 code 14.
    struct Row {
        uint8_t red1, red2;
        bool differential;
    };
    for (const Row& row :
         {Row{82, 107, true}, Row{82, 115, false}, Row{115, 82, true}, Row{123, 82, false}}) {
        for (const bool flipped : {false, true}) {
            Words words;
            compressBlockDiffFlipAveragePerceptual(
                Halves({row.red1, 50, 50}, {row.red2, 50, 50}, flipped).data(), 4, 0, 0, words.word1,
                words.word2);
            EXPECT_EQ((words.word1 & kEtc1DiffBit) != 0, row.differential) << int{row.red1} << ' ' << flipped;
            EXPECT_EQ((words.word1 & kEtc1FlipBit) != 0, flipped);
        }
    }
}

TEST(Etc1Encoder, KeepsTheBetterCandidateAndTheAverageOneOnATie) {
    const TestImage image = CorpusImage(256, 64);
    int ties = 0;
    int combinedWins = 0;
    for (size_t i = 0; i + 64 <= image.pixels.size(); i += 64) {
        RgbTile tile;
        for (size_t k = 0; k < tile.size(); ++k) {
            const uint8_t* pixel = &image.pixels[i + 4 * k];
            tile[k] = {pixel[0], pixel[1], pixel[2]};
        }
        Words average;
        Words combined;
        Words kept;
        compressBlockDiffFlipAveragePerceptual(tile.data(), 4, 0, 0, average.word1, average.word2);
        compressBlockDiffFlipCombinedPerceptual(tile.data(), 4, 0, 0, combined.word1, combined.word2);
        atiEncodeRGBBlockETC(tile, kept.word1, kept.word2);
        const bool combinedIsBetter = ErrorOf(combined, tile) < ErrorOf(average, tile);
        EXPECT_EQ(kept, combinedIsBetter ? combined : average);
        combinedWins += combinedIsBetter;
        ties += average != combined && ErrorOf(combined, tile) == ErrorOf(average, tile);
    }
    EXPECT_GT(combinedWins, 0);
    EXPECT_GT(ties, 0);
}

TEST(Etc1Encoder, WorksInsideALargerImage) {
    constexpr int kWidth = 12;
    Lcg random(3);
    std::array<Rgb, kWidth * 8> image;
    for (Rgb& pixel : image) {
        pixel.r = pixel.g = pixel.b = static_cast<uint8_t>(random.Next(256));
    }
    RgbTile tile;
    for (int k = 0; k < 16; ++k) {
        tile[k] = image[(3 + k / 4) * kWidth + 5 + k % 4];
    }
    Words inside;
    Words alone;
    std::array<Rgb, kWidth * 8> scratch{};
    compressBlockDiffFlipFastPerceptual(image.data(), scratch.data(), kWidth, 5, 3, inside.word1,
                                        inside.word2);
    atiEncodeRGBBlockETC(tile, alone.word1, alone.word2);
    EXPECT_EQ(inside, alone);
    decompressBlockDiffFlip(alone.word1, alone.word2, scratch.data(), kWidth, 5, 3);
    EXPECT_EQ(scratch[6 * kWidth + 8], Decoded(alone)[15]);
    EXPECT_EQ(scratch[6 * kWidth + 9], Rgb{}) << "written outside the block";
}

}  // namespace
}  // namespace zorvan::texcompress
