// The promised bytes: digests of each codec's blocks and of what they decode to, over a hard corpus and over
// pictures. They are the same for every compiler, optimization level, CPU and set of kernels.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>

#include "codec_calls.h"
#include "texcompress/block_kernels.h"

namespace zorvan::texcompress {
namespace {

// Of blocks, then of pixels; in the order of kCodecs.
using Digests = std::array<const char*, kCodecs.size()>;

constexpr Digests kCorpus = {
    "516b05e96486b7d0 875efcf2ee1bff51", "d44acf20898e2790 4ffc0147ebd7e318",
    "c2ab6012d2e70eb7 b95ff5752a0b4f44", "1722b80893c83893 a237b78d6ba12c5b",
    "67e94b300cb5cc96 0c566d8c821ecfdf", "133cd56db5fd3d00 01496dcef4a011e5",
    "934000584d63aa95 1bf5766e1fc4391a", "78b821f4f70aec38 0ceae38d9ec5c5c1",
    "083c3a5cef47bffb 8947fe495b87131a", "81ff9633cadd2754 ceb112859b340240",
    "044822803c984df9 df1059fbe51b5dfc",
};

// Over all natural and drawn pictures, of odd sizes.
constexpr Digests kPictures = {
    "0df19c16207481a2 397285cdc355c9d4", "f0cea4510efd025d f4de8da39aa2e877",
    "05b0359bfd30fe22 9a19e6c6f8157d53", "a53c44094d0b5621 21e1bb3911881942",
    "3c2a1b0c155e02b3 7af7a345d208d4e2", "67adcf6273f4f522 65e52275f15ee8b8",
    "ca1ef59925e0c0f1 4fcf4a10100b1193", "23765469b3cf9313 51eea666f33b3b22",
    "6a38c81790b0e857 3aec4ea0bde09c4f", "c9b0819e34be3aac 5aedf67d2ca27af8",
    "6f47703fe90a6a7d 19bfd06d4b586518",
};

std::string DigestsOf(const Codec& codec, const std::vector<TestImage>& images) {
    std::vector<uint8_t> allBlocks;
    std::vector<uint8_t> allPixels;
    for (const TestImage& image : images) {
        const std::vector<uint8_t> blocks = Encode(codec, SourceOf(image));
        const std::vector<uint8_t> pixels = Decode(codec, image.width, image.height, blocks);
        allBlocks.insert(allBlocks.end(), blocks.begin(), blocks.end());
        allPixels.insert(allPixels.end(), pixels.begin(), pixels.end());
    }
    std::array<char, 34> text;
    std::snprintf(text.data(), text.size(), "%016" PRIx64 " %016" PRIx64,
                  Digest(allBlocks.data(), allBlocks.size()), Digest(allPixels.data(), allPixels.size()));
    return text.data();
}

// Runs with one set of kernels.
class PromisedBytes : public testing::TestWithParam<size_t> {
  protected:
    PromisedBytes() { UseBlockKernels(*KernelSetAt(GetParam()).kernels); }
    ~PromisedBytes() override { UseBlockKernels(*KernelSetAt(KernelSetCount() - 1).kernels); }
};

TEST_P(PromisedBytes, AreKept) {
    ASSERT_EQ(&SelectBlockKernels(), KernelSetAt(GetParam()).kernels);
    std::vector<TestImage> pictures = NaturalImages(93);
    const std::vector<TestImage> drawn = DrawnImages(101, 58);
    pictures.insert(pictures.end(), drawn.begin(), drawn.end());
    for (size_t i = 0; i < kCodecs.size(); ++i) {
        EXPECT_EQ(DigestsOf(kCodecs[i], {CorpusImage(259, 130)}), kCorpus[i]) << kCodecs[i].name;
        EXPECT_EQ(DigestsOf(kCodecs[i], pictures), kPictures[i]) << kCodecs[i].name;
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, PromisedBytes, testing::Range(size_t{0}, KernelSetCount()),
                         [](const auto& set) { return std::string(KernelSetAt(set.param).name); });

}  // namespace
}  // namespace zorvan::texcompress
