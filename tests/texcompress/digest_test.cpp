// The promised bytes: digests of each encoder's blocks over a hard corpus and of what they decode to.
// They are the same for every compiler, optimization level and CPU.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>

#include "codec_calls.h"
#include "texcompress/block_kernels.h"
#include "texcompress/etc1_quantize.h"

namespace zorvan::texcompress {
namespace {

// Blocks, then pixels; in the order of kEncoderCases.
constexpr std::array<const char*, kEncoderCases.size()> kDigests = {
    "516b05e96486b7d0 875efcf2ee1bff51", "d44acf20898e2790 4ffc0147ebd7e318",
    "c2ab6012d2e70eb7 b95ff5752a0b4f44", "1722b80893c83893 a237b78d6ba12c5b",
    "67e94b300cb5cc96 0c566d8c821ecfdf", "133cd56db5fd3d00 01496dcef4a011e5",
    "934000584d63aa95 1bf5766e1fc4391a", "78b821f4f70aec38 0ceae38d9ec5c5c1",
    "083c3a5cef47bffb 8947fe495b87131a", "81ff9633cadd2754 ceb112859b340240",
    "044822803c984df9 df1059fbe51b5dfc",
};

// Over all natural and drawn pictures, of odd sizes; likewise.
constexpr std::array<const char*, kEncoderCases.size()> kPictureDigests = {
    "0df19c16207481a2 397285cdc355c9d4", "f0cea4510efd025d f4de8da39aa2e877",
    "05b0359bfd30fe22 9a19e6c6f8157d53", "a53c44094d0b5621 21e1bb3911881942",
    "3c2a1b0c155e02b3 7af7a345d208d4e2", "67adcf6273f4f522 65e52275f15ee8b8",
    "ca1ef59925e0c0f1 4fcf4a10100b1193", "23765469b3cf9313 51eea666f33b3b22",
    "6a38c81790b0e857 3aec4ea0bde09c4f", "c9b0819e34be3aac 5aedf67d2ca27af8",
    "6f47703fe90a6a7d 19bfd06d4b586518",
};

std::string Hex(const std::vector<uint8_t>& data) {
    std::array<char, 17> text;
    std::snprintf(text.data(), text.size(), "%016" PRIx64, Digest(data.data(), data.size()));
    return text.data();
}

/// Runs each test with one set of kernels.
class Digests : public testing::TestWithParam<size_t> {
  protected:
    Digests() { UseBlockKernels(*KernelSetAt(GetParam()).kernels); }
    ~Digests() override { UseBlockKernels(*KernelSetAt(KernelSetCount() - 1).kernels); }
};

TEST_P(Digests, CorpusHasThePromisedBytes) {
    const TestImage corpus = CorpusImage(259, 130);
    for (size_t i = 0; i < kEncoderCases.size(); ++i) {
        const EncoderCase& encoder = kEncoderCases[i];
        uint32_t status;
        const std::vector<uint8_t> blocks = Encode(encoder, corpus, status);
        const bool fast = encoder.entry == EncoderCase::Entry::kAtiTcFast;
        EXPECT_EQ(status, fast ? TXC_ERR_LOW_QUALITY : TXC_OK) << encoder.name;
        EXPECT_EQ(Hex(blocks) + ' ' + Hex(Decode(encoder, corpus, blocks)), kDigests[i]) << encoder.name;
    }
}

TEST_P(Digests, PicturesHaveThePromisedBytes) {
    std::vector<TestImage> pictures = NaturalImages(93);
    const std::vector<TestImage> drawn = DrawnImages(101, 58);
    pictures.insert(pictures.end(), drawn.begin(), drawn.end());
    for (size_t i = 0; i < kEncoderCases.size(); ++i) {
        std::vector<uint8_t> allBlocks;
        std::vector<uint8_t> allPixels;
        for (const TestImage& picture : pictures) {
            uint32_t status;
            const std::vector<uint8_t> blocks = Encode(kEncoderCases[i], picture, status);
            const std::vector<uint8_t> pixels = Decode(kEncoderCases[i], picture, blocks);
            allBlocks.insert(allBlocks.end(), blocks.begin(), blocks.end());
            allPixels.insert(allPixels.end(), pixels.begin(), pixels.end());
        }
        EXPECT_EQ(Hex(allBlocks) + ' ' + Hex(allPixels), kPictureDigests[i]) << kEncoderCases[i].name;
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, Digests, testing::Range(size_t{0}, KernelSetCount()),
                         [](const auto& set) { return std::string(KernelSetAt(set.param).name); });

TEST(Digest, Etc1BaseColorsAreThePromisedOnes) {
    Lcg random(5);
    std::vector<uint8_t> codes;
    for (int i = 0; i < 20000; ++i) {
        AverageColor average;
        for (float& channel : average) {
            channel = static_cast<float>(random.Next(8 * 255 + 1)) / 8.0f;
        }
        for (const auto quantize : {quantize555ColorCombinedPerceptual, quantize444ColorCombinedPerceptual,
                                    Quantize555Nearest, Quantize444Nearest}) {
            const BaseColor color = quantize(average);
            codes.insert(codes.end(), color.codes.begin(), color.codes.end());
        }
    }
    EXPECT_EQ(Hex(codes), "3931762f4b27ca40");
}

}  // namespace
}  // namespace zorvan::texcompress
