// An independent reader: the GL driver samples our KTX1 files, loaded as their own headers say.
#include <GLES2/gl2.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/pixels/surface.h"
#include "tests/pixels/textured_quad.h"
#include "tests/qonvert/samples.h"
#include "tools/qonvert/transform.h"

namespace qonvert {
namespace {

constexpr int kSide = 16;

// Gives a whole file to GL, with the fields of its header and rows padded to 4 bytes, GL's default.
void Upload(const Bytes& file) {
    const auto word = [&](std::size_t at) {
        std::uint32_t value = 0;
        std::memcpy(&value, file.data() + at, 4);
        return value;
    };
    const std::uint32_t type = word(16), layout = word(24), internal = word(28), levels = word(56);
    const auto width = static_cast<GLsizei>(word(36)), height = static_cast<GLsizei>(word(40));
    std::size_t at = 64 + word(60);
    for (std::uint32_t i = 0; i < levels; ++i) {
        const auto size = static_cast<GLsizei>(word(at));
        const auto level = static_cast<GLint>(i);
        if (type == 0) {
            glCompressedTexImage2D(GL_TEXTURE_2D, level, internal, width >> i, height >> i, 0, size,
                                   &file[at + 4]);
        } else {
            glTexImage2D(GL_TEXTURE_2D, level, static_cast<GLint>(layout), width >> i, height >> i, 0, layout,
                         type, &file[at + 4]);
        }
        at += 4 + static_cast<std::size_t>(size);
    }
    EXPECT_EQ(at, file.size());
}

TEST(Mesa, SamplesEveryLevelOfOurKtx) {
    const auto surface = zorvan::Surface::Make(kSide, kSide, {8, 8, 8, 8});
    if (surface == nullptr) {
        GTEST_SKIP() << "no EGL surface";
    }
    zorvan::SetUpTexturedQuad();
    const struct {
        std::uint32_t format;
        const char* extension;  // that the driver needs, "" for none
        std::size_t channels;   // that both define
        int error;              // RGTC interpolates with the driver's own rounding
    } rows[] = {
        {FMT_RGBA8888, "", 4, 0},
        {FMT_RGB888, "", 4, 0},
        {FMT_RGB565, "", 4, 0},
        {FMT_RGBA5551, "", 4, 0},
        {FMT_RGBA4444, "", 4, 0},
        {FMT_LA88, "", 4, 0},
        {FMT_L8, "", 4, 0},
        {FMT_BGRA8888, "GL_EXT_texture_format_BGRA8888", 4, 0},
        {FMT_ETC1_RGB8, "GL_OES_compressed_ETC1_RGB8_texture", 4, 0},
        {FMT_3DC_X, "GL_EXT_texture_compression_rgtc", 1, 2},
        {FMT_3DC_XY, "GL_EXT_texture_compression_rgtc", 2, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(QXTextureConverter::FindFormat(row.format)->name);
        if (std::strstr(reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS)), row.extension) ==
            nullptr) {
            continue;
        }
        const Recipe recipe{.format = row.format, .width = kSide, .height = kSide, .levels = UINT32_MAX};
        const TextureFile texture = Transform(NoiseTexture(FMT_RGBA8888, kSide, kSide), recipe).texture;
        const GLuint name = zorvan::BindNewTexture();
        Upload(WriteContainer(*FindContainer("ktx"), texture, {}));
        for (std::uint32_t i = 0; i < texture.levels.size(); ++i) {
            const std::uint32_t side = kSide >> i;
            const Bytes ours =
                ConvertPicture({row.format, side, side, texture.levels[i]}, FMT_RGBA8888, side, side);
            glClear(GL_COLOR_BUFFER_BIT);
            glViewport(0, 0, static_cast<GLsizei>(side), static_cast<GLsizei>(side));
            glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
            surface->Read();
            int largest = 0;
            for (std::size_t at = 0; at < ours.size(); ++at) {
                const auto x = static_cast<int>(at / 4 % side), y = static_cast<int>(at / 4 / side);
                const int theirs = surface->At(x, kSide - 1 - y)[at % 4];  // GL's first row is the bottom one
                largest = std::max(largest, at % 4 < row.channels ? std::abs(theirs - ours[at]) : 0);
            }
            EXPECT_LE(largest, row.error) << "level " << i;
        }
        glDeleteTextures(1, &name);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

}  // namespace
}  // namespace qonvert
