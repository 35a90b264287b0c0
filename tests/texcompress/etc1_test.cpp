#include <gtest/gtest.h>

#include "test_images.h"
#include "texcompress/etc1_decode.h"
#include "texcompress/etc1_encode.h"
#include "texcompress/etc1_quantize.h"
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

Words Encoded(const RgbTile& tile) {
    Words words;
    atiEncodeRGBBlockETC(tile, words.word1, words.word2);
    return words;
}

// The left and right half, or the top and bottom one.
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
    for (const Row& row : {
             Row{"large positive", {0xF0800F1C, 0x0000FFFF}, {255, 144, 8}, {183, 183, 255}},
             Row{"small positive", {0xF0800F1C, 0x00000000}, {255, 138, 2}, {47, 47, 255}},
             Row{"small negative", {0xF0800F1C, 0xFFFF0000}, {253, 134, 0}, {0, 0, 208}},
             Row{"large negative", {0xF0800F1C, 0xFFFFFFFF}, {247, 128, 0}, {0, 0, 72}},
             Row{"differential", {0x84E3002A, 0x00000000}, {137, 236, 5}, {108, 255, 9}},
             Row{"undefined difference", {0xFB04FB02, 0x00000000}, {255, 2, 255}, {26, 255, 26}},
         }) {
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

TEST(Etc1Quantizer, RoundsAloneOrTogether) {
    struct Row {
        AverageColor average;
        std::array<int, 3> nearest5, combined5, nearest4, combined4;
    };
    // Codes of five bits stand for 0, 8, 16, ..., 247, 255, those of four for 0, 17, 34, ... Together,
    // channels are rounded such that their errors differ least: 3, 11, 11 are each 3 above 0, 8, 8.
    for (const Row& row : {
             Row{{255, 255, 255}, {31, 31, 31}, {31, 31, 31}, {15, 15, 15}, {15, 15, 15}},
             Row{{3, 11, 11}, {0, 1, 1}, {0, 1, 1}, {0, 1, 1}, {0, 0, 0}},
             Row{{13, 3, 3}, {2, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}},
             Row{{3, 13, 3}, {0, 2, 0}, {0, 1, 0}, {0, 1, 0}, {0, 1, 0}},
             Row{{4.125f, 12.375f, 250}, {1, 2, 30}, {0, 1, 30}, {0, 1, 15}, {0, 0, 14}},
         }) {
        SCOPED_TRACE(testing::PrintToString(row.average));
        EXPECT_EQ(Quantize555Nearest(row.average).codes, row.nearest5);
        EXPECT_EQ(quantize555ColorCombinedPerceptual(row.average).codes, row.combined5);
        EXPECT_EQ(Quantize444Nearest(row.average).codes, row.nearest4);
        EXPECT_EQ(quantize444ColorCombinedPerceptual(row.average).codes, row.combined4);
    }
    EXPECT_EQ(Quantize555Nearest({132, 8, 255}).expanded, (Rgb{132, 8, 255}));
    EXPECT_EQ(Quantize444Nearest({136, 17, 255}).expanded, (Rgb{136, 17, 255}));
}

TEST(Etc1Encoder, UniformTilesStayUniform) {
    for (int i = 0; i < 256; ++i) {
        const Rgb color{static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(5 * i)};
        const Words words = Encoded(Halves(color, color, false));
        EXPECT_EQ(words.word1 & (0x07070700 | kEtc1DiffBit), kEtc1DiffBit) << "differential, no difference";
        EXPECT_EQ(Decoded(words), Halves(Decoded(words)[0], Decoded(words)[0], false));
    }
    // Clamping makes every table exact for black and white, and two columns of each: the first ones win.
    EXPECT_EQ(Encoded(Halves({0, 0, 0}, {0, 0, 0}, false)), (Words{0x00000002, 0xFFFFFFFF}));
    EXPECT_EQ(Encoded(Halves({255, 255, 255}, {255, 255, 255}, false)), (Words{0xF8F8F802, 0}));
}

TEST(Etc1Encoder, FarHalvesUseIndividualColors) {
    // 82 is code 10 of five bits, 107 code 13, 115 code 14, 123 code 15: differences -4 to 3 fit.
    for (const auto& [red1, red2, fits] :
         {std::tuple{82, 107, true}, {82, 115, false}, {115, 82, true}, {123, 82, false}}) {
        for (const bool flipped : {false, true}) {
            const RgbTile tile =
                Halves({static_cast<uint8_t>(red1), 50, 50}, {static_cast<uint8_t>(red2), 50, 50}, flipped);
            Words words;
            compressBlockDiffFlipAveragePerceptual(tile.data(), 4, 0, 0, words.word1, words.word2);
            EXPECT_EQ(words.word1 & 3, (fits ? kEtc1DiffBit : 0) | (flipped ? kEtc1FlipBit : 0)) << red1;
        }
    }
}

TEST(Etc1Encoder, KeepsTheBetterCandidateAndTheAverageOneOnATie) {
    constexpr int kWidth = 72;
    const TestImage image = CorpusImage(kWidth, 200);
    std::vector<Rgb> pixels(image.pixels.size() / 4);
    for (size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = {image.pixels[4 * i], image.pixels[4 * i + 1], image.pixels[4 * i + 2]};
    }
    std::vector<Rgb> scratch(pixels.size());
    int ties = 0;
    int combinedWins = 0;
    for (int i = 0; i < 50 * 18; ++i) {
        const int x = i % 18 * 4;
        const int y = i / 18 * 4;
        const auto errorOf = [&](const Words& words) {
            decompressBlockDiffFlip(words.word1, words.word2, scratch.data(), kWidth, x, y);
            return calcBlockPerceptualErrorRGB(pixels.data(), scratch.data(), kWidth, x, y);
        };
        Words average, combined, kept;
        compressBlockDiffFlipAveragePerceptual(pixels.data(), kWidth, x, y, average.word1, average.word2);
        compressBlockDiffFlipCombinedPerceptual(pixels.data(), kWidth, x, y, combined.word1, combined.word2);
        compressBlockDiffFlipFastPerceptual(pixels.data(), scratch.data(), kWidth, x, y, kept.word1,
                                            kept.word2);
        const bool combinedIsBetter = errorOf(combined) < errorOf(average);
        EXPECT_EQ(kept, combinedIsBetter ? combined : average);
        combinedWins += combinedIsBetter;
        ties += average != combined && errorOf(combined) == errorOf(average);
    }
    EXPECT_GT(std::min(combinedWins, ties), 0) << "both cases must occur";
}

}  // namespace
}  // namespace zorvan::texcompress
