#include "texcompress/etc1_decode.h"

#include <array>

#include "texcompress/etc1_tables.h"

namespace zorvan::texcompress {
namespace {

// The two base colours' values of the channel whose eight bits begin at shift.
struct ChannelPair {
    uint8_t first, second;
};

ChannelPair IndividualChannel(uint32_t word1, int shift) {
    return {static_cast<uint8_t>((word1 >> (shift + 4) & 15) * 17),
            static_cast<uint8_t>((word1 >> shift & 15) * 17)};
}

ChannelPair DifferentialChannel(uint32_t word1, int shift) {
    const int first = static_cast<int>(word1 >> (shift + 3) & 31);
    const int bits = static_cast<int>(word1 >> shift & 7);
    const int difference = bits < 4 ? bits : bits - 8;
    return {static_cast<uint8_t>(Expand5(first)), static_cast<uint8_t>(Expand5(first + difference))};
}

}  // namespace

void decompressBlockDiffFlip(uint32_t word1, uint32_t word2, Rgb* image, int width, int x, int y) {
    const auto channel = (word1 & kEtc1DiffBit) != 0 ? DifferentialChannel : IndividualChannel;
    const ChannelPair r = channel(word1, 24);
    const ChannelPair g = channel(word1, 16);
    const ChannelPair b = channel(word1, 8);
    const std::array<Rgb, 2> bases = {{{r.first, g.first, b.first}, {r.second, g.second, b.second}}};
    const std::array<uint32_t, 2> tables = {word1 >> 5 & 7, word1 >> 2 & 7};
    const bool flipped = (word1 & kEtc1FlipBit) != 0;

    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const int bit = 4 * column + row;
            const uint32_t index = (word2 >> (bit + 16) & 1) << 1 | (word2 >> bit & 1);
            const int half = (flipped ? row : column) / 2;
            image[(y + row) * width + x + column] =
                AddModifier(bases[half], compressParams[2 * tables[half]][unscramble[index]]);
        }
    }
}

void atiDecodeRGBBlockETC(RgbTile& tile, uint32_t word1, uint32_t word2) {
    decompressBlockDiffFlip(word1, word2, tile.data(), 4, 0, 0);
}

}  // namespace zorvan::texcompress
