#include "core/image_file.h"

#include <gtest/gtest.h>

#include <fstream>

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

// libjpeg's image of 20x10 pixels of the colour (200, 100, 50), with another size in its header.
Bytes Jpeg(uint32_t width, uint32_t height = 10) {
    Bytes bytes;
    EXPECT_TRUE(DecodeBase64(
        "/9j/2wBDAAIBAQEBAQIBAQECAgICAgQDAgICAgUEBAMEBgUGBgYFBgYGBwkIBgcJBwYGCAsICQoKCgoKBggLDAsK"
        "DAkKCgr/2wBDAQICAgICAgUDAwUKBwYHCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoKCgoK"
        "CgoKCgoKCgr/wAARCAAKABQDASIAAhEBAxEB/8QAFQABAQAAAAAAAAAAAAAAAAAAAAX/xAAUEAEAAAAAAAAAAAAA"
        "AAAAAAAA/8QAFQEBAQAAAAAAAAAAAAAAAAAAAAj/xAAUEQEAAAAAAAAAAAAAAAAAAAAA/9oADAMBAAIRAxEAPwCe"
        "AldbAAD/2Q==",
        bytes));
    bytes[0x91] = static_cast<uint8_t>(height >> 8);
    bytes[0x92] = static_cast<uint8_t>(height);
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

// A size is looked at before memory is taken for it: the file must have bytes for it.
TEST(ImageFile, RefusesSizesThatAreNotInTheFile) {
    Bytes png;  // 16384x4096 pixels of one bit, with one byte of them
    ASSERT_TRUE(
        DecodeBase64("iVBORw0KGgoAAAANSUhEUgAAQAAAABAAAQAAAACiZsSeAAAACUlEQVR4nGMAAAABAAFe/335AAAAAElFTkSu"
                     "QmCC",
                     png));
    for (Bytes const& bytes : {png, Jpeg(16384, 4096)}) {
        MemoryBudget budget(1);  // the file is looked at before the budget is asked
        MemoryClaim claim(budget);
        Image image;
        EXPECT_EQ(DecodeImage(bytes, image, &claim),
                  "got " + std::to_string(bytes.size()) +
                      " bytes in the file, expected data for 16384x4096 pixels");
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

class SharedPicture : public testing::Test {
  protected:
    void SetUp() override {
        for (char const* name : {"a.png", "b.png"}) {
            ASSERT_EQ(WritePng(folder_ / name, Gradient(3, 2)), "");
        }
    }
    // A scene with textures of these members, and with a sprite for each where they are shown.
    bool Load(std::vector<std::string> const& textures, uint64_t limit, bool shown = false) {
        std::string entries, sprites;
        for (size_t i = 0; i < textures.size(); ++i) {
            const std::string name = "\"t" + std::to_string(i) + "\"", comma = i == 0 ? "" : ", ";
            entries += comma + "{\"name\": " + name + ", " + textures[i] + "}";
            sprites += shown ? comma + "{\"class\": \"Sprite\", \"texture\": " + name + "}" : "";
        }
        std::ofstream(folder_ / "scene.json") << "{\"version\": 1, \"textures\": [" << entries
                                              << "], \"root\": {\"children\": [" << sprites << "]}}";
        scene.SetMemoryLimit(limit);
        return scene.Load(folder_ / "scene.json", backend.registry);
    }
    uint8_t const* Pixels(size_t i) { return scene.textures[i]->pixels.data; }

    TempFolder folder_;
    FakeBackend backend;
    Scene scene;
};

TEST_F(SharedPicture, IsKeptOnceForTheSamePixels) {
    const std::string a = R"("file": "a.png")",
                      same =
                          R"("file": "../)" + folder_.Path().filename().string() + R"(/a.png", "width": 3)";
    ASSERT_TRUE(
        Load({a, same, R"("file": "b.png")", a + R"(, "format": "rgb565")", a + R"(, "mipmaps": true)",
              a + R"(, "width": 4)", a + R"(, "compress": true)", a + R"(, "compress": true)"},
             1 << 20))
        << scene.Error();
    EXPECT_EQ(Pixels(0), Pixels(1));
    EXPECT_EQ(Pixels(6), Pixels(7));
    EXPECT_EQ(scene.textures[7]->format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
    EXPECT_EQ(scene.textures[7]->levels[0], scene.textures[6]->levels[0]);
    for (size_t i : {2, 3, 4, 5, 6}) {
        EXPECT_NE(Pixels(0), Pixels(i)) << i;
    }
    // One that is changed, and one that gives its pixels to the device, leave the other's.
    Texture& second = *scene.textures[1];
    ASSERT_TRUE(second.OwnPixels());
    second.pixels.data[0] ^= 0xFF;
    EXPECT_EQ(Pixels(0)[0], second.pixels.data[0] ^ 0xFF);
    scene.textures[7]->ReleasePixelStore();
    EXPECT_EQ(scene.textures[6]->pixels.size, 16u);
}

// Of 256 KiB each; the limit has room for one, and for its padding while it is made.
TEST_F(SharedPicture, CountsInTheMemoryLimitOnceAndOnTheDeviceEachTime) {
    std::vector<std::string> equal(9, R"("file": "a.png", "width": 256, "height": 256)"), different = equal;
    for (size_t i = 0; i < different.size(); ++i) {
        different[i] = R"("file": "a.png", "width": 256, "height": )" + std::to_string(256 - i);
    }
    constexpr uint64_t kLimit = 1 << 20;
    EXPECT_TRUE(Load(equal, kLimit)) << scene.Error();
    const struct {
        std::vector<std::string> const& textures;
        bool shown;
        char const* error;
    } rows[] = {{different, false, "/textures/3: got 259072 bytes for 256x253 pixels"},
                {equal, true, "/root/children/4/texture: got 262144 bytes for a texture on the device"}};
    for (auto const& row : rows) {
        EXPECT_FALSE(Load(row.textures, kLimit, row.shown));
        EXPECT_TRUE(scene.IsMemoryError());
        EXPECT_NE(scene.Error().find(row.error), std::string::npos) << scene.Error();
    }
    EXPECT_TRUE(Load(different, 4 * kLimit, true)) << scene.Error();
}

}  // namespace
}  // namespace zorvan::test
