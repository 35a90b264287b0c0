// An independent decoder: the GL driver samples our ETC1, ATI1N (as RGTC1) and ATI2N (as RGTC2 with its
// halves swapped) blocks.
#include <GLES2/gl2.h>
#include <GLES2/gl2ext.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "codec_calls.h"
#include "tests/pixels/surface.h"
#include "tests/pixels/textured_quad.h"

namespace zorvan::texcompress {
namespace {

constexpr uint32_t kSize = 256;

// Draws one texture, pixel by pixel, onto a surface of its size.
class Mesa : public ::testing::Test {
  protected:
    void SetUp() override {
        if (surface_ == nullptr) {
            GTEST_SKIP() << "no surface without a window system";
        }
        SetUpTexturedQuad();
    }

    // The pixels R, G, B, A of a kSize x kSize texture as the driver sees them.
    static std::vector<uint8_t> Sample(GLenum format, const std::vector<uint8_t>& blocks) {
        const GLuint texture = BindNewTexture();
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
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
    std::unique_ptr<Surface> surface_ = Surface::Make(kSize, kSize, {8, 8, 8, 8});
};

// Our encoder's blocks of natural and hard images, and random blocks.
std::vector<std::vector<uint8_t>> BlocksOf(const Codec& codec) {
    std::vector<std::vector<uint8_t>> sets;
    for (const TestImage& image : NaturalImages(kSize)) {
        sets.push_back(Encode(codec, SourceOf(image)));
    }
    sets.push_back(Encode(codec, SourceOf(CorpusImage(kSize, kSize))));
    Lcg random(4);
    sets.emplace_back(sets.back().size());
    for (uint8_t& byte : sets.back()) {
        byte = static_cast<uint8_t>(random.Next(256));
    }
    return sets;
}

TEST_F(Mesa, SamplesEtc1Exactly) {
    const Codec codec{Entry::kTxCompress, TXC_FORMAT_ETC1, 0};
    for (const std::vector<uint8_t>& blocks : BlocksOf(codec)) {
        const std::vector<uint8_t> ours = Decode(codec, kSize, kSize, blocks);
        std::vector<uint8_t> theirs;
        const std::vector<uint8_t> sampled = Sample(GL_ETC1_RGB8_OES, blocks);
        for (size_t i = 0; i < sampled.size(); i += 4) {
            theirs.insert(theirs.end(), &sampled[i], &sampled[i] + 3);
        }
        EXPECT_TRUE(ours == theirs);
    }
}

TEST_F(Mesa, SamplesThreeDcAsRgtc) {
    for (const size_t channels : {1u, 2u}) {
        const Codec codec{Entry::kTxCompress, channels == 2 ? TXC_FORMAT_ATI2N : TXC_FORMAT_ATI1N, 0};
        size_t equal = 0;
        size_t others = 0;
        for (std::vector<uint8_t>& blocks : BlocksOf(codec)) {
            const std::vector<uint8_t> ours = Decode(codec, kSize, kSize, blocks);
            // Theirs has channel 0 in the first half.
            for (size_t i = 0; channels == 2 && i < blocks.size(); i += 16) {
                std::swap_ranges(&blocks[i], &blocks[i] + 8, &blocks[i] + 8);
            }
            const std::vector<uint8_t> theirs = Sample(
                channels == 2 ? GL_COMPRESSED_RED_GREEN_RGTC2_EXT : GL_COMPRESSED_RED_RGTC1_EXT, blocks);
            for (uint32_t i = 0; i < kSize * kSize; ++i) {
                const size_t block = i / kSize / 4 * (kSize / 4) + i % kSize / 4;
                for (size_t c = 0; c < channels; ++c) {
                    const uint8_t* ends = &blocks[8 * (block * channels + c)];
                    if (ends[0] == ends[1]) {
                        continue;  // differs by design: here, the indices do not count
                    }
                    const int difference = std::abs(ours[3 * i + c] - theirs[4 * i + c]);
                    ASSERT_LE(difference, 2);
                    ++(difference == 0 ? equal : others);
                }
            }
        }
        std::cout << channels << " channels: " << equal << " values equal, " << others << " within 2\n";
        EXPECT_GT(equal, others);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
