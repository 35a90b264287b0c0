#include "core/pixel_format.h"

#include <gtest/gtest.h>

#include <cstring>

#include "core/texture.h"

namespace zorvan {
namespace {

TEST(PixelFormat, Keeps16BitPixels) {
    for (uint32_t format : {TextureFormat::Rgb565, TextureFormat::Rgba5551, TextureFormat::Rgba4444}) {
        std::vector<uint16_t> words(65536);
        for (uint32_t i = 0; i < 65536; ++i) {
            words[i] = static_cast<uint16_t>(i);
        }
        const Image image = UnpackPixels(reinterpret_cast<uint8_t const*>(words.data()), format, 256, 256);
        std::vector<uint8_t> packed;
        PackPixels(image, format, packed);
        ASSERT_EQ(packed.size(), 131072u);
        EXPECT_EQ(std::memcmp(packed.data(), words.data(), packed.size()), 0) << format;
    }
}

TEST(PixelFormat, PacksTheNearestValueBottomRowFirst) {
    const Image image{1, 2, {255, 128, 0, 127, 3, 4, 132, 128}};
    const std::pair<uint32_t, std::vector<uint8_t>> cases[] = {
        {TextureFormat::Rgb565, {0x30, 0x00, 0x00, 0xFC}},
        {TextureFormat::Rgba5551, {0x21, 0x00, 0x00, 0xFC}},
        {TextureFormat::Rgba4444, {0x88, 0x00, 0x07, 0xF8}},
        {TextureFormat::Rgb888, {3, 4, 132, 255, 128, 0}},
        {TextureFormat::Rgba8888Uncompressible, {3, 4, 132, 128, 255, 128, 0, 127}},
        {TextureFormat::Rgba8888, {3, 4, 132, 128, 255, 128, 0, 127}},
        {TextureFormat::Rgba8888Dynamic, {3, 4, 132, 128, 255, 128, 0, 127}},
    };
    for (auto const& [format, expected] : cases) {
        std::vector<uint8_t> bytes;
        PackPixels(image, format, bytes);
        EXPECT_EQ(bytes, expected) << format;
    }
    EXPECT_EQ(UnpackPixels(cases[5].second.data(), TextureFormat::Rgba8888, 1, 2), image);
    EXPECT_EQ(UnpackPixels(cases[3].second.data(), TextureFormat::Rgb888, 1, 2).rgba[3], 255);
}

TEST(PixelFormat, PadsAboveAndToTheRight) {
    const Image padded = PadImage({1, 2, {1, 1, 1, 1, 2, 2, 2, 2}}, 2, 3);
    std::vector<uint8_t> expected(24, 1);
    std::fill(expected.begin() + 16, expected.end(), uint8_t{2});
    EXPECT_EQ(padded.rgba, expected);
}

TEST(PixelFormat, HalvesByTheMeanOfTheArea) {
    // Each of the two new columns covers one and a half old ones: (0 + 30 + 60 / 2) / 2.5.
    const Image wide{5, 1, {0, 9, 9, 255, 30, 9, 9, 255, 60, 9, 9, 255, 90, 9, 9, 255, 255, 9, 9, 255}};
    EXPECT_EQ(HalveImage(wide), (Image{2, 1, {24, 9, 9, 255, 150, 9, 9, 255}}));
    const Image last = HalveImage(Image{1, 2, {10, 0, 0, 0, 13, 0, 0, 0}});
    EXPECT_EQ(last, (Image{1, 1, {12, 0, 0, 0}}));  // 11.5 rounds up
    EXPECT_EQ(HalveImage(last), last);
}

TEST(TextureDataSize, CountsBlocksAndOverflows) {
    struct Case {
        uint32_t format, width, height, size;
    };
    constexpr Case kCases[] = {{0, 3, 5, 30},        {4, 3, 5, 45},        {6, 3, 5, 60},
                               {8, 5, 4, 16},        {9, 5, 5, 64},        {8, 1, 1, 8},
                               {6, 65536, 65536, 0}, {6, 32768, 32768, 0}, {6, 16384, 16384, 1u << 30},
                               {8, 0, 0, 0}};
    for (Case const& c : kCases) {
        EXPECT_EQ(TextureDataSize(c.format, c.width, c.height), c.size) << c.format << " " << c.width;
    }
}

}  // namespace
}  // namespace zorvan
