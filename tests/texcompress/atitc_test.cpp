#include <gtest/gtest.h>

#include "texcompress/atitc_search.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {

void PrintTo(const Rgb& color, std::ostream* out) {
    *out << int{color.r} << ',' << int{color.g} << ',' << int{color.b};
}

namespace {

constexpr Rgb kBlack{0, 0, 0};
constexpr Rgb kWhite{255, 255, 255};

struct Block {
    uint32_t index, color0, color1;
};

// By the full search, then by the fast encoder.
std::array<Block, 2> Encoded(const RgbTile& tile, uint32_t format) {
    std::array<Block, 2> blocks;
    auto& [full, fast] = blocks;
    full.index = EncodeRGBBlock(tile, &full.color0, &full.color1, format);
    uint32_t error;
    fast.index = EncodeRGBBlockFast(tile, &fast.color0, &fast.color1, format, &error);
    EXPECT_EQ(error, CalcBlockMSE(fast.index, fast.color0, fast.color1, tile, format));
    return blocks;
}

RgbTile Decoded(const Block& block, uint32_t format) {
    RgbTile tile;
    DecodeRGBBlock(tile, block.index, block.color0, block.color1, format);
    return tile;
}

RgbTile Flat(const Rgb& color) {
    RgbTile tile;
    tile.fill(color);
    return tile;
}

TEST(AtcColor, QuantizesToTheNearerOfTwoCodes) {
    // 8-bit value, its 5-bit and its 6-bit code: 4 is as far from 0 as from 8, 5 is nearer to 8. The
    // alternative of an odd code is the one below, so 12 (code 1) cannot go up to code 2.
    constexpr uint32_t kTable[][3] = {{0, 0, 0},     {4, 0, 1},     {5, 1, 1},    {12, 1, 3},
                                      {127, 15, 31}, {132, 16, 33}, {255, 31, 63}};
    for (const auto& [value, five, six] : kTable) {
        const auto v = static_cast<uint8_t>(value);
        EXPECT_EQ(Color888To565({v, v, v}), five << 11 | six << 5 | five) << value;
        EXPECT_EQ(Color888To1555({v, v, v}, true), 0x8000 | five << 10 | five << 5 | five) << value;
    }
}

TEST(AtcColor, BuildsPalettes) {
    constexpr Rgb kRed{255, 0, 0};
    constexpr Palette kGreys = {kBlack, {95, 95, 95}, {159, 159, 159}, kWhite};
    struct Row {
        const char* name;
        uint32_t format, color0, color1;
        Palette palette;
    };
    for (const Row& row : {
             Row{"normal", TXC_FORMAT_ATC, 0x0000, 0xFFFF, kGreys},
             Row{"brighter first", TXC_FORMAT_ATC, 0x7FFF, 0xF800,
                 Palette{kWhite, {255, 159, 159}, {255, 95, 95}, kRed}},
             Row{"black", TXC_FORMAT_ATC, 0xFFFF, 0xF800, Palette{kBlack, {192, 255, 255}, kWhite, kRed}},
             Row{"not below 0", TXC_FORMAT_ATC, 0x8000, 0xFFFF, Palette{kBlack, kBlack, kBlack, kWhite}},
             Row{"legacy", TXC_FORMAT_ATC_LEGACY, 0x0000, 0xFFFF, kGreys},
             Row{"legacy equal", TXC_FORMAT_ATC_LEGACY, 0xFFFF, 0xFFFF,
                 Palette{kWhite, kWhite, kWhite, kWhite}},
             Row{"legacy black", TXC_FORMAT_ATC_LEGACY, 0xFFFF, 0xF800,
                 Palette{kBlack, {192, 0, 0}, kRed, kWhite}},
             // Colour 0's luminance with low bits clear is 8 and 37, colour 1's with low bits set 7 and 37.
             Row{"legacy, brighter by a step", TXC_FORMAT_ATC_LEGACY, 0x0841, 0x0020,
                 Palette{kBlack, {0, 2, 0}, {0, 4, 0}, {8, 8, 8}}},
             Row{"legacy, brighter within a step", TXC_FORMAT_ATC_LEGACY, 0x1168, 0x0965,
                 Palette{Rgb{16, 44, 66}, {13, 44, 56}, {11, 44, 50}, {8, 44, 41}}},
         }) {
        Palette palette;
        SetDecoderColors(row.color0, row.color1, palette, row.format);
        EXPECT_EQ(palette, row.palette) << row.name;
    }
}

TEST(AtcRegions, ComparesHues) {
    for (const auto& [hue1, hue2, notNear] : {std::tuple{10, 350, false},
                                              {-1, 100, false},
                                              {100, -1, false},
                                              {-1, -1, false},
                                              {0, 30, false},
                                              {0, 31, true},
                                              {200, 20, true},
                                              {0, 181, false}}) {
        EXPECT_EQ(HuesNotNear(hue1, hue2), notNear) << hue1 << ' ' << hue2;
    }
    for (const auto& [color, hue, saturation] : {std::tuple{kBlack, -1, 0},
                                                 {Rgb{90, 90, 90}, -1, 0},
                                                 {Rgb{255, 254, 253}, -1, 0},
                                                 {Rgb{255, 0, 0}, 0, 100},
                                                 {Rgb{255, 0, 1}, 0, 100},
                                                 {Rgb{255, 0, 128}, 330, 100},
                                                 {Rgb{200, 200, 100}, 60, 50},
                                                 {Rgb{0, 255, 0}, 120, 100},
                                                 {Rgb{0, 0, 9}, 240, 100}}) {
        std::pair<int, int> found;
        ColorHueAndSaturation(color, found.first, found.second);
        EXPECT_EQ(found, std::pair(hue, saturation)) << testing::PrintToString(color);
    }
    EXPECT_TRUE(NearBlack({38, 0, 0}));
    EXPECT_FALSE(NearBlack({0, 39, 0}));
}

TEST(AtcRegions, SplitsAtThresholds) {
    const LuminanceTile luminance = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    // Up to t1: region 0. Up to t2: 1. Below t3: 2.
    EXPECT_EQ(CollatePixelsIntoRegions2(luminance, 3, 7, 11), 0xFFEA5500u);
    EXPECT_EQ(CollatePixelsIntoRegions2(luminance, 4, 4, 4), 0xFFFFFF00u);
    EXPECT_EQ(CollatePixelsIntoRegions(luminance, 3.5f, 7.0f, 11.25f), 0xFFAA5500u);
}

TEST(AtcRegions, AveragesRoundDown) {
    RgbTile tile = Flat({10, 20, 30});
    tile[1] = {13, 20, 31};
    // Pixels 0 and 1 in region 1, pixel 2 in region 2, all others in region 3.
    const Regions regions = CalcRegionColors(tile, 0xFFFFFFE5);
    EXPECT_EQ(regions.counts, (std::array{0, 2, 1, 13}));
    EXPECT_EQ(regions.colors, (std::array<Rgb, 4>{kBlack, {11, 20, 30}, {10, 20, 30}, {10, 20, 30}}));
}

TEST(AtcRegions, BlackTrickNeedsBlackBrightnessAndADifference) {
    constexpr Rgb kRed{200, 0, 0};
    constexpr Rgb kGrey{200, 200, 200};
    constexpr Rgb kGreen{0, 200, 0};
    constexpr Rgb kPink{200, 120, 120};
    // Averages of regions 0 to 3 and their counts.
    struct Row {
        const char* name;
        std::array<Rgb, 4> colors;
        std::array<int, 4> counts;
        bool helpful;
    };
    for (const Row& row : {
             Row{"hue of region 2", {kBlack, kBlack, kRed, kGreen}, {4, 0, 4, 8}, true},
             Row{"hue of region 1", {kBlack, kRed, kBlack, kGreen}, {4, 4, 0, 8}, true},
             Row{"saturation of region 2", {kBlack, kBlack, kRed, kGrey}, {4, 0, 4, 8}, true},
             Row{"saturated among saturated", {kBlack, kRed, kRed, kRed}, {4, 4, 4, 4}, true},
             Row{"only greys", {kBlack, {90, 90, 90}, {120, 120, 120}, kGrey}, {4, 4, 4, 4}, false},
             Row{"no dark pixels", {kBlack, kBlack, kRed, kGreen}, {0, 4, 4, 8}, false},
             Row{"not near black", {Rgb{60, 0, 0}, kBlack, kRed, kGreen}, {4, 0, 4, 8}, false},
             Row{"brightest is bright", {kBlack, kBlack, kRed, {0, 143, 0}}, {4, 0, 4, 8}, true},
             Row{"brightest is dim", {kBlack, kBlack, kRed, {0, 142, 0}}, {4, 0, 4, 8}, false},
             Row{"saturation 41 by 20", {kBlack, kBlack, {100, 59, 59}, {200, 160, 160}}, {4, 0, 4, 8}, true},
             Row{"saturation 40 by 20",
                 {kBlack, {100, 60, 60}, kBlack, {200, 160, 160}},
                 {4, 4, 0, 8},
                 false},
             Row{"saturation above 70", {kBlack, kBlack, {200, 58, 58}, kPink}, {4, 0, 4, 8}, true},
             Row{"saturation 70", {kBlack, kBlack, {200, 60, 60}, kPink}, {4, 0, 4, 8}, false},
         }) {
        Regions regions{0xFFAA5500, row.colors, row.counts};
        EXPECT_EQ(ApplyBlackTrickIfHelpful(regions), row.helpful) << row.name;
    }
    // An empty region 2 takes over region 1.
    Regions moved{0xFFFF5550, {kBlack, kRed, kBlack, kGreen}, {2, 6, 0, 8}};
    ASSERT_TRUE(ApplyBlackTrickIfHelpful(moved));
    EXPECT_EQ(moved.mask, 0xFFFFAAA0u);
    EXPECT_EQ(moved.colors, (std::array<Rgb, 4>{kBlack, kBlack, kRed, kGreen}));
    EXPECT_EQ(moved.counts, (std::array{2, 0, 6, 8}));
}

TEST(AtcEncoder, AcceptsMasksThatUseTheLastColor) {
    constexpr Palette kPalette = {kBlack, {95, 95, 95}, {159, 159, 159}, kWhite};
    struct Row {
        const char* name;
        uint32_t upper, lower;  // entries of the halves
        bool blackTrick, accepted;
    };
    for (const Row& row : {Row{"first and last", 0, 3, false, true}, Row{"only the last", 3, 3, false, true},
                           Row{"no first", 1, 3, false, false}, Row{"no first, black", 1, 3, true, true},
                           Row{"no last", 0, 2, true, false}}) {
        RgbTile tile = Flat(kPalette[row.upper]);
        std::fill(tile.begin() + 8, tile.end(), kPalette[row.lower]);
        const uint32_t nearest = row.upper * 0x5555u | row.lower * 0x55550000u;
        uint32_t mask = 0x12345678;
        EXPECT_EQ(CheckPixelRegionAssignment(tile, kPalette, row.blackTrick, mask), row.accepted) << row.name;
        EXPECT_EQ(mask, row.accepted ? nearest : 0x12345678) << row.name;
        mask = nearest;
        EXPECT_FALSE(CheckPixelRegionAssignment(tile, kPalette, row.blackTrick, mask)) << "unchanged";
    }
    // 127 is as near to 95 as to 159: the first of them.
    uint32_t mask = 0;
    RgbTile tile = Flat(kWhite);
    tile[0] = kBlack;
    tile[1] = {127, 127, 127};
    ASSERT_TRUE(CheckPixelRegionAssignment(tile, kPalette, false, mask));
    EXPECT_EQ(mask, 0xFFFFFFF4u);
}

// Tiles whose colours the formats have, and the blocks that both encoders must find.
TEST(AtcEncoder, IsExactWhereColorsAre) {
    for (const uint32_t format : {TXC_FORMAT_ATC, TXC_FORMAT_ATC_LEGACY}) {
        for (uint32_t code = 0; code < 0x10000; code += 7) {
            const RgbTile tile = Flat(Color565To888(code));
            for (const Block& block : Encoded(tile, format)) {
                ASSERT_EQ(block.index, 0xFFFFFFFF) << "flat tiles use the last colour";
                ASSERT_EQ(block.color0, 0u);
                ASSERT_EQ(block.color1, code);
            }
        }
        // The green of the dark colour has the same expansion from five and from six bits.
        for (uint32_t bits = 1; bits < 0xFFFF; bits += 257) {
            RgbTile tile;
            for (uint32_t k = 0; k < tile.size(); ++k) {
                tile[k] = Color565To888((bits >> k & 1) != 0 ? 0xC618 : 0x508A);
            }
            for (const Block& block : Encoded(tile, format)) {
                EXPECT_EQ(Decoded(block, format), tile) << "two colours";
            }
        }
        RgbTile tile = Flat(kBlack);
        std::fill(tile.begin() + 4, tile.begin() + 8, Rgb{255, 0, 0});
        std::fill(tile.begin() + 8, tile.end(), Rgb{0, 255, 0});
        for (const Block& block : Encoded(tile, format)) {
            EXPECT_EQ(block.index, 0xFFFFAA00u) << "black beside saturated colours";
            EXPECT_EQ(block.color0, format == TXC_FORMAT_ATC ? 0xFC00u : 0x07E0u);
            EXPECT_EQ(Decoded(block, format), tile);
        }
    }
}

TEST(AtcEncoder, LegacySplitsMustNotLookLikeBlack) {
    // Luminances 108 and 109. The nearest codes give 110 with low bits clear and 108 with low bits set: their
    // order would turn the palette black, so that all pixels in one region are better.
    RgbTile tile = Flat({5, 180, 5});
    std::fill(tile.begin() + 8, tile.end(), Rgb{168, 63, 199});
    EXPECT_EQ(Encoded(tile, TXC_FORMAT_ATC)[0].index, 0xFFFF0000u);
    EXPECT_EQ(Encoded(tile, TXC_FORMAT_ATC_LEGACY)[0].index, 0xFFFFFFFFu);
}

TEST(AtcEncoder, EqualLuminancesAreOneRegion) {
    RgbTile tile = Flat({0, 0, 101});
    std::fill(tile.begin(), tile.begin() + 4, Rgb{40, 0, 0});
    const auto [full, fast] = Encoded(tile, TXC_FORMAT_ATC);
    EXPECT_EQ(fast.index, 0xFFFFFFFFu) << "nothing is moved";
    EXPECT_EQ(full.index, 0xFFFFFF00u) << "the red is nearer to black";
}

}  // namespace
}  // namespace zorvan::texcompress
