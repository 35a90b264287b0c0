// Upload and compression of textures.
#include "objects/texture.h"

#include <GLES2/gl2.h>
#include <gtest/gtest.h>

#include "tests/plugin/fixture.h"
#include "texconv/qonvert.h"

namespace zorvan {
namespace {

class TextureTest : public RecordedTest {
  protected:
    static Lines StateLines(std::string const& name, std::string const& filter) {
        return {"glGenTextures(1, *)",
                "glBindTexture(GL_TEXTURE_2D, " + name + ")",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, " + filter + ")",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, " + filter + ")",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)"};
    }
};

TEST_F(TextureTest, UploadOfEachFormat) {
    struct Case {
        uint32_t format;
        char const* upload;  // after the target and level
        size_t bytes;
    };
    const Case cases[] = {
        {0, "GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_SHORT_5_6_5, *)", 16},
        {1, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_SHORT_5_5_5_1, *)", 16},
        {2, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4, *)", 16},
        {4, "GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, *)", 24},
        {5, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
        {6, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
        {7, "GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, *)", 32},
        {8, "0x8C92, 4, 2, 0, 8, *)", 8},
        {9, "0x8C93, 4, 2, 0, 16, *)", 16},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.format);
        recording_gl::Reset();
        RefT<TextureGL> texture = MakeTexture(c.format, 4, 2);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        Lines expected = StateLines("201", "GL_LINEAR");
        AppendLines(expected, {std::string(c.format < 8 ? "glTexImage2D" : "glCompressedTexImage2D") +
                                   "(GL_TEXTURE_2D, 0, " + c.upload,
                               "glGetError()"});
        std::vector<uint8_t> pixels;
        Lines lines;
        for (recording_gl::Call& call : recording_gl::TakeCalls()) {
            pixels.insert(pixels.end(), call.bytes.begin(), call.bytes.end());
            lines.push_back(call.text);
        }
        EXPECT_EQ(lines, expected);
        ASSERT_EQ(pixels.size(), c.bytes);
        EXPECT_EQ(pixels.back(), c.bytes - 1);
        // The memory copy is gone: a released texture cannot come back.
        EXPECT_EQ(texture->pixels.data, nullptr);
        EXPECT_EQ(texture->pixels.size, 0u);
        texture->ReleaseGLTexture();
        EXPECT_EQ(texture->GetGLTexture(), 0u);
        EXPECT_FALSE(texture->CreateGLTexture());
        texture = {};
        EXPECT_EQ(Taken(), Lines{"glDeleteTextures(1, 201)"});
    }
}

TEST_F(TextureTest, LevelsAndTightRows) {
    RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgb888, 8, 4, 3);
    EXPECT_TRUE(texture->CreateGLTexture());
    Lines expected = StateLines("201", "GL_LINEAR_MIPMAP_LINEAR");
    // Only the last level's rows of 6 bytes would be padded.
    AppendLines(expected, {"glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, *)",
                           "glGetError()",
                           "glTexImage2D(GL_TEXTURE_2D, 1, GL_RGB, 4, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, *)",
                           "glGetError()", "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)",
                           "glTexImage2D(GL_TEXTURE_2D, 2, GL_RGB, 2, 1, 0, GL_RGB, GL_UNSIGNED_BYTE, *)",
                           "glPixelStorei(GL_UNPACK_ALIGNMENT, 4)", "glGetError()"});
    std::vector<uint8_t> firsts;
    Lines lines;
    for (recording_gl::Call& call : recording_gl::TakeCalls()) {
        if (!call.bytes.empty()) {
            firsts.push_back(call.bytes[0]);
        }
        lines.push_back(call.text);
    }
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(firsts, (std::vector<uint8_t>{0, 96, 120}));
}

TEST_F(TextureTest, FormatsThatCannotBeUploaded) {
    for (const uint32_t format : {3u, 10u, 0xFFFFFFFFu}) {
        recording_gl::Reset();
        RefT<TextureGL> texture = MakeTexture(format, 4, 2);
        EXPECT_FALSE(texture->CreateGLTexture());
        // The name stays, and so do the pixels.
        EXPECT_EQ(texture->GetGLTexture(), 201u);
        EXPECT_NE(texture->pixels.data, nullptr);
        EXPECT_EQ(Taken(), StateLines("201", "GL_LINEAR"));
    }
}

TEST_F(TextureTest, ErrorsOfAnUploadAreCleared) {
    recording_gl::script.errors["glCompressedTexImage2D"] = {GL_INVALID_ENUM};
    RefT<TextureGL> texture = MakeTexture(TextureFormat::AtcRgb, 4, 4);
    EXPECT_TRUE(texture->CreateGLTexture());
    EXPECT_EQ(texture->pixels.data, nullptr);
}

// The store's owner is let go, and its memory is not freed.
TEST_F(TextureTest, OwnedPixels) {
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
    EXPECT_TRUE(Taken().empty());
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
        std::vector<uint8_t> before(texture->pixels.data, texture->pixels.data + texture->pixels.size);
        EXPECT_EQ(texture->Compress(), c.source != kNone);
        EXPECT_EQ(texture->format.Get(), c.newFormat);
        const std::vector<uint8_t> after(texture->pixels.data, texture->pixels.data + texture->pixels.size);
        if (c.source == kNone) {
            EXPECT_EQ(after, before);
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
        EXPECT_EQ(after, expected);

        texture->GetGLTexture();
        EXPECT_EQ(recording_gl::Calls().end()[-2].text,
                  std::string("glCompressedTexImage2D(GL_TEXTURE_2D, 0, ") +
                      (c.newFormat == 8 ? "0x8C92, 8, 8, 0, 32, *)" : "0x8C93, 8, 8, 0, 64, *)"));
    }
    TextureGL empty;
    EXPECT_FALSE(empty.Compress());
    EXPECT_EQ(empty.format.Get(), 6u);
}

}  // namespace
}  // namespace zorvan
