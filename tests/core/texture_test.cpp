#include "core/pixel_format.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

TEST(PixelFormat, Keeps16BitPixels) {
    std::vector<uint16_t> words(65536);
    std::iota(words.begin(), words.end(), uint16_t{});
    for (uint32_t format : {TextureFormat::Rgb565, TextureFormat::Rgba5551, TextureFormat::Rgba4444}) {
        const Image image = UnpackPixels(reinterpret_cast<uint8_t const*>(words.data()), format, 256, 256);
        std::vector<uint8_t> packed;
        PackPixels(image, format, packed);
        ASSERT_EQ(packed.size(), 131072u);
        EXPECT_EQ(std::memcmp(packed.data(), words.data(), packed.size()), 0) << format;
    }
    constexpr uint8_t kPixel[] = {0x30, 0x81};
    EXPECT_EQ(UnpackPixels(kPixel, TextureFormat::Rgb565, 1, 1).rgba,
              (std::vector<uint8_t>{132, 36, 132, 255}));
}

TEST(PixelFormat, PacksTheNearestValueBottomRowFirst) {
    const Image image{1, 2, {255, 128, 0, 127, 3, 4, 132, 128}};
    const std::pair<uint32_t, std::vector<uint8_t>> cases[] = {
        {TextureFormat::Rgb565, {0x30, 0x00, 0x00, 0xFC}},
        {TextureFormat::Rgba5551, {0x21, 0x00, 0x00, 0xFC}},
        {TextureFormat::Rgba4444, {0x88, 0x00, 0x07, 0xF8}},
        {TextureFormat::Rgb888, {3, 4, 132, 255, 128, 0}},
        {TextureFormat::Rgba8888, {3, 4, 132, 128, 255, 128, 0, 127}},
    };
    for (auto const& [format, expected] : cases) {
        std::vector<uint8_t> bytes;
        PackPixels(image, format, bytes);
        EXPECT_EQ(bytes, expected) << format;
    }
    EXPECT_EQ(UnpackPixels(cases[4].second.data(), TextureFormat::Rgba8888, 1, 2), image);
    EXPECT_EQ(UnpackPixels(cases[3].second.data(), TextureFormat::Rgb888, 1, 2).rgba[3], 255);
}

TEST(PixelFormat, PadsAndHalves) {
    const auto gray = [](uint32_t width, uint32_t height, std::vector<uint8_t> const& values) {
        Image image{width, height, std::vector<uint8_t>(values.size() * 4)};
        for (size_t i = 0; i < image.rgba.size(); ++i) {
            image.rgba[i] = values[i / 4];
        }
        return image;
    };
    EXPECT_EQ(PadImage(gray(2, 2, {1, 2, 3, 4}), 4, 3), gray(4, 3, {1, 2, 2, 2, 1, 2, 2, 2, 3, 4, 4, 4}));
    // Each of the two new columns covers one and a half old ones: (0 + 30 + 60 / 2) / 2.5.
    EXPECT_EQ(HalveImage(gray(5, 1, {0, 30, 60, 90, 255})), gray(2, 1, {24, 150}));
    EXPECT_EQ(HalveImage(gray(1, 2, {10, 13})), gray(1, 1, {12}));
    EXPECT_EQ(HalveImage(gray(1, 1, {9})), gray(1, 1, {9}));
}

TEST(TextureDataSize, CountsBlocksAndOverflows) {
    constexpr uint32_t kCases[][4] = {
        {0, 3, 5, 30},        {4, 3, 5, 45},        {6, 3, 5, 60},
        {8, 5, 4, 16},        {9, 5, 5, 64},        {6, 65536, 65536, 0},
        {6, 65537, 65537, 0}, {9, 65536, 65536, 0}, {6, 16384, 16384, 1u << 30}};
    for (auto const& [format, width, height, size] : kCases) {
        EXPECT_EQ(TextureDataSize(format, width, height), size) << format << " " << width;
    }
}

TEST(Texture, RewritesItsLevelsWithTheFormat) {
    const RefT<FakeTexture> texture(new FakeTexture);
    texture->width.Set(6);
    texture->height.Set(5);
    ASSERT_TRUE(texture->SizePixelStore(6 * 5 * 4 + 4));
    constexpr TextureLevel kPlain[] = {{6, 5, 0, 120}, {1, 1, 120, 4}};
    texture->levels.Append(kPlain[0]);
    texture->levels.Append(kPlain[1]);
    for (uint32_t format : {TextureFormat::AtcRgb, TextureFormat::AtcRgbaExplicitAlpha}) {
        texture->format.Set(format);
        ASSERT_EQ(texture->levels.Count(), 1u);
        EXPECT_EQ(texture->levels[0], (TextureLevel{6, 5, 0, format == TextureFormat::AtcRgb ? 32u : 64u}));
    }
    texture->format.Set(TextureFormat::Rgba8888);
    ASSERT_EQ(texture->levels.Count(), 2u);
    EXPECT_EQ(texture->levels[1], kPlain[1]);
    ASSERT_TRUE(texture->SizePixelStore(16));
    EXPECT_TRUE(texture->levels.IsEmpty());
}

}  // namespace
}  // namespace zorvan::test
