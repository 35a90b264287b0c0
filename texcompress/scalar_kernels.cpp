#include "texcompress/alpha_explicit.h"
#include "texcompress/alpha_interpolated.h"
#include "texcompress/atitc_search.h"
#include "texcompress/block_kernels.h"
#include "texcompress/etc1_decode.h"
#include "texcompress/etc1_encode.h"
#include "texcompress/texcompress.h"
#include "texcompress/threedc.h"

namespace zorvan::texcompress {
namespace {

void StoreAtcBlock(uint8_t* block, uint32_t color0, uint32_t color1, uint32_t indexWord) {
    StoreWord(block, color1 << 16 | color0);
    StoreWord(block + 4, indexWord);
}

template <uint32_t Format>
void EncodeAtc(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t color0;
        uint32_t color1;
        const uint32_t indexWord = EncodeRGBBlock(tiles[i].rgb, &color0, &color1, Format);
        StoreAtcBlock(blocks + i * stride, color0, color1, indexWord);
    }
}

template <uint32_t Format>
void EncodeAtcFast(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride, uint32_t* errors) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t color0;
        uint32_t color1;
        const uint32_t indexWord = EncodeRGBBlockFast(tiles[i].rgb, &color0, &color1, Format, &errors[i]);
        StoreAtcBlock(blocks + i * stride, color0, color1, indexWord);
    }
}

template <uint32_t Format>
void DecodeAtc(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* block = blocks + i * stride;
        const uint32_t colors = LoadWord(block);
        DecodeRGBBlock(tiles[i].rgb, LoadWord(block + 4), colors & 0xFFFF, colors >> 16, Format);
    }
}

void EncodeEtc1(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t word1;
        uint32_t word2;
        atiEncodeRGBBlockETC(tiles[i].rgb, word1, word2);
        StoreBigEndianWord(blocks + i * stride, word1);
        StoreBigEndianWord(blocks + i * stride + 4, word2);
    }
}

void DecodeEtc1(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* block = blocks + i * stride;
        atiDecodeRGBBlockETC(tiles[i].rgb, LoadBigEndianWord(block), LoadBigEndianWord(block + 4));
    }
}

template <auto EncodeBlock, auto Source>
void EncodeEach(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride) {
    for (size_t i = 0; i < count; ++i) {
        EncodeBlock(tiles[i].*Source, blocks + i * stride);
    }
}

template <auto DecodeBlock, auto Target>
void DecodeEach(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        DecodeBlock(tiles[i].*Target, blocks + i * stride);
    }
}

}  // namespace

constexpr BlockKernels kScalarKernels = {
    .encodeAtc = EncodeAtc<TXC_FORMAT_ATC>,
    .encodeAtcLegacy = EncodeAtc<TXC_FORMAT_ATC_LEGACY>,
    .encodeAtcFast = EncodeAtcFast<TXC_FORMAT_ATC>,
    .encodeAtcLegacyFast = EncodeAtcFast<TXC_FORMAT_ATC_LEGACY>,
    .encodeEtc1 = EncodeEtc1,
    .encodeAti1n = EncodeEach<atiEncodeATI1N, &Tile::rgb>,
    .encodeAti2n = EncodeEach<atiEncodeATI2N, &Tile::rgb>,
    .decodeAtc = DecodeAtc<TXC_FORMAT_ATC>,
    .decodeAtcLegacy = DecodeAtc<TXC_FORMAT_ATC_LEGACY>,
    .decodeEtc1 = DecodeEtc1,
    .decodeAti1n = DecodeEach<atiDecodeATI1N, &Tile::rgb>,
    .decodeAti2n = DecodeEach<atiDecodeATI2N, &Tile::rgb>,
    .encodeAlphaExplicit8 = EncodeEach<atiEncodeAlphaBlockATITCA4, &Tile::alpha>,
    .encodeAlphaExplicit4 = EncodeEach<EncodeAlphaBlock, &Tile::alpha>,
    .encodeAlphaInterpolated = EncodeEach<atiEncodeAlphaBlockInterp, &Tile::alpha>,
    .decodeAlphaExplicit = DecodeEach<DecodeAlphaBlock, &Tile::alpha>,
    .decodeAlphaInterpolated = DecodeEach<atiDecodeAlphaBlockInterp, &Tile::alpha>,
};

}  // namespace zorvan::texcompress
