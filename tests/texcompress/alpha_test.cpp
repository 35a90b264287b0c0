#include <gtest/gtest.h>

#include "texcompress/alpha_explicit.h"
#include "texcompress/alpha_interpolated.h"
#include "texcompress/threedc.h"

namespace zorvan::texcompress {
namespace {

using Block = std::array<uint8_t, kBlockBytes>;

Block Encode(const ChannelTile& alpha) {
    Block block;
    atiEncodeAlphaBlockInterp(alpha, block.data());
    return block;
}

ChannelTile Decode(const Block& block) {
    ChannelTile alpha;
    atiDecodeAlphaBlockInterp(alpha, block.data());
    return alpha;
}

// Sixteen values that take turns.
template <typename... Values>
ChannelTile Turns(Values... values) {
    const std::array<uint8_t, sizeof...(values)> turns = {static_cast<uint8_t>(values)...};
    ChannelTile tile;
    for (size_t k = 0; k < tile.size(); ++k) {
        tile[k] = turns[k % turns.size()];
    }
    return tile;
}

TEST(ExplicitAlpha, KeepsTopNibblesInPixelOrder) {
    const ChannelTile four = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0};
    const Block nibbles = {0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB, 0xED, 0x0F};
    Block block;
    EncodeAlphaBlock(four, block.data());
    EXPECT_EQ(block, nibbles);
    for (uint8_t low = 0; low < 16; ++low) {
        ChannelTile eight;
        ChannelTile expected;
        for (size_t k = 0; k < 16; ++k) {
            eight[k] = static_cast<uint8_t>(four[k] << 4 | low);
            expected[k] = static_cast<uint8_t>(four[k] << 4 | four[k]);
        }
        atiEncodeAlphaBlockATITCA4(eight, block.data());
        EXPECT_EQ(block, nibbles);
        ChannelTile decoded;
        atiDecodeAlphaBlockATITCA4(decoded, block.data());
        EXPECT_EQ(decoded, expected);
    }
}

TEST(InterpolatedAlpha, DecodesBothModes) {
    // Indices 0 to 7, twice: the bytes of 0b111'110'101'100'011'010'001'000.
    const auto block = [](uint8_t a0, uint8_t a1) {
        return Block{a0, a1, 0x88, 0xC6, 0xFA, 0x88, 0xC6, 0xFA};
    };
    EXPECT_EQ(Decode(block(255, 0)), Turns(255, 0, 219, 182, 146, 109, 73, 36));
    EXPECT_EQ(Decode(block(0, 255)), Turns(0, 255, 51, 102, 153, 204, 0, 255));
    EXPECT_EQ(Decode(block(11, 10)), Turns(11, 10, 11, 11, 11, 10, 10, 10));
    EXPECT_EQ(Decode(block(10, 12)), Turns(10, 12, 10, 11, 11, 12, 0, 255));
    EXPECT_EQ(Decode(block(7, 7)), Turns(7)) << "equal ends: indices do not count";
}

TEST(InterpolatedAlpha, TwoValuesAreExact) {
    for (int low = 0; low < 256; ++low) {
        for (int high = low; high < 256; ++high) {
            const ChannelTile tile = Turns(high, low, low);
            const Block block = Encode(tile);
            ASSERT_EQ(block[0], high);
            ASSERT_EQ(block[1], low);
            ASSERT_EQ(Decode(block), tile);
        }
    }
    EXPECT_EQ(Encode(Turns(255)), (Block{255, 255}));
}

TEST(InterpolatedAlpha, ChoosesEnds) {
    struct Row {
        const char* name;
        ChannelTile values;
        int a0, a1;
    };
    for (const Row& row : {
             Row{"one value beside 0 and 255", Turns(0, 77, 255), 77, 78},
             Row{"the lowest such value", Turns(0, 2, 255), 2, 3},
             Row{"the highest such value", Turns(0, 253, 255), 253, 254},
             Row{"two such values", Turns(255, 200, 0, 2), 2, 200},
             Row{"none: 1 and 254 count as 0 and 255", Turns(0, 1, 254, 255), 128, 129},
             Row{"three values 47 apart are narrow", Turns(100, 147, 120), 100, 147},
             Row{"narrow but for 0 and 255", Turns(0, 100, 147, 120, 255), 100, 147},
             // The mode of eight values has all of these, that of six has not.
             Row{"seven equal steps", Turns(20, 50, 80, 110, 140, 170, 200, 230), 230, 20},
             Row{"five equal steps, 0 and 255", Turns(0, 25, 65, 105, 145, 185, 225, 255), 25, 225},
         }) {
        const Block block = Encode(row.values);
        EXPECT_EQ(block[0], row.a0) << row.name;
        EXPECT_EQ(block[1], row.a1) << row.name;
    }
}

TEST(InterpolatedAlpha, TheFirstOfEquallyNearEntriesWins) {
    const AlphaRamp ramp = {10, 20, 12, 14, 16, 18, 0, 255};
    EXPECT_EQ(AssignAlphaIndices(Turns(11, 13, 15, 17, 19, 5, 137, 138), ramp),
              Turns(0, 2, 3, 4, 1, 0, 1, 7));
}

TEST(ThreeDc, PlacesChannels) {
    RgbTile tile;
    for (uint32_t k = 0; k < tile.size(); ++k) {
        tile[k] = {static_cast<uint8_t>(k % 2 * 80), static_cast<uint8_t>(k / 8 * 90 + 5), 77};
    }
    std::array<uint8_t, 2 * kBlockBytes> two;
    atiEncodeATI2N(tile, two.data());
    EXPECT_EQ(two[0], 95) << "green comes first";
    EXPECT_EQ(two[8], 80);
    Block one;
    atiEncodeATI1N(tile, one.data());
    RgbTile decodedTwo;
    RgbTile decodedOne;
    atiDecodeATI2N(decodedTwo, two.data());
    atiDecodeATI1N(decodedOne, one.data());
    for (size_t k = 0; k < tile.size(); ++k) {
        EXPECT_EQ(decodedTwo[k], (Rgb{tile[k].r, tile[k].g, 255}));
        EXPECT_EQ(decodedOne[k], (Rgb{tile[k].r, tile[k].r, tile[k].r}));
    }
}

}  // namespace
}  // namespace zorvan::texcompress
