#include "core/image_file.h"

#include <gtest/gtest.h>

#include "core/base64.h"
#include "core/file_bytes.h"
#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"
#include "tests/temp_folder.h"

namespace zorvan::test {
namespace {

using Bytes = std::vector<uint8_t>;

Image Gradient(uint32_t width, uint32_t height) {
    Image image{width, height, Bytes(size_t{width} * height * 4)};
    for (size_t i = 0; i < image.rgba.size(); ++i) {
        image.rgba[i] = static_cast<uint8_t>(i * 16 + i / 16);
    }
    return image;
}

Bytes Png(Image const& image) {
    const TempFolder folder;
    EXPECT_EQ(WritePng(folder / "image.png", image), "");
    return ReadFileBytes(folder / "image.png", 1 << 20).bytes;
}

// libjpeg's image of 20x10 pixels of the colour (200, 100, 50), with another width in its header.
Bytes Jpeg(uint32_t width) {
    Bytes bytes;
    EXPECT_TRUE(DecodeBase64(
        "/9j/2wBDAAIBAQEBAQIBAQECAgICAgQDAgICAgUEBAMEBgUGBgYFBgYGBwkIBgcJBwYGCAsICQoKCgoKBggLDAsK"
        "DAkKCgr/2wBDAQICAgICAgUDAwUKBwYHCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoK"
        "CgoKCgoKCgr/wAARCAAKABQDASIAAhEBAxEB/8QAFQABAQAAAAAAAAAAAAAAAAAAAAX/xAAUEAEAAAAAAAAAAAAA"
        "AAAAAAAA/8QAFQEBAQAAAAAAAAAAAAAAAAAAAAj/xAAUEQEAAAAAAAAAAAAAAAAAAAAA/9oADAMBAAIRAxEAPwCe"
        "AldbAAD/2Q==",
        bytes));
    bytes[0x93] = static_cast<uint8_t>(width >> 8);
    bytes[0x94] = static_cast<uint8_t>(width);
    return bytes;
}

TEST(ImageFile, ReadsPngAndJpeg) {
    const Image image = Gradient(13, 7);
    Image back;
    EXPECT_EQ(DecodeImage(Png(image), back), "");
    EXPECT_EQ(back, image);
    EXPECT_EQ(DecodeImage(Jpeg(20), back), "");
    ASSERT_EQ(back.rgba.size(), 800u);
    EXPECT_NEAR(back.rgba[0], 200, 3);
    EXPECT_NEAR(back.rgba[2], 50, 3);
    EXPECT_EQ(back.rgba[3], 255);
}

TEST(ImageFile, RefusesBrokenImages) {
    const Image before{1, 1, {1, 2, 3, 4}};
    Image image = before;
    // Without its last chunk, of 12 bytes, a PNG is still whole.
    for (auto const& [whole, tail] : {std::pair{Png(Gradient(13, 7)), 12}, {Jpeg(20), 1}}) {
        for (size_t length = 0; length < whole.size() - static_cast<size_t>(tail); length += 3) {
            EXPECT_NE(
                DecodeImage(Bytes(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)), image), "")
                << length;
        }
        // A changed byte either fails or gives an image; nothing worse.
        for (size_t i = 8; i < whole.size(); ++i) {
            Bytes changed = whole;
            changed[i] ^= 0xFF;
            Image other;
            if (DecodeImage(changed, other).empty()) {
                EXPECT_EQ(other.rgba.size(), size_t{other.width} * other.height * 4);
            }
        }
    }
    EXPECT_EQ(DecodeImage(Bytes(100), image), "got neither a PNG nor a JPEG image");
    EXPECT_EQ(DecodeImage(Jpeg(20000), image),
              "got 20000x10 pixels, expected at most 16384 on a side and 67108864 together");
    EXPECT_EQ(image, before);
    const TempFolder folder;
    EXPECT_NE(WritePng(folder.Path(), before), "");
    for (Image const& wrong : {Image{}, Image{16384, 4097, {}}}) {
        EXPECT_NE(WritePng(folder / "none.png", wrong).find("expected at most"), std::string::npos);
    }
}

class TextureFileTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(WritePng(path_, Gradient(3, 2)), ""); }

    // The texture of the file with these members; its scene saves to the same bytes again.
    Texture& Load(std::string const& members) {
        if (!scene.Parse(R"({"version": 1, "textures": [{"name": "t", "file": ")" + path_ + "\"" + members +
                             R"(}], "root": {"children": [{"class": "Sprite", "texture": "t"}]}})",
                         backend.registry)) {
            throw std::runtime_error(scene.Error());
        }
        ExpectSavesWhatItLoads(scene, backend.registry);
        return *scene.textures[0];
    }

    TempFolder folder_;
    std::string path_ = folder_ / "texture.png";
    FakeBackend backend;
    Scene scene;
};

TEST_F(TextureFileTest, TakesItsSizeFromTheImage) {
    Texture& texture = Load("");
    EXPECT_EQ(texture.width.Get(), 3);
    EXPECT_EQ(texture.usedHeight.Get(), 2);
    ASSERT_EQ(texture.levels.Count(), 1u);
    EXPECT_EQ(texture.pixels.data[1], Gradient(3, 2).rgba[13]);  // the lower row comes first
    EXPECT_EQ(texture.pixels.data[13], Gradient(3, 2).rgba[1]);
    EXPECT_EQ(Load(R"(, "compress": true)").format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
}

TEST_F(TextureFileTest, PadsConvertsAndFilters) {
    Texture& texture = Load(R"(, "width": 8, "height": 4, "format": "rgb565", "mipmaps": true)");
    EXPECT_EQ(static_cast<FakeSprite*>(scene.root->GetChildren()[0])->textureChanges, 1);
    EXPECT_EQ(texture.usedWidth.Get(), 3);
    constexpr TextureLevel kLevels[] = {{8, 4, 0, 64}, {4, 2, 64, 16}, {2, 1, 80, 4}, {1, 1, 84, 2}};
    EXPECT_TRUE(
        std::equal(texture.levels.begin(), texture.levels.end(), std::begin(kLevels), std::end(kLevels)));
    EXPECT_EQ(texture.pixels.size, 86u);
    EXPECT_FALSE(scene.Parse(
        R"({"version": 1, "textures": [{"name": "t", "height": 1, "file": ")" + path_ + R"("}], "root": {}})",
        backend.registry));
    EXPECT_EQ(scene.Error(),
              "<memory>:1:53: /textures/0/height: got less than the image, expected at least 3x2 pixels");
}

}  // namespace
}  // namespace zorvan::test
