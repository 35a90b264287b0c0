// An independent decoder: the GL driver samples our ETC1, ATI1N (as RGTC1) and ATI2N (as RGTC2 with its
// halves swapped) blocks.
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>
#include <GLES2/gl2ext.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iostream>

#include "codec_calls.h"

namespace zorvan::texcompress {
namespace {

constexpr uint32_t kSize = 256;

GLuint Compile(GLenum kind, const char* source) {
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    return shader;
}

/// A context without a surface that draws one texture, pixel by pixel, into a frame buffer of its size.
class MesaTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto getDisplay =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (getDisplay != nullptr) {
            display_ = getDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        }
        if (display_ == EGL_NO_DISPLAY || eglInitialize(display_, nullptr, nullptr) == EGL_FALSE) {
            GTEST_SKIP() << "no EGL display without a window system";
        }
        const EGLint attributes[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
        eglBindAPI(EGL_OPENGL_ES_API);
        context_ = eglCreateContext(display_, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
        if (context_ == EGL_NO_CONTEXT ||
            eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_FALSE) {
            GTEST_SKIP() << "no GLES context without a surface";
        }
        MakeTarget();
        MakeProgram();
    }

    // The display stays initialized: once the driver's library is unloaded, what it keeps for the life of
    // the process would look like a leak.
    void TearDown() override {
        if (context_ != EGL_NO_CONTEXT) {
            eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglDestroyContext(display_, context_);
        }
    }

    static bool HasExtension(const char* name) {
        return std::strstr(reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS)), name) != nullptr;
    }

    /// The pixels R, G, B, A of a kSize x kSize texture as the driver sees them.
    static std::vector<uint8_t> Sample(GLenum format, const std::vector<uint8_t>& blocks) {
        GLuint texture;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glCompressedTexImage2D(GL_TEXTURE_2D, 0, format, kSize, kSize, 0, static_cast<GLsizei>(blocks.size()),
                               blocks.data());
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        std::vector<uint8_t> pixels(size_t{4} * kSize * kSize);
        glReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        glDeleteTextures(1, &texture);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        return pixels;
    }

  private:
    static void MakeTarget() {
        GLuint target;
        GLuint framebuffer;
        glGenTextures(1, &target);
        glBindTexture(GL_TEXTURE_2D, target);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kSize, kSize, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
        ASSERT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, kSize, kSize);
        glDisable(GL_DITHER);
    }

    static void MakeProgram() {
        static constexpr float kCorners[] = {0, 0, 1, 0, 0, 1, 1, 1};
        const GLuint program = glCreateProgram();
        glAttachShader(program,
                       Compile(GL_VERTEX_SHADER,
                               "attribute vec2 corner; varying vec2 at;"
                               "void main() { at = corner; gl_Position = vec4(2.0 * corner - 1.0, 0, 1); }"));
        glAttachShader(program, Compile(GL_FRAGMENT_SHADER,
                                        "precision highp float; varying vec2 at; uniform sampler2D image;"
                                        "void main() { gl_FragColor = texture2D(image, at); }"));
        glBindAttribLocation(program, 0, "corner");
        glLinkProgram(program);
        glUseProgram(program);
        glEnableVertexAttribArray(0);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kCorners);
    }

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
};

/// Our encoder's blocks of natural and hard images, and random blocks.
std::vector<std::vector<uint8_t>> MakeBlocks(const EncoderCase& encoder) {
    std::vector<TestImage> images = NaturalImages(kSize);
    images.push_back(CorpusImage(kSize, kSize));
    std::vector<std::vector<uint8_t>> sets;
    for (const TestImage& image : images) {
        uint32_t status;
        sets.push_back(Encode(encoder, image, status));
    }
    Lcg random(4);
    sets.emplace_back(sets.back().size());
    for (uint8_t& byte : sets.back()) {
        byte = static_cast<uint8_t>(random.Next(256));
    }
    return sets;
}

const TestImage kShape{"", kSize, kSize, {}};

const EncoderCase& CaseOf(const char* name) {
    return *std::find_if(kEncoderCases.begin(), kEncoderCases.end(),
                         [name](const EncoderCase& encoder) { return std::strcmp(encoder.name, name) == 0; });
}

TEST_F(MesaTest, Etc1IsSampledExactly) {
    if (!HasExtension("GL_OES_compressed_ETC1_RGB8_texture")) {
        GTEST_SKIP() << "the driver has no ETC1";
    }
    const EncoderCase& encoder = CaseOf("ETC1");
    for (const std::vector<uint8_t>& blocks : MakeBlocks(encoder)) {
        const std::vector<uint8_t> ours = Decode(encoder, kShape, blocks);
        const std::vector<uint8_t> theirs = Sample(GL_ETC1_RGB8_OES, blocks);
        size_t different = 0;
        for (size_t i = 0; i < size_t{kSize} * kSize; ++i) {
            different += !std::equal(&ours[3 * i], &ours[3 * i] + 3, &theirs[4 * i]);
        }
        EXPECT_EQ(different, 0u);
    }
}

/// How far the driver's values of one channel are from ours.
struct Deviation {
    size_t exact = 0;         ///< pixels whose index stands for an end value or a fixed 0 or 255
    size_t exactWrong = 0;    ///< those of them that differ
    size_t interpolated = 0;  ///< all other pixels
    int largest = 0;          ///< the largest difference of an interpolated value

    void Compare(const uint8_t* block, uint32_t k, int ours, int theirs) {
        uint64_t bits = 0;
        std::memcpy(&bits, block, 8);
        const auto index = static_cast<uint32_t>(bits >> (16 + 3 * k) & 7);
        if (index < 2 || (block[0] <= block[1] && index > 5)) {
            ++exact;
            exactWrong += ours != theirs;
        } else {
            ++interpolated;
            largest = std::max(largest, std::abs(ours - theirs));
        }
    }
};

/// Swaps the two 8-byte halves of each 16-byte block.
std::vector<uint8_t> HalvesSwapped(std::vector<uint8_t> blocks) {
    for (size_t i = 0; i < blocks.size(); i += 16) {
        std::swap_ranges(&blocks[i], &blocks[i] + 8, &blocks[i] + 8);
    }
    return blocks;
}

TEST_F(MesaTest, ThreeDcIsSampledAsRgtc) {
    if (!HasExtension("GL_EXT_texture_compression_rgtc")) {
        GTEST_SKIP() << "the driver has no RGTC";
    }
    for (const bool twoChannels : {false, true}) {
        const EncoderCase& encoder = CaseOf(twoChannels ? "ATI2N" : "ATI1N");
        const size_t blockBytes = twoChannels ? 16 : 8;
        Deviation deviation;
        for (const std::vector<uint8_t>& blocks : MakeBlocks(encoder)) {
            const std::vector<uint8_t> ours = Decode(encoder, kShape, blocks);
            const std::vector<uint8_t> theirs =
                twoChannels ? Sample(GL_COMPRESSED_RED_GREEN_RGTC2_EXT, HalvesSwapped(blocks))
                            : Sample(GL_COMPRESSED_RED_RGTC1_EXT, blocks);
            for (uint32_t i = 0; i < kSize * kSize; ++i) {
                const uint32_t x = i % kSize;
                const uint32_t y = i / kSize;
                const uint8_t* block = &blocks[(y / 4 * (kSize / 4) + x / 4) * blockBytes];
                const uint32_t k = y % 4 * 4 + x % 4;
                const auto equalEnds = [](const uint8_t* half) { return half[0] == half[1]; };
                // Channel 0 is the last half. Blocks with equal ends differ by design: here, the indices
                // do not count.
                for (size_t channel = 0; channel < blockBytes / 8; ++channel) {
                    const uint8_t* half = block + blockBytes - 8 - 8 * channel;
                    if (!equalEnds(half)) {
                        deviation.Compare(half, k, ours[3 * i + channel], theirs[4 * i + channel]);
                    }
                }
            }
        }
        std::cout << encoder.name << ": " << deviation.exact << " end and fixed values, "
                  << deviation.exactWrong << " differ; " << deviation.interpolated
                  << " interpolated values, largest difference " << deviation.largest << '\n';
        EXPECT_EQ(deviation.exactWrong, 0u);
        EXPECT_LE(deviation.largest, 2);
        EXPECT_GT(deviation.interpolated, 100000u);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
