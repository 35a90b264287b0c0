// Source pixels: channel masks, alphas, edges and what of the memory is read.
#include "texcompress/source_pixels.h"

#include <gtest/gtest.h>

#include "codec_calls.h"

namespace zorvan::texcompress {
namespace {

// Gathers the tile at the top left.
Tile Gathered(const Source& source, AlphaDepth depth, PixelFetch fetch) {
    const auto& masks = source.masks;
    Tile tile;
    SourcePixels(source.pixels, masks[0], masks[1], masks[2], masks[3], source.width, source.height,
                 source.pitch, depth, fetch)
        .Gather(0, 0, tile);
    return tile;
}

TEST(SourcePixels, WidenChannels) {
    struct Row {
        const char* name;
        std::array<uint32_t, 4> masks;  // red, green, blue, alpha
        std::vector<uint8_t> bytes;     // of one pixel
        uint32_t eight, four;           // alpha, blue, green, red with 8-bit and 4-bit alpha
    };
    for (const Row& row : {
             Row{"RGBA8888", {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, {1, 2, 3, 0xA4}, 0xA4030201, 0xA030201},
             Row{"BGR888", {0xFF0000, 0xFF00, 0xFF, 0}, {1, 2, 3}, 0xFF010203, 0xF010203},
             // Red 10010, green 011011, blue 00001.
             Row{"RGB565", {0xF800, 0x07E0, 0x001F, 0}, {0x61, 0x93}, 0xFF086D94, 0xF086D94},
             Row{"RGBA4444", {0xF000, 0xF00, 0xF0, 0xF}, {0x3A, 0x52}, 0xAA332255, 0xA332255},
             Row{"RGBA5551", {0xF800, 0x07C0, 0x003E, 1}, {0x01, 0x80}, 0xFF000084, 0xF000084},
             Row{"no alpha bit", {0xF800, 0x07C0, 0x003E, 1}, {0x00, 0x80}, 0x00000084, 0x00000084},
             // One repetition of two bits fills four.
             Row{"RGB222", {3, 12, 48, 0}, {0b100111}, 0xFFA050F0, 0xFA050F0},
             Row{"9 bits, alpha 2", {0x1FF, 0xFE00, 0, 0x30000}, {0xFF, 0xFF, 3}, 0x0000FF00, 0x0000FF00},
         }) {
        const Source source{row.bytes.data(), 1, 1, 0, row.masks};
        for (const uint32_t pixel : Gathered(source, AlphaDepth::kEightBits, PixelFetch::kAnySize).pixels) {
            EXPECT_EQ(pixel, row.eight) << row.name;
        }
        EXPECT_EQ(Gathered(source, AlphaDepth::kFourBits, PixelFetch::kAnySize).pixels[0], row.four)
            << row.name;
        EXPECT_EQ(Gathered(source, AlphaDepth::kNone, PixelFetch::kAnySize).pixels[0], row.eight & 0xFFFFFF);
    }
}

TEST(SourcePixels, RepeatTheLastColumnAndRow) {
    // Three pixels of two bytes, two rows, a gap of one byte between them.
    const std::array<uint8_t, 13> bytes = {1, 0, 2, 0, 3, 0, 99, 4, 0, 5, 0, 6, 0};
    const Tile tile =
        Gathered({bytes.data(), 3, 2, 7, {0xFF, 0xFF00, 0, 0}}, AlphaDepth::kNone, PixelFetch::kAnySize);
    const Tile expected{{1, 2, 3, 3, 4, 5, 6, 6, 4, 5, 6, 6, 4, 5, 6, 6}};
    EXPECT_EQ(tile, expected);
}

TEST(SourcePixels, MasksMayReachIntoTheNextPixel) {
    // Three channels of 8 bits, the last one in the fourth byte: pixels lie three bytes apart.
    const std::array<uint8_t, 7> bytes = {1, 2, 3, 4, 5, 6, 7};
    const Source source{bytes.data(), 2, 1, 6, {0xFF, 0xFF00, 0xFF000000, 0}};
    const Tile any = Gathered(source, AlphaDepth::kNone, PixelFetch::kAnySize);
    EXPECT_EQ(any.pixels[0], 0x040201u);
    EXPECT_EQ(any.pixels[1], 0x070504u);
    EXPECT_EQ(Gathered(source, AlphaDepth::kNone, PixelFetch::kTwoToFourBytes).pixels[0], 0x000201u);
}

TEST(SourcePixels, FastEncoderReadsOneByteAndWidePixelsAsZero) {
    const std::vector<uint8_t> white(16, 0xFF);
    for (const auto& [shared, red] :
         {std::pair{0u, 0u}, {0xFF00u, 255u}, {0xFFFF00u, 255u}, {0xFFFFFF00u, 255u}, {0xFFFFFFFFu, 0u}}) {
        const Source source{white.data(), 1, 1, 0, {0xFF, shared, 0, 0}};
        EXPECT_EQ(Gathered(source, AlphaDepth::kNone, PixelFetch::kTwoToFourBytes).pixels[0] & 255, red);
    }
}

TEST(SourcePixels, EveryEncoderTakesItsMasksInOrder) {
    TestImage image = CorpusImage(9, 5);
    Source reversed{nullptr, 9, 5, 36, {0xFF000000, 0xFF0000, 0xFF00, 0xFF}};
    for (const Codec& codec : kCodecs) {
        const std::vector<uint8_t> expected = Encode(codec, SourceOf(image));
        std::vector<uint8_t> bytes(image.pixels.size());
        for (size_t i = 0; i < bytes.size(); ++i) {
            bytes[i] = image.pixels[i / 4 * 4 + 3 - i % 4];
        }
        reversed.pixels = bytes.data();
        EXPECT_EQ(Encode(codec, reversed), expected) << codec.name;
    }
}

}  // namespace
}  // namespace zorvan::texcompress
