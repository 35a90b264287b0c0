// Upload and compression of textures.
#include "objects/texture.h"

#include "tests/plugin/fixture.h"
#include "texconv/qonvert.h"

namespace zorvan {
namespace {

class TextureTest : public RecordedTest {
  protected:
    static std::vector<uint8_t> Bytes(Texture const& texture) {
        return {texture.pixels.data, texture.pixels.data + texture.pixels.size};
    }
    static std::string Created(std::string const& filter) {
        return Calls(
            "GenTextures(1, *); BindTexture(TEXTURE_2D, 201); TexParameteri(TEXTURE_2D, TEXTURE_MIN_FILTER, "
            "$); TexParameteri(TEXTURE_2D, TEXTURE_MAG_FILTER, $); TexParameteri(TEXTURE_2D, TEXTURE_WRAP_S, "
            "CLAMP_TO_EDGE); TexParameteri(TEXTURE_2D, TEXTURE_WRAP_T, CLAMP_TO_EDGE)",
            filter);
    }
};

TEST_F(TextureTest, UploadOfEachFormat) {
    // Empty where GL does not take the format: then the name stays, and so do the pixels.
    char const* const uploads[] = {"TexImage2D; RGB, 4, 2, 0, RGB, UNSIGNED_SHORT_5_6_5, *)",
                                   "TexImage2D; RGBA, 4, 2, 0, RGBA, UNSIGNED_SHORT_5_5_5_1, *)",
                                   "TexImage2D; RGBA, 4, 2, 0, RGBA, UNSIGNED_SHORT_4_4_4_4, *)",
                                   "",
                                   "TexImage2D; RGB, 4, 2, 0, RGB, UNSIGNED_BYTE, *)",
                                   "TexImage2D; RGBA, 4, 2, 0, RGBA, UNSIGNED_BYTE, *)",
                                   "TexImage2D; RGBA, 4, 2, 0, RGBA, UNSIGNED_BYTE, *)",
                                   "TexImage2D; RGBA, 4, 2, 0, RGBA, UNSIGNED_BYTE, *)",
                                   "CompressedTexImage2D; 0x8C92, 4, 2, 0, 8, *)",
                                   "CompressedTexImage2D; 0x8C93, 4, 2, 0, 16, *)",
                                   ""};
    for (uint32_t format = 0; format < std::size(uploads); ++format) {
        SCOPED_TRACE(format);
        recording_gl::Reset();
        const std::string upload = uploads[format];
        RefT<TextureGL> texture = MakeTexture(format, 4, 2);
        const std::vector<uint8_t> pixels = Bytes(*texture);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        const std::string data = std::to_string(pixels.size()) + "@0";
        EXPECT_EQ(
            TakeLog(),
            Created("LINEAR") +
                (upload.empty() ? ""
                                : "\n" + Replaced(Replaced(upload, "; ", "(TEXTURE_2D, 0, "), "*", data) +
                                      "\nGetError()"));
        EXPECT_TRUE(!upload.empty() || Bytes(*texture) == pixels);
        EXPECT_FALSE(texture->CreateGLTexture());
        TakeLog();
        if (!upload.empty()) {
            // The memory copy is gone: a released texture cannot come back.
            EXPECT_EQ(Bytes(*texture), std::vector<uint8_t>());
            texture->ReleaseGLTexture();
            EXPECT_EQ(texture->GetGLTexture(), 0u);
            EXPECT_FALSE(texture->Compress());
            EXPECT_EQ(texture->format.Get(), format);
        }
        texture = {};
        EXPECT_EQ(TakeLog(), upload.empty() ? "DeleteTextures(1, 202)" : "DeleteTextures(1, 201)");
    }
}

// The bytes are the converter's own; formats that are not compressed stay.
TEST_F(TextureTest, CompressionOfEachFormat) {
    constexpr std::array<uint32_t, 3> kConversions[] = {
        {3, 21, 8}, {4, 20, 9}, {5, 20, 9}, {}, {2, 21, 8}, {}, {1, 20, 9}, {}, {}, {}, {}};
    for (uint32_t format = 0; format < std::size(kConversions); ++format) {
        SCOPED_TRACE(format);
        auto const& [from, to, compressed] = kConversions[format];
        const RefT<TextureGL> texture = MakeTexture(format, 8, 8);
        std::vector<uint8_t> before = Bytes(*texture), expected = before;
        if (from != 0) {
            expected.resize(compressed == 8 ? 32 : 64);
            TQonvertImage source{8, 8, from, nullptr, static_cast<uint32_t>(before.size()), before.data()};
            TQonvertImage destination{
                8, 8, to, nullptr, static_cast<uint32_t>(expected.size()), expected.data()};
            Qonvert(&source, &destination);
        }
        EXPECT_EQ(texture->Compress(), from != 0);
        EXPECT_EQ(texture->format.Get(), from != 0 ? compressed : format);
        EXPECT_EQ(Bytes(*texture), expected);
        texture->format.Set(format);  // the plain levels are gone with their pixels
        texture->format.Set(from != 0 ? compressed : format);
        texture->GetGLTexture();
        const std::string uploaded = ", 8, 8, 0, " + std::to_string(expected.size()) + ", ";
        EXPECT_TRUE(from == 0 || TakeLog().find(uploaded) != std::string::npos);
    }
}

// Only the last level's rows of 6 bytes would be padded. An error of GL is no failure.
TEST_F(TextureTest, LevelsAndTightRows) {
    script.errors["TexImage2D"] = {GL_INVALID_ENUM};
    const RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgb888, 8, 4, 3),
                          whole = MakeTexture(TextureFormat::Rgba8888, 4, 2, 2);
    EXPECT_TRUE(texture->CreateGLTexture());
    EXPECT_EQ(TakeLog(), Created("LINEAR_MIPMAP_LINEAR") +
                             Calls("; TexImage2D(TEXTURE_2D, 0, RGB, 8, 4, 0, $, 96@0); GetError(); "
                                   "TexImage2D(TEXTURE_2D, 1, RGB, 4, 2, 0, $, 24@96); GetError(); "
                                   "PixelStorei(UNPACK_ALIGNMENT, 1); TexImage2D(TEXTURE_2D, 2, RGB, 2, 1, "
                                   "0, $, 6@120); PixelStorei(UNPACK_ALIGNMENT, 4); GetError()",
                                   "RGB, UNSIGNED_BYTE"));
    whole->CreateGLTexture();
    const std::string uploads = TakeLog();
    EXPECT_NE(uploads.find("MIN_FILTER, LINEAR_MIPMAP_LINEAR"), std::string::npos);
    EXPECT_EQ(uploads.find("PixelStorei"), std::string::npos);
}

// The store's owner is let go, and its memory is not freed.
TEST_F(TextureTest, OwnedPixels) {
    static uint8_t pixels[16];
    const RefT<Referenced> owner(new Mask);
    TextureGL texture;
    texture.levels.Append({2, 2, 0, 16});
    texture.pixels = {pixels, 16, owner.Get()};
    Retain(owner.Get());
    EXPECT_TRUE(texture.CreateGLTexture());
    EXPECT_EQ(Bytes(texture), std::vector<uint8_t>());
    EXPECT_EQ(texture.pixels.owner, nullptr);
    EXPECT_EQ(owner->references, 1);
}

}  // namespace
}  // namespace zorvan
