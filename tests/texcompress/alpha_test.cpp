#include <gtest/gtest.h>

#include "texcompress/alpha_explicit.h"
#include "texcompress/alpha_interpolated.h"
#include "texcompress/threedc.h"

namespace zorvan::texcompress {
namespace {

using Block = std::array<uint8_t, kBlockBytes>;

Block EncodeInterpolated(const ChannelTile& alpha) {
    Block block;
    atiEncodeAlphaBlockInterp(alpha, block.data());
    return block;
}

ChannelTile DecodeInterpolated(const Block& block) {
    ChannelTile alpha;
    atiDecodeAlphaBlockInterp(alpha, block.data());
    return alpha;
}

/// Sixteen values that take turns.
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
    ChannelTile ramp;
    for (uint32_t first = 0; first < 256; first += 16) {
        for (uint32_t k = 0; k < ramp.size(); ++k) {
            ramp[k] = static_cast<uint8_t>(first + k + 16 * k);
        }
        Block block;
        atiEncodeAlphaBlockATITCA4(ramp, block.data());
        EXPECT_EQ(block[0] & 15u, ramp[0] / 16u);
        EXPECT_EQ(block[7] / 16u, ramp[15] / 16u);
        ChannelTile decoded;
        atiDecodeAlphaBlockATITCA4(decoded, block.data());
        for (size_t k = 0; k < ramp.size(); ++k) {
            EXPECT_EQ(decoded[k], (ramp[k] & 0xF0) | ramp[k] >> 4);
        }
    }
    Block block;
    EncodeAlphaBlock({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0}, block.data());
    EXPECT_EQ(block, (Block{0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB, 0xED, 0x0F}));
}

TEST(InterpolatedAlpha, DecodesBothModes) {
    // Indices 0 to 7, twice: the bytes of 0b111'110'101'100'011'010'001'000.
    const auto block = [](uint8_t a0, uint8_t a1) {
        return Block{a0, a1, 0x88, 0xC6, 0xFA, 0x88, 0xC6, 0xFA};
    };
    EXPECT_EQ(DecodeInterpolated(block(255, 0)), Turns(255, 0, 219, 182, 146, 109, 73, 36));
    EXPECT_EQ(DecodeInterpolated(block(0, 255)), Turns(0, 255, 51, 102, 153, 204, 0, 255));
    EXPECT_EQ(DecodeInterpolated(block(11, 10)), Turns(11, 10, 11, 11, 11, 10, 10, 10));
    EXPECT_EQ(DecodeInterpolated(block(7, 7)), Turns(7)) << "equal ends: indices do not count";
}

TEST(InterpolatedAlpha, TwoValuesAreExact) {
    for (int low = 0; low < 256; ++low) {
        for (int high = low; high < 256; ++high) {
            const ChannelTile tile = Turns(high, low, low);
            const Block block = EncodeInterpolated(tile);
            ASSERT_EQ(block[0], high);
            ASSERT_EQ(block[1], low);
            ASSERT_EQ(DecodeInterpolated(block), tile);
        }
    }
    EXPECT_EQ(EncodeInterpolated(Turns(255)), (Block{255, 255, 0, 0, 0, 0, 0, 0}));
}

TEST(InterpolatedAlpha, ExtremesAndFewOthersAreExact) {
    for (int value = 2; value < 254; ++value) {
        const ChannelTile one = Turns(0, value, 255);
        const Block block = EncodeInterpolated(one);
        ASSERT_EQ(block[0], value);
        ASSERT_EQ(block[1], value + 1);
        ASSERT_EQ(DecodeInterpolated(block), one);
        const ChannelTile two = Turns(255, value, 0, 2);
        ASSERT_EQ(DecodeInterpolated(EncodeInterpolated(two)), two);
    }
    const Block none = EncodeInterpolated(Turns(0, 1, 254, 255));
    EXPECT_EQ(none[0], 128);
    EXPECT_EQ(none[1], 129);
}

TEST(InterpolatedAlpha, NarrowRangesKeepTheirEnds) {
    // 48 of 256 is narrow and wins with six values; one more asks for a search.
    const Block narrow = EncodeInterpolated(Turns(100, 147, 120));
    EXPECT_EQ(narrow[0], 100);
    EXPECT_EQ(narrow[1], 147);
    // Seven equal steps: the search finds the ramp of eight values.
    const ChannelTile steps = Turns(20, 50, 80, 110, 140, 170, 200, 230);
    EXPECT_EQ(DecodeInterpolated(EncodeInterpolated(steps)), steps);
}

TEST(ThreeDc, PlacesChannels) {
    RgbTile tile;
    for (uint32_t k = 0; k < tile.size(); ++k) {
        tile[k] = {static_cast<uint8_t>(k % 2 * 80), static_cast<uint8_t>(k / 8 * 90 + 5), 77};
    }
    std::array<uint8_t, 2 * kBlockBytes> block;
    RgbTile decoded;
    atiEncodeATI2N(tile, block.data());
    EXPECT_EQ(block[0], 95) << "green comes first";
    EXPECT_EQ(block[8], 80);
    atiDecodeATI2N(decoded, block.data());
    for (size_t k = 0; k < tile.size(); ++k) {
        EXPECT_EQ(decoded[k], (Rgb{tile[k].r, tile[k].g, 255}));
    }
    atiEncodeATI1N(tile, block.data());
    atiDecodeATI1N(decoded, block.data());
    for (size_t k = 0; k < tile.size(); ++k) {
        EXPECT_EQ(decoded[k], (Rgb{tile[k].r, tile[k].r, tile[k].r}));
    }
}

}  // namespace
}  // namespace zorvan::texcompress
