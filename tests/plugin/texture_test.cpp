// Upload and compression of textures.
#include "objects/texture.h"

#include <GLES2/gl2.h>

#include "tests/plugin/fixture.h"
#include "texconv/qonvert.h"

namespace zorvan {
namespace {

class TextureTest : public RecordedTest {
  protected:
    static std::string State(std::string const& filter) {
        return Calls(
            Replaced("glGenTextures(1, *); glBindTexture(GL_TEXTURE_2D, 201); "
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, $f); "
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, $f); "
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE); "
                     "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                     "$f", filter));
    }
};

TEST_F(TextureTest, UploadOfEachFormat) {
    struct Case {
        uint32_t format;
        char const* upload;  // after the target and level
        size_t bytes;
    };
    for (Case const& c : {Case{0, "GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_SHORT_5_6_5, *)", 16},
                          {1, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_SHORT_5_5_5_1, *)", 16},
                          {2, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4, *)", 16},
                          {4, "GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, *)", 24},
                          {5, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
                          {6, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
                          {7, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
                          {8, "0x8C92, 4, 2, 0, 8, *)", 8},
                          {9, "0x8C93, 4, 2, 0, 16, *)", 16}}) {
        SCOPED_TRACE(c.format);
        recording_gl::Reset();
        RefT<TextureGL> texture = MakeTexture(c.format, 4, 2);
        const std::vector<uint8_t> pixels = Bytes(*texture);
        EXPECT_EQ(pixels.size(), c.bytes);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        const std::vector<recording_gl::Call> calls = recording_gl::TakeCalls();
        EXPECT_EQ(TextsOf(calls), State("GL_LINEAR") +
                                      (c.format < 8 ? "\nglTexImage2D" : "\nglCompressedTexImage2D") +
                                      "(GL_TEXTURE_2D, 0, " + c.upload + "\nglGetError()");
        EXPECT_EQ(calls[calls.size() - 2].bytes, pixels);
        // The memory copy is gone: a released texture cannot come back.
        EXPECT_EQ(texture->pixels.data, nullptr);
        EXPECT_EQ(texture->pixels.size, 0u);
        texture->ReleaseGLTexture();
        EXPECT_EQ(texture->GetGLTexture(), 0u);
        EXPECT_FALSE(texture->CreateGLTexture());
        texture = {};
        EXPECT_EQ(Taken(), "glDeleteTextures(1, 201)");
    }
}

// Only the last level's rows of 6 bytes would be padded.
TEST_F(TextureTest, LevelsAndTightRows) {
    RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgb888, 8, 4, 3);
    EXPECT_TRUE(texture->CreateGLTexture());
    std::vector<uint8_t> firsts;
    for (recording_gl::Call const& call : recording_gl::Calls()) {
        firsts.insert(firsts.end(), call.bytes.begin(), call.bytes.begin() + !call.bytes.empty());
    }
    EXPECT_EQ(firsts, (std::vector<uint8_t>{0, 96, 120}));
    EXPECT_EQ(Taken(),
              State("GL_LINEAR_MIPMAP_LINEAR") +
                  Calls("; glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, *); "
                        "glGetError(); "
                        "glTexImage2D(GL_TEXTURE_2D, 1, GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, *); "
                        "glGetError(); glPixelStorei(GL_UNPACK_ALIGNMENT, 1); "
                        "glTexImage2D(GL_TEXTURE_2D, 2, GL_RGB, 2, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, *); "
                        "glPixelStorei(GL_UNPACK_ALIGNMENT, 4); glGetError()"));
}

TEST_F(TextureTest, FormatsThatCannotBeUploaded) {
    for (const uint32_t format : {3u, 10u, 0xFFFFFFFFu}) {
        recording_gl::Reset();
        RefT<TextureGL> texture = MakeTexture(format, 4, 2);
        EXPECT_FALSE(texture->CreateGLTexture());
        // The name stays, and so do the pixels.
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        EXPECT_NE(texture->pixels.data, nullptr);
        EXPECT_EQ(Taken(), State("GL_LINEAR"));
    }
}

// The store's owner is let go, and its memory is not freed. An error of GL is no failure.
TEST_F(TextureTest, OwnedPixels) {
    script.errors["glTexImage2D"] = {GL_INVALID_ENUM};
    static uint8_t pixels[16];
    RefT<Referenced> owner(new Mask);
    RefT<TextureGL> texture(new TextureGL);
    texture->levels.Append({2, 2, 0, 16});
    texture->pixels = {pixels, 16, owner.Get()};
    Retain(owner.Get());
    EXPECT_TRUE(texture->CreateGLTexture());
    EXPECT_EQ(texture->pixels.data, nullptr);
    EXPECT_EQ(texture->pixels.owner, nullptr);
    EXPECT_EQ(owner->references, 1);
}

TEST_F(TextureTest, WithoutPixelsNothingIsCalled) {
    TextureGL texture;
    EXPECT_FALSE(texture.CreateGLTexture());
    EXPECT_EQ(texture.GetGLTexture(), 0u);
    texture.ReleaseGLTexture();
    EXPECT_FALSE(texture.Compress());
    EXPECT_EQ(texture.format.Get(), 6u);
    EXPECT_EQ(Taken(), "");
}

TEST_F(TextureTest, Compression) {
    struct Case {
        uint32_t format, source, destination, newFormat;
    };
    constexpr uint32_t kNone = 0;
    constexpr Case kCases[] = {{0, 3, 21, 8},    {1, 4, 20, 9},    {2, 5, 20, 9},     {3, kNone, 0, 3},
                               {4, 2, 21, 8},    {5, kNone, 0, 5}, {6, 1, 20, 9},     {7, kNone, 0, 7},
                               {8, kNone, 0, 8}, {9, kNone, 0, 9}, {10, kNone, 0, 10}};
    for (Case const& c : kCases) {
        SCOPED_TRACE(c.format);
        RefT<TextureGL> texture = MakeTexture(c.format, 8, 8);
        std::vector<uint8_t> before = Bytes(*texture);
        EXPECT_EQ(texture->Compress(), c.source != kNone);
        EXPECT_EQ(texture->format.Get(), c.newFormat);
        if (c.source == kNone) {
            EXPECT_EQ(Bytes(*texture), before);
            continue;
        }
        // The bytes are the converter's own.
        TQonvertImage source{};
        source.nWidth = source.nHeight = 8;
        source.nFormat = c.source;
        source.nDataSize = static_cast<uint32_t>(before.size());
        source.pData = before.data();
        std::vector<uint8_t> expected(c.newFormat == 8 ? 32 : 64);
        TQonvertImage destination = source;
        destination.nFormat = c.destination;
        destination.nDataSize = static_cast<uint32_t>(expected.size());
        destination.pData = expected.data();
        Qonvert(&source, &destination);
        EXPECT_EQ(Bytes(*texture), expected);
        texture->GetGLTexture();
        EXPECT_TRUE(Taken().ends_with(c.newFormat == 8 ? ", 0, 0x8C92, 8, 8, 0, 32, *)\nglGetError()"
                                                       : ", 0, 0x8C93, 8, 8, 0, 64, *)\nglGetError()"));
    }
}

}  // namespace
}  // namespace zorvan
