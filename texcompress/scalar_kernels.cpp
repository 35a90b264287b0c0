#include "texcompress/alpha_explicit.h"
#include "texcompress/alpha_interpolated.h"
#include "texcompress/atitc_search.h"
#include "texcompress/block_kernels.h"
#include "texcompress/etc1_decode.h"
#include "texcompress/etc1_encode.h"
#include "texcompress/pixel_target.h"
#include "texcompress/source_pixels.h"
#include "texcompress/texcompress.h"
#include "texcompress/threedc.h"

namespace zorvan::texcompress {
namespace {

RgbTile ColorsOf(const Tile& tile) {
    RgbTile colors;
    for (size_t k = 0; k < kTilePixels; ++k) {
        const uint32_t word = tile.pixels[k];
        colors[k] = {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8),
                     static_cast<uint8_t>(word >> 16)};
    }
    return colors;
}

ChannelTile AlphasOf(const Tile& tile) {
    ChannelTile alphas;
    for (size_t k = 0; k < kTilePixels; ++k) {
        alphas[k] = static_cast<uint8_t>(tile.pixels[k] >> 24);
    }
    return alphas;
}

void SetPixels(const RgbTile& colors, Tile& tile) {
    for (size_t k = 0; k < kTilePixels; ++k) {
        const Rgb& color = colors[k];
        tile.pixels[k] = color.r | static_cast<uint32_t>(color.g) << 8 | static_cast<uint32_t>(color.b) << 16;
    }
}

void SetPixels(const ChannelTile& alphas, Tile& tile) {
    for (size_t k = 0; k < kTilePixels; ++k) {
        tile.pixels[k] |= static_cast<uint32_t>(alphas[k]) << 24;
    }
}

void GatherEach(const SourcePixels& source, uint32_t x, uint32_t y, size_t count, Tile* tiles) {
    for (uint32_t i = 0; i < count; ++i) {
        source.Gather(x + i * kTileSize, y, tiles[i]);
    }
}

void ScatterEach(const Tile* tiles, size_t count, const PixelTarget& target, uint32_t x, uint32_t y) {
    for (uint32_t i = 0; i < count; ++i) {
        ScatterTile(tiles[i], target, x + i * kTileSize, y);
    }
}

void StoreAtcBlock(uint8_t* block, uint32_t color0, uint32_t color1, uint32_t indexWord) {
    StoreWord(block, color1 << 16 | color0);
    StoreWord(block + 4, indexWord);
}

template <uint32_t Format>
void EncodeAtc(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t color0;
        uint32_t color1;
        const uint32_t indexWord = EncodeRGBBlock(ColorsOf(tiles[i]), &color0, &color1, Format);
        StoreAtcBlock(blocks + i * stride, color0, color1, indexWord);
    }
}

template <uint32_t Format>
void EncodeAtcFast(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride, uint32_t* errors) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t color0;
        uint32_t color1;
        const uint32_t indexWord =
            EncodeRGBBlockFast(ColorsOf(tiles[i]), &color0, &color1, Format, &errors[i]);
        StoreAtcBlock(blocks + i * stride, color0, color1, indexWord);
    }
}

template <uint32_t Format>
void DecodeAtc(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* block = blocks + i * stride;
        const uint32_t ends = LoadWord(block);
        RgbTile colors;
        DecodeRGBBlock(colors, LoadWord(block + 4), ends & 0xFFFF, ends >> 16, Format);
        SetPixels(colors, tiles[i]);
    }
}

void EncodeEtc1(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t word1;
        uint32_t word2;
        atiEncodeRGBBlockETC(ColorsOf(tiles[i]), word1, word2);
        StoreBigEndianWord(blocks + i * stride, word1);
        StoreBigEndianWord(blocks + i * stride + 4, word2);
    }
}

void DecodeEtc1(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* block = blocks + i * stride;
        RgbTile colors;
        atiDecodeRGBBlockETC(colors, LoadBigEndianWord(block), LoadBigEndianWord(block + 4));
        SetPixels(colors, tiles[i]);
    }
}

template <auto EncodeBlock, auto PartOf>
void EncodeEach(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        EncodeBlock(PartOf(tiles[i]), blocks + i * stride);
    }
}

template <auto DecodeBlock, typename Part>
void DecodeEach(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        Part part;
        DecodeBlock(part, blocks + i * stride);
        SetPixels(part, tiles[i]);
    }
}

}  // namespace

constexpr BlockKernels kScalarKernels = {
    .gather = GatherEach,
    .scatter = ScatterEach,
    .encodeAtc = EncodeAtc<TXC_FORMAT_ATC>,
    .encodeAtcLegacy = EncodeAtc<TXC_FORMAT_ATC_LEGACY>,
    .encodeAtcFast = EncodeAtcFast<TXC_FORMAT_ATC>,
    .encodeAtcLegacyFast = EncodeAtcFast<TXC_FORMAT_ATC_LEGACY>,
    .encodeEtc1 = EncodeEtc1,
    .encodeAti1n = EncodeEach<atiEncodeATI1N, ColorsOf>,
    .encodeAti2n = EncodeEach<atiEncodeATI2N, ColorsOf>,
    .decodeAtc = DecodeAtc<TXC_FORMAT_ATC>,
    .decodeAtcLegacy = DecodeAtc<TXC_FORMAT_ATC_LEGACY>,
    .decodeEtc1 = DecodeEtc1,
    .decodeAti1n = DecodeEach<atiDecodeATI1N, RgbTile>,
    .decodeAti2n = DecodeEach<atiDecodeATI2N, RgbTile>,
    .encodeAlphaExplicit8 = EncodeEach<atiEncodeAlphaBlockATITCA4, AlphasOf>,
    .encodeAlphaExplicit4 = EncodeEach<EncodeAlphaBlock, AlphasOf>,
    .encodeAlphaInterpolated = EncodeEach<atiEncodeAlphaBlockInterp, AlphasOf>,
    .decodeAlphaExplicit = DecodeEach<DecodeAlphaBlock, ChannelTile>,
    .decodeAlphaInterpolated = DecodeEach<atiDecodeAlphaBlockInterp, ChannelTile>,
};

}  // namespace zorvan::texcompress
