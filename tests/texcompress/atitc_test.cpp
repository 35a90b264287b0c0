#include <gtest/gtest.h>

#include "texcompress/atitc_search.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {

void PrintTo(const Rgb& color, std::ostream* out) {
    *out << int{color.r} << ',' << int{color.g} << ',' << int{color.b};
}

namespace {

constexpr std::array kFormats = {TXC_FORMAT_ATC, TXC_FORMAT_ATC_LEGACY};

struct Block {
    uint32_t index, color0, color1;
};

Block EncodeFull(const RgbTile& tile, uint32_t format) {
    Block block;
    block.index = EncodeRGBBlock(tile, &block.color0, &block.color1, format);
    return block;
}

Block EncodeFast(const RgbTile& tile, uint32_t format) {
    Block block;
    uint32_t error;
    block.index = EncodeRGBBlockFast(tile, &block.color0, &block.color1, format, &error);
    EXPECT_EQ(error, CalcBlockMSE(block.index, block.color0, block.color1, tile, format));
    return block;
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

TEST(AtcColor, EveryCodeSurvivesExpansion) {
    for (uint32_t code = 0; code < 0x10000; ++code) {
        EXPECT_EQ(Color888To565(Color565To888(code)), code);
        Rgb color;
        const bool modeBit = Color1555To888(code, color);
        EXPECT_EQ(Color888To1555(color, modeBit), code);
    }
}

TEST(AtcColor, QuantizesToTheNearerOfTwoCodes) {
    // 8-bit value, its 5-bit and its 6-bit code: 4 is as far from 0 as from 8, 5 is nearer to 8. The
    // alternative of an odd code is the one below, so 12 (code 1) cannot go up to code 2.
    const std::array<std::array<uint32_t, 3>, 7> table = {{
        {0, 0, 0},
        {4, 0, 1},
        {5, 1, 1},
        {12, 1, 3},
        {127, 15, 31},
        {132, 16, 33},
        {255, 31, 63},
    }};
    for (const auto& [value, five, six] : table) {
        const auto v = static_cast<uint8_t>(value);
        EXPECT_EQ(Color888To565({v, v, v}), five << 11 | six << 5 | five) << value;
        EXPECT_EQ(Color888To1555({v, v, v}, true), 0x8000 | five << 10 | five << 5 | five) << value;
    }
}

TEST(AtcColor, BuildsPalettes) {
    struct Row {
        const char* name;
        uint32_t format, color0, color1;
        Palette palette;
    };
    constexpr Rgb kBlack{0, 0, 0};
    constexpr Rgb kWhite{255, 255, 255};
    constexpr Rgb kRed{255, 0, 0};
    const Palette greys = {kBlack, {95, 95, 95}, {159, 159, 159}, kWhite};
    const std::array<Row, 7> table = {{
        {"normal", TXC_FORMAT_ATC, 0x0000, 0xFFFF, greys},
        {"normal, brighter first",
         TXC_FORMAT_ATC,
         0x7FFF,
         0xF800,
         {kWhite, {255, 159, 159}, {255, 95, 95}, kRed}},
        {"black", TXC_FORMAT_ATC, 0xFFFF, 0xF800, {kBlack, {192, 255, 255}, kWhite, kRed}},
        {"black, not below 0", TXC_FORMAT_ATC, 0x8000, 0xFFFF, {kBlack, kBlack, kBlack, kWhite}},
        {"legacy normal", TXC_FORMAT_ATC_LEGACY, 0x0000, 0xFFFF, greys},
        {"legacy equal", TXC_FORMAT_ATC_LEGACY, 0xFFFF, 0xFFFF, {kWhite, kWhite, kWhite, kWhite}},
        {"legacy black", TXC_FORMAT_ATC_LEGACY, 0xFFFF, 0xF800, {kBlack, {192, 0, 0}, kRed, kWhite}},
    }};
    for (const Row& row : table) {
        Palette palette;
        SetDecoderColors(row.color0, row.color1, palette, row.format);
        EXPECT_EQ(palette, row.palette) << row.name;
    }
}

TEST(AtcRegions, ComparesHues) {
    struct Row {
        int hue1, hue2;
        bool notNear;
    };
    for (const Row& row : {Row{10, 350, false}, Row{-1, 100, false}, Row{100, -1, false}, Row{-1, -1, false},
                           Row{0, 30, false}, Row{0, 31, true}, Row{200, 20, true}, Row{0, 181, false}}) {
        EXPECT_EQ(HuesNotNear(row.hue1, row.hue2), row.notNear) << row.hue1 << ' ' << row.hue2;
    }
}

TEST(AtcRegions, ComputesHueAndSaturation) {
    struct Row {
        Rgb color;
        int hue, saturation;
    };
    for (const Row& row :
         {Row{{0, 0, 0}, -1, 0}, Row{{90, 90, 90}, -1, 0}, Row{{255, 254, 253}, -1, 0},
          Row{{255, 0, 0}, 0, 100}, Row{{255, 0, 1}, 0, 100}, Row{{255, 0, 128}, 330, 100},
          Row{{200, 200, 100}, 60, 50}, Row{{0, 255, 0}, 120, 100}, Row{{0, 0, 9}, 240, 100}}) {
        int hue;
        int saturation;
        ColorHueAndSaturation(row.color, hue, saturation);
        EXPECT_EQ(hue, row.hue) << ::testing::PrintToString(row.color);
        EXPECT_EQ(saturation, row.saturation) << ::testing::PrintToString(row.color);
    }
    EXPECT_TRUE(NearBlack({38, 0, 0}));
    EXPECT_FALSE(NearBlack({0, 39, 0}));
}

TEST(AtcRegions, BlackTrickNeedsBlackBrightnessAndADifference) {
    // Averages of regions 0 to 3 and their counts.
    struct Row {
        const char* name;
        std::array<Rgb, 4> colors;
        std::array<int, 4> counts;
        bool helpful;
    };
    constexpr Rgb kBlack{0, 0, 0};
    constexpr Rgb kRed{200, 0, 0};
    constexpr Rgb kGrey{200, 200, 200};
    constexpr Rgb kGreen{0, 200, 0};
    constexpr Rgb kPink{200, 120, 120};
    const std::array<Row, 10> table = {{
        {"hue of region 2", {{kBlack, kBlack, kRed, kGreen}}, {{4, 0, 4, 8}}, true},
        {"hue of region 1", {{kBlack, kRed, kBlack, kGreen}}, {{4, 4, 0, 8}}, true},
        {"saturation of region 2", {{kBlack, kBlack, kRed, kGrey}}, {{4, 0, 4, 8}}, true},
        {"saturated among saturated", {{kBlack, kRed, kRed, kRed}}, {{4, 4, 4, 4}}, true},
        {"no dark pixels", {{kBlack, kBlack, kRed, kGreen}}, {{0, 4, 4, 8}}, false},
        {"not near black", {{{60, 0, 0}, kBlack, kRed, kGreen}}, {{4, 0, 4, 8}}, false},
        {"brightest is bright", {{kBlack, kBlack, kRed, {0, 143, 0}}}, {{4, 0, 4, 8}}, true},
        {"brightest is dim", {{kBlack, kBlack, kRed, {0, 142, 0}}}, {{4, 0, 4, 8}}, false},
        {"saturation above 70", {{kBlack, kBlack, {200, 58, 58}, kPink}}, {{4, 0, 4, 8}}, true},
        {"saturation 70", {{kBlack, kBlack, {200, 60, 60}, kPink}}, {{4, 0, 4, 8}}, false},
    }};
    for (const Row& row : table) {
        Regions regions{0xFFAA5500, row.colors, row.counts};
        EXPECT_EQ(ApplyBlackTrickIfHelpful(regions), row.helpful) << row.name;
    }
    Regions greys{0, {{kBlack, {90, 90, 90}, {120, 120, 120}, kGrey}}, {{4, 4, 4, 4}}};
    EXPECT_FALSE(ApplyBlackTrickIfHelpful(greys));

    // An empty region 2 takes over region 1.
    Regions moved{0xFFFF5550, {{kBlack, kRed, kBlack, kGreen}}, {{2, 6, 0, 8}}};
    ASSERT_TRUE(ApplyBlackTrickIfHelpful(moved));
    EXPECT_EQ(moved.mask, 0xFFFFAAA0u);
    EXPECT_EQ(moved.colors, (std::array<Rgb, 4>{{kBlack, kBlack, kRed, kGreen}}));
    EXPECT_EQ(moved.counts, (std::array<int, 4>{{2, 0, 6, 8}}));
}

TEST(AtcEncoder, AcceptsMasksThatUseTheLastColor) {
    const Palette palette = {{{0, 0, 0}, {95, 95, 95}, {159, 159, 159}, {255, 255, 255}}};
    struct Row {
        const char* name;
        std::array<uint32_t, 2> entries;  // of the upper and the lower half
        bool blackTrick, accepted;
    };
    for (const Row& row : {Row{"first and last", {0, 3}, false, true},
                           Row{"only the last", {3, 3}, false, true}, Row{"no first", {1, 3}, false, false},
                           Row{"no first, black", {1, 3}, true, true}, Row{"no last", {0, 2}, true, false}}) {
        RgbTile tile = Flat(palette[row.entries[0]]);
        std::fill(tile.begin() + 8, tile.end(), palette[row.entries[1]]);
        const uint32_t nearest = row.entries[0] * 0x5555u | row.entries[1] * 0x55550000u;
        uint32_t mask = 0x12345678;
        EXPECT_EQ(CheckPixelRegionAssignment(tile, palette, row.blackTrick, mask), row.accepted) << row.name;
        EXPECT_EQ(mask, row.accepted ? nearest : 0x12345678) << row.name;
        mask = nearest;
        EXPECT_FALSE(CheckPixelRegionAssignment(tile, palette, row.blackTrick, mask)) << "unchanged";
    }
}

TEST(AtcEncoder, FlatTilesUseTheLastColor) {
    for (const uint32_t format : kFormats) {
        for (uint32_t code = 0; code < 0x10000; code += 7) {
            const RgbTile tile = Flat(Color565To888(code));
            for (const Block& block : {EncodeFull(tile, format), EncodeFast(tile, format)}) {
                ASSERT_EQ(block.index, 0xFFFFFFFF);
                ASSERT_EQ(block.color0, 0u);
                ASSERT_EQ(block.color1, code);
                ASSERT_EQ(Decoded(block, format), tile);
            }
        }
    }
}

TEST(AtcEncoder, KeepsBlackBesideSaturatedColors) {
    RgbTile tile = Flat({0, 0, 0});
    std::fill(tile.begin() + 4, tile.begin() + 8, Rgb{255, 0, 0});
    std::fill(tile.begin() + 8, tile.end(), Rgb{0, 255, 0});
    for (const uint32_t format : kFormats) {
        for (const Block& block : {EncodeFull(tile, format), EncodeFast(tile, format)}) {
            EXPECT_EQ(block.index, 0xFFFFAA00u);
            EXPECT_EQ(Decoded(block, format), tile);
            EXPECT_EQ(format == TXC_FORMAT_ATC, block.color0 == (0x8000u | 31 << 10)) << block.color0;
        }
    }
}

TEST(AtcEncoder, TwoExactColorsDecodeExactly) {
    // The green of the dark colour has the same expansion from five and from six bits.
    const Rgb dark = Color565To888(0x508A);
    const Rgb bright = Color565To888(0xC618);
    for (uint32_t mask = 1; mask < 0xFFFF; mask += 257) {
        RgbTile tile;
        for (uint32_t k = 0; k < tile.size(); ++k) {
            tile[k] = (mask >> k & 1) != 0 ? bright : dark;
        }
        for (const uint32_t format : kFormats) {
            EXPECT_EQ(Decoded(EncodeFull(tile, format), format), tile);
            EXPECT_EQ(Decoded(EncodeFast(tile, format), format), tile);
        }
    }
}

}  // namespace
}  // namespace zorvan::texcompress
