#include "core/image_file.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <jpeglib.h>

#include "core/file_bytes.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

Image Gradient(uint32_t width, uint32_t height) {
    Image image{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
    uint8_t* out = image.rgba.data();
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x, out += 4) {
            out[0] = static_cast<uint8_t>(x * 16);
            out[1] = static_cast<uint8_t>(y * 16);
            out[2] = 77;
            out[3] = static_cast<uint8_t>(x * y);
        }
    }
    return image;
}

std::vector<uint8_t> FileOf(Image const& image) {
    const std::string path = testing::TempDir() + "zorvan_image.png";
    EXPECT_EQ(WritePng(path, image), "");
    const FileBytes file = ReadFileBytes(path, 1 << 20);
    std::remove(path.c_str());
    return file.bytes;
}

std::vector<uint8_t> Jpeg(uint32_t width, uint32_t height) {
    jpeg_compress_struct info{};
    jpeg_error_mgr manager{};
    info.err = jpeg_std_error(&manager);
    jpeg_create_compress(&info);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &data, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_start_compress(&info, TRUE);
    std::vector<uint8_t> row(size_t{width} * 3, 200);
    while (info.next_scanline < info.image_height) {
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    std::vector<uint8_t> bytes(data, data + size);
    jpeg_destroy_compress(&info);
    free(data);
    return bytes;
}

TEST(ImageFile, PngReadsBackAndIsStable) {
    const Image image = Gradient(13, 7);
    const std::vector<uint8_t> bytes = FileOf(image);
    Image back;
    EXPECT_EQ(DecodeImage(bytes, back), "");
    EXPECT_EQ(back, image);
    EXPECT_EQ(FileOf(image), bytes);
}

TEST(ImageFile, ReadsJpeg) {
    Image image;
    EXPECT_EQ(DecodeImage(Jpeg(20, 10), image), "");
    ASSERT_EQ(image.rgba.size(), 800u);
    EXPECT_NEAR(image.rgba[0], 200, 3);
    EXPECT_EQ(image.rgba[3], 255);
}

std::vector<uint8_t> Prefix(std::vector<uint8_t> bytes, size_t length) {
    bytes.resize(length);
    return bytes;
}

TEST(ImageFile, RefusesBrokenImages) {
    const std::vector<uint8_t> png = FileOf(Gradient(13, 7));
    const std::vector<uint8_t> jpeg = Jpeg(64, 64);
    Image image{1, 1, {1, 2, 3, 4}};
    // The last chunk, of 12 bytes, holds nothing.
    for (size_t length = 0; length + 12 < png.size(); length += 3) {
        EXPECT_NE(DecodeImage(Prefix(png, length), image), "") << length;
    }
    for (size_t length = 0; length + 1 < jpeg.size(); length += 7) {
        EXPECT_NE(DecodeImage(Prefix(jpeg, length), image), "") << length;
    }
    EXPECT_EQ(DecodeImage(Prefix({}, 100), image), "got neither a PNG nor a JPEG image");
    EXPECT_EQ(DecodeImage(Jpeg(20000, 2), image),
              "got 20000x2 pixels, expected at most 16384 on a side and 67108864 together");
    // A changed byte either fails or gives an image; nothing worse.
    for (size_t i = 8; i < png.size(); ++i) {
        std::vector<uint8_t> changed = png;
        changed[i] ^= 0xFF;
        Image other;
        if (DecodeImage(changed, other).empty()) {
            EXPECT_EQ(other.rgba.size(), size_t{other.width} * other.height * 4);
        }
    }
    EXPECT_EQ(image, (Image{1, 1, {1, 2, 3, 4}}));
    EXPECT_NE(WritePng(testing::TempDir(), Gradient(1, 1)), "");
    EXPECT_NE(WritePng(testing::TempDir() + "none.png", Image{}), "");
}

class TextureFileTest : public testing::Test {
  protected:
    void SetUp() override {
        path_ = testing::TempDir() + "zorvan_texture.png";
        ASSERT_EQ(WritePng(path_, Gradient(3, 2)), "");
    }
    void TearDown() override { std::remove(path_.c_str()); }

    bool Load(std::string const& members) {
        return scene.Parse(R"({"version": 1, "textures": [{"name": "t", "file": ")" + path_ + "\"" + members +
                               R"(}], "root": {"children": [{"class": "Sprite", "texture": "t"}]}})",
                           backend.registry);
    }

    std::string path_;
    FakeBackend backend;
    Scene scene;
};

TEST_F(TextureFileTest, TakesItsSizeFromTheImage) {
    ASSERT_TRUE(Load("")) << scene.Error();
    Texture& texture = *scene.textures[0];
    EXPECT_EQ(texture.width.Get(), 3);
    EXPECT_EQ(texture.usedHeight.Get(), 2);
    ASSERT_EQ(texture.levels.Count(), 1u);
    EXPECT_EQ(texture.pixels.data[1], 16);  // the lower row comes first
    EXPECT_EQ(texture.pixels.data[3 * 4 + 1], 0);
}

TEST_F(TextureFileTest, PadsConvertsAndFilters) {
    ASSERT_TRUE(Load(R"(, "width": 8, "height": 4, "format": "rgb565", "mipmaps": true)")) << scene.Error();
    Texture& texture = *scene.textures[0];
    EXPECT_EQ(texture.usedWidth.Get(), 3);
    EXPECT_EQ(static_cast<FakeSprite*>(scene.root->GetChildren()[0])->textureChanges, 1);
    ASSERT_EQ(texture.levels.Count(), 4u);
    uint32_t offset = 0;
    for (uint32_t i = 0; i < 4; ++i) {
        const TextureLevel level = texture.levels[i];
        EXPECT_EQ(level.width, 8u >> i);
        EXPECT_EQ(level.height, std::max(4u >> i, 1u));
        EXPECT_EQ(level.offset, offset);
        EXPECT_EQ(level.size, level.width * level.height * 2);
        offset += level.size;
    }
    EXPECT_EQ(texture.pixels.size, offset);
    std::string first;
    std::string second;
    ASSERT_TRUE(scene.Save(first));
    ASSERT_TRUE(scene.Parse(first, backend.registry)) << scene.Error();
    ASSERT_TRUE(scene.Save(second));
    EXPECT_EQ(second, first);
    EXPECT_EQ(scene.textures[0]->levels.Count(), 4u);
}

TEST_F(TextureFileTest, CompressesAndSavesTheFile) {
    ASSERT_TRUE(Load(R"(, "compress": true)")) << scene.Error();
    EXPECT_EQ(scene.textures[0]->format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
    std::string text;
    ASSERT_TRUE(scene.Save(text));
    EXPECT_NE(text.find("\"format\": \"rgba8888\""), std::string::npos);
    EXPECT_TRUE(scene.Parse(text, backend.registry)) << scene.Error();
}

TEST_F(TextureFileTest, RefusesLessThanTheImage) {
    EXPECT_FALSE(Load(R"(, "height": 1)"));
    EXPECT_NE(scene.Error().find("/textures/0/height: got less than the image, expected at least 3x2 pixels"),
              std::string::npos)
        << scene.Error();
}

}  // namespace
}  // namespace zorvan::test
