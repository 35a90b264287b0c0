// Every set of kernels that this machine runs gives the bytes of the plain set.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "codec_calls.h"
#include "texcompress/block_kernels.h"
#include "texcompress/instruction_set.h"

namespace zorvan::texcompress {
namespace {

const std::string kNamedAtStart = [] {
    const char* name = std::getenv("ZORVAN_KERNELS");
    return name == nullptr ? "" : name;
}();
const std::string kSelectedAtStart = InstructionSetName(SelectedInstructionSet());

TEST(KernelChoice, TheNamedSetIsInUse) {
    EXPECT_EQ(kSelectedAtStart,
              kNamedAtStart.empty() ? KernelSetAt(KernelSetCount() - 1).name : kNamedAtStart)
        << "ZORVAN_KERNELS names no set that this machine runs";
}

TEST(KernelChoiceDeathTest, ANameOfNoSetLeavesTheFastest) {
#ifdef ZORVAN_EMULATED
    GTEST_SKIP() << "an emulated program cannot start itself";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process for each, which inherits the name
    const char* fastest = KernelSetAt(KernelSetCount() - 1).name;
    for (const auto& [name, expected] : {std::pair{"scalar", "scalar"},
                                         {"baseline", "baseline"},
                                         {fastest, fastest},
                                         {"sse9", fastest},
                                         {"", fastest}}) {
        setenv("ZORVAN_KERNELS", name, 1);
        EXPECT_EXIT(std::exit(kSelectedAtStart == expected ? 0 : 1), testing::ExitedWithCode(0), "") << name;
    }
    setenv("ZORVAN_KERNELS", kNamedAtStart.c_str(), 1);
}

// Sixteen pixels whose channels are of random range and depth, from flat to noise, from a few levels (0 and
// 255 among them) to all. Some tiles are grey, in others all colours are about as bright.
std::array<std::array<uint8_t, 4>, 16> RandomTile(Lcg& random) {
    std::array<std::array<uint8_t, 4>, 16> tile;
    for (size_t c = 0; c < 4; ++c) {
        const uint32_t base = random.Next(256) >> random.Next(4);
        const uint32_t range = 1u << random.Next(9);
        const uint32_t step = 1u << random.Next(8);
        for (auto& pixel : tile) {
            pixel[c] = static_cast<uint8_t>(std::min(255u, base + random.Next(range) / step * step));
        }
    }
    const uint32_t kind = random.Next(8);
    const int luminance = static_cast<int>(random.Next(256));
    for (auto& pixel : tile) {
        if (kind == 0) {
            pixel[1] = pixel[2] = pixel[0];
        } else if (kind == 1) {
            const int green = (64 * luminance - 19 * pixel[0] - 7 * pixel[2]) / 38;
            pixel[1] = static_cast<uint8_t>(std::clamp(green, 0, 255));
        }
    }
    return tile;
}

TestImage RandomImage(uint32_t width, uint32_t height, Lcg& random) {
    TestImage image{width, height, std::vector<uint8_t>(size_t{4} * width * height)};
    for (uint32_t y = 0; y < height; y += 4) {
        for (uint32_t x = 0; x < width; x += 4) {
            const auto tile = RandomTile(random);
            for (uint32_t k = 0; k < 16; ++k) {
                const uint32_t place =
                    std::min(y + k / 4, height - 1) * width + std::min(x + k % 4, width - 1);
                std::copy(tile[k].begin(), tile[k].end(), &image.pixels[size_t{4} * place]);
            }
        }
    }
    return image;
}

std::vector<uint8_t> RandomBytes(size_t size, Lcg& random) {
    std::vector<uint8_t> bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<uint8_t>(random.Next(256)); });
    return bytes;
}

class Kernels : public testing::TestWithParam<size_t> {
  protected:
    ~Kernels() override { Use(KernelSetCount() - 1); }

    static void Use(size_t set) {
        UseBlockKernels(*KernelSetAt(set).kernels);
        ASSERT_EQ(&SelectBlockKernels(), KernelSetAt(set).kernels);
    }
    // What a call returns with the plain set and with the other one.
    template <typename Call>
    auto ByBothSets(Call call) const {
        Use(0);
        auto plain = call();
        Use(GetParam());
        return std::pair{plain, call()};
    }
};

TEST_P(Kernels, EncodeLikeThePlainSet) {
    Lcg random(11);
    for (int round = 0; round < 30; ++round) {
        const TestImage image = RandomImage(1 + random.Next(150), 1 + random.Next(30), random);
        for (const Codec& codec : kCodecs) {
            const auto [plain, other] = ByBothSets([&] { return Encode(codec, SourceOf(image)); });
            ASSERT_EQ(other, plain) << codec.name << ", round " << round;
        }
    }
}

TEST_P(Kernels, DecideLikeThePlainSet) {
    using Pixel = std::array<uint8_t, 4>;
    for (const auto& [even, odd] : {
             // Legacy ATC takes the order of these for a palette with black.
             std::pair{Pixel{5, 180, 5, 0}, Pixel{168, 63, 199, 0}},
             // ETC1 gets 132 as each half's base colour, from which both are 0 away by weighted sum: only the
             // rounding of the errors tells the columns -2 and +2 apart.
             std::pair{Pixel{147, 123, 139, 0}, Pixel{117, 141, 125, 0}},
         }) {
        TestImage image{4, 4, {}};
        for (int k = 0; k < 16; ++k) {
            const Pixel& pixel = k % 2 == 0 ? even : odd;
            image.pixels.insert(image.pixels.end(), pixel.begin(), pixel.end());
        }
        for (const Codec& codec : kCodecs) {
            const auto [plain, other] = ByBothSets([&] { return Encode(codec, SourceOf(image)); });
            EXPECT_EQ(other, plain) << codec.name;
        }
    }
}

TEST_P(Kernels, MeasureErrorsLikeThePlainSet) {
    Lcg random(12);
    for (int round = 0; round < 800; ++round) {
        std::array<Tile, 16> tiles;
        const TestImage image = RandomImage(4, 64, random);
        std::memcpy(tiles.data(), image.pixels.data(), sizeof(tiles));
        // The colours that legacy ATC takes for a palette with black; see above.
        for (uint32_t k = 0; k < 16; ++k) {
            tiles[0].pixels[k] = k % 2 == 0 ? 0x05B405 : 0xC73FA8;
        }
        for (const auto kernel : {&BlockKernels::encodeAtcFast, &BlockKernels::encodeAtcLegacyFast}) {
            const auto [plain, other] = ByBothSets([&, count = 1 + round % tiles.size()] {
                std::array<uint8_t, 128> blocks;
                std::array<uint32_t, 16> errors{};
                (SelectBlockKernels().*kernel)(tiles.data(), count, blocks.data(), 8, errors.data());
                return errors;
            });
            ASSERT_EQ(other, plain) << round;
        }
    }
}

TEST_P(Kernels, DecodeLikeThePlainSet) {
    Lcg random(13);
    for (int round = 0; round < 150; ++round) {
        const uint32_t width = 1 + random.Next(150);
        const uint32_t height = 1 + random.Next(30);
        for (const Codec& codec : kCodecs) {
            const auto blocks = RandomBytes(codec.BlockBytes(width, height), random);
            const auto [plain, other] = ByBothSets(
                [&] { return Decode(codec, width, height, blocks, 1 + static_cast<uint32_t>(round) % 2); });
            ASSERT_EQ(other, plain) << codec.name << ", round " << round;
        }
    }
}

TEST_P(Kernels, DecodeEveryRamp) {
    std::vector<uint8_t> blocks(0x80000);
    for (uint32_t ends = 0; ends < 0x10000; ++ends) {
        // Indices 0 to 7 twice.
        StoreWord(&blocks[8 * ends], ends | 0xC6880000);
        StoreWord(&blocks[8 * ends + 4], 0xFAC688FA);
    }
    const Codec codec{Entry::kTxCompress, TXC_FORMAT_ATI1N, 0};
    const auto [plain, other] = ByBothSets([&] { return Decode(codec, 1024, 1024, blocks); });
    EXPECT_TRUE(other == plain);
}

INSTANTIATE_TEST_SUITE_P(Sets, Kernels, testing::Range(size_t{1}, KernelSetCount()),
                         [](const auto& set) { return std::string(KernelSetAt(set.param).name); });

}  // namespace
}  // namespace zorvan::texcompress
