#include "core/image_file.h"

#include <gtest/gtest.h>
#include <stdio.h>

#include <jpeglib.h>

#include "core/file_bytes.h"
#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"

namespace zorvan::test {
namespace {

Image Gradient(uint32_t width, uint32_t height) {
    Image image{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
    for (size_t i = 0; i < image.rgba.size(); ++i) {
        image.rgba[i] = static_cast<uint8_t>(i * 16 + i / 16);
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

TEST(ImageFile, ReadsPngAndJpeg) {
    const Image image = Gradient(13, 7);
    Image back;
    EXPECT_EQ(DecodeImage(FileOf(image), back), "");
    EXPECT_EQ(back, image);
    EXPECT_EQ(DecodeImage(Jpeg(20, 10), back), "");
    ASSERT_EQ(back.rgba.size(), 800u);
    EXPECT_NEAR(back.rgba[0], 200, 3);
    EXPECT_EQ(back.rgba[3], 255);
}

TEST(ImageFile, RefusesBrokenImages) {
    const std::vector<uint8_t> png = FileOf(Gradient(13, 7));
    const std::vector<uint8_t> jpeg = Jpeg(64, 64);
    const Image before{1, 1, {1, 2, 3, 4}};
    Image image = before;
    // The last chunk of a PNG, of 12 bytes, holds nothing.
    for (size_t length = 0; length + 12 < png.size(); length += 3) {
        EXPECT_NE(DecodeImage({png.begin(), png.begin() + static_cast<ptrdiff_t>(length)}, image), "")
            << length;
    }
    for (size_t length = 0; length + 1 < jpeg.size(); length += 7) {
        EXPECT_NE(DecodeImage({jpeg.begin(), jpeg.begin() + static_cast<ptrdiff_t>(length)}, image), "")
            << length;
    }
    EXPECT_EQ(DecodeImage(std::vector<uint8_t>(100), image), "got neither a PNG nor a JPEG image");
    EXPECT_EQ(DecodeImage(Jpeg(20000, 2), image),
              "got 20000x2 pixels, expected at most 16384 on a side and 67108864 together");
    EXPECT_EQ(image, before);
    // A changed byte either fails or gives an image; nothing worse.
    for (size_t i = 8; i < png.size(); ++i) {
        std::vector<uint8_t> changed = png;
        changed[i] ^= 0xFF;
        Image other;
        if (DecodeImage(changed, other).empty()) {
            EXPECT_EQ(other.rgba.size(), size_t{other.width} * other.height * 4);
        }
    }
    EXPECT_NE(WritePng(testing::TempDir(), before), "");
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
    EXPECT_EQ(texture.pixels.data[1], Gradient(3, 2).rgba[13]);  // the lower row comes first
    EXPECT_EQ(texture.pixels.data[13], Gradient(3, 2).rgba[1]);
}

TEST_F(TextureFileTest, PadsConvertsAndFilters) {
    ASSERT_TRUE(Load(R"(, "width": 8, "height": 4, "format": "rgb565", "mipmaps": true)")) << scene.Error();
    EXPECT_EQ(static_cast<FakeSprite*>(scene.root->GetChildren()[0])->textureChanges, 1);
    ExpectSavesWhatItLoads(scene, backend.registry);
    Texture& texture = *scene.textures[0];
    EXPECT_EQ(texture.usedWidth.Get(), 3);
    constexpr TextureLevel kLevels[] = {{8, 4, 0, 64}, {4, 2, 64, 16}, {2, 1, 80, 4}, {1, 1, 84, 2}};
    ASSERT_EQ(texture.levels.Count(), 4u);
    for (uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(texture.levels[i], kLevels[i]) << i;
    }
    EXPECT_EQ(texture.pixels.size, 86u);
}

TEST_F(TextureFileTest, CompressesAndSavesTheFile) {
    ASSERT_TRUE(Load(R"(, "compress": true)")) << scene.Error();
    ExpectSavesWhatItLoads(scene, backend.registry);
    EXPECT_EQ(scene.textures[0]->format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
    EXPECT_FALSE(Load(R"(, "height": 1)"));
    EXPECT_NE(scene.Error().find("/textures/0/height: got less than the image, expected at least 3x2 pixels"),
              std::string::npos)
        << scene.Error();
}

}  // namespace
}  // namespace zorvan::test
