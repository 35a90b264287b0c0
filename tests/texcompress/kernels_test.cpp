// Every set of kernels that this machine runs gives the bytes of the plain set.
#include <gtest/gtest.h>

#include <algorithm>

#include "test_images.h"
#include "texcompress/block_kernels.h"
#include "texcompress/pixel_target.h"
#include "texcompress/source_pixels.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {
namespace {

constexpr size_t kTiles = 16;
constexpr size_t kStride = 24;
using Tiles = std::array<Tile, kTiles>;
using Blocks = std::array<uint8_t, kTiles * kStride>;

/// Values of one channel of a tile: noise, few values, ramps, flat, dark with bright spots, extremes.
void FillChannel(Lcg& random, int shift, Tile& tile) {
    const uint32_t kind = random.Next(8);
    const uint32_t base = random.Next(256);
    const uint32_t other = random.Next(256);
    const uint32_t range = 1 + random.Next(random.Next(2) == 0 ? 12 : 90);
    for (uint32_t k = 0; k < kTilePixels; ++k) {
        uint32_t value = base;
        switch (kind) {
            case 0:
                value = random.Next(256);
                break;
            case 1:
                value = random.Next(2) == 0 ? base : other;
                break;
            case 2:
                value = base + k % 4 * (range / 4) + k / 4 * (other % 8);
                break;
            case 3:
                break;
            case 4:
                value = random.Next(3) == 0 ? 255 - base / 4 : base / 8;
                break;
            case 5:
                value = random.Next(4) == 0 ? base : random.Next(2) * 255;
                break;
            default:
                value = base + random.Next(range);
                break;
        }
        tile.pixels[k] |= std::min(value, 255u) << shift;
    }
}

Tile RandomTile(Lcg& random) {
    Tile tile{};
    const bool grey = random.Next(8) == 0;
    for (const int shift : {0, 8, 16, 24}) {
        FillChannel(random, shift, tile);
        if (grey && shift == 0) {
            std::transform(tile.pixels, tile.pixels + kTilePixels, tile.pixels,
                           [](uint32_t value) { return value * 0x10101; });
        }
    }
    return tile;
}

class Kernels : public testing::TestWithParam<size_t> {
  protected:
    const BlockKernels& Set() const { return *KernelSetAt(GetParam()).kernels; }
};

TEST_P(Kernels, EncodeLikeThePlainSet) {
    constexpr std::array<EncodeKernel BlockKernels::*, 8> kEncoders = {
        &BlockKernels::encodeAtc,
        &BlockKernels::encodeAtcLegacy,
        &BlockKernels::encodeEtc1,
        &BlockKernels::encodeAti1n,
        &BlockKernels::encodeAti2n,
        &BlockKernels::encodeAlphaExplicit8,
        &BlockKernels::encodeAlphaExplicit4,
        &BlockKernels::encodeAlphaInterpolated,
    };
    Lcg random(11);
    for (int round = 0; round < 120; ++round) {
        Tiles tiles;
        std::generate(tiles.begin(), tiles.end(), [&random] { return RandomTile(random); });
        const size_t count = round % 2 == 0 ? kTiles : 1 + random.Next(kTiles);
        for (size_t i = 0; i < kEncoders.size(); ++i) {
            Blocks expected{};
            Blocks actual{};
            (kScalarKernels.*kEncoders[i])(tiles.data(), count, expected.data(), kStride);
            (Set().*kEncoders[i])(tiles.data(), count, actual.data(), kStride);
            ASSERT_EQ(actual, expected) << "encoder " << i << ", round " << round;
        }
    }
}

TEST_P(Kernels, MeasureErrorsLikeThePlainSet) {
    Lcg random(12);
    for (int round = 0; round < 2000; ++round) {
        Tiles tiles;
        std::generate(tiles.begin(), tiles.end(), [&random] { return RandomTile(random); });
        for (const auto kernel : {&BlockKernels::encodeAtcFast, &BlockKernels::encodeAtcLegacyFast}) {
            Blocks expected{};
            Blocks actual{};
            std::array<uint32_t, kTiles> expectedErrors{};
            std::array<uint32_t, kTiles> actualErrors{};
            const size_t count = 1 + random.Next(kTiles);
            (kScalarKernels.*kernel)(tiles.data(), count, expected.data(), kStride, expectedErrors.data());
            (Set().*kernel)(tiles.data(), count, actual.data(), kStride, actualErrors.data());
            ASSERT_EQ(actual, expected) << round;
            ASSERT_EQ(actualErrors, expectedErrors) << round;
        }
    }
}

TEST_P(Kernels, DecodeLikeThePlainSet) {
    constexpr std::array<DecodeKernel BlockKernels::*, 5> kColors = {
        &BlockKernels::decodeAtc,   &BlockKernels::decodeAtcLegacy, &BlockKernels::decodeEtc1,
        &BlockKernels::decodeAti1n, &BlockKernels::decodeAti2n,
    };
    constexpr std::array<DecodeKernel BlockKernels::*, 2> kAlphas = {&BlockKernels::decodeAlphaExplicit,
                                                                     &BlockKernels::decodeAlphaInterpolated};
    Lcg random(13);
    for (int round = 0; round < 4000; ++round) {
        Blocks blocks;
        std::generate(blocks.begin(), blocks.end(),
                      [&random] { return static_cast<uint8_t>(random.Next(256)); });
        blocks[kStride] = blocks[kStride + 1];
        const size_t count = 1 + random.Next(kTiles);
        for (size_t i = 0; i < kColors.size(); ++i) {
            Tiles expected{};
            Tiles actual{};
            const auto alphas = kAlphas[i % 2];
            for (const auto& [set, tiles] :
                 {std::pair(&kScalarKernels, &expected), std::pair(&Set(), &actual)}) {
                (set->*kColors[i])(blocks.data(), count, kStride, tiles->data());
                (set->*alphas)(blocks.data() + 4, count, kStride, tiles->data());
            }
            ASSERT_TRUE(
                std::equal(actual.begin(), actual.begin() + static_cast<ptrdiff_t>(count), expected.begin()))
                << "decoder " << i << ", round " << round;
        }
    }
}

TEST_P(Kernels, DecodeEveryRamp) {
    for (uint32_t ends = 0; ends < 0x10000; ++ends) {
        // Indices 0 to 7 twice.
        const uint64_t block = ends | uint64_t{0xFAC688FAC688} << 16;
        std::array<uint8_t, 8> bytes;
        StoreWord(bytes.data(), static_cast<uint32_t>(block));
        StoreWord(bytes.data() + 4, static_cast<uint32_t>(block >> 32));
        Tile expected;
        Tile actual;
        kScalarKernels.decodeAti1n(bytes.data(), 1, 8, &expected);
        Set().decodeAti1n(bytes.data(), 1, 8, &actual);
        ASSERT_TRUE(actual == expected) << ends;
    }
}

TEST_P(Kernels, GatherAndScatterLikeThePlainSet) {
    Lcg random(14);
    const TestImage image = CorpusImage(71, 10);
    for (const AlphaDepth depth : {AlphaDepth::kFourBits, AlphaDepth::kEightBits}) {
        const SourcePixels source(image.pixels.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, 71, 10, 4 * 71,
                                  depth, PixelFetch::kAnySize);
        for (const uint32_t y : {0u, 4u, 8u}) {
            for (const uint32_t x : {0u, 8u, 64u}) {
                const size_t count = std::min<size_t>(1 + random.Next(16), 18 - x / 4);
                Tiles expected;
                Tiles actual;
                kScalarKernels.gather(source, x, y, count, expected.data());
                Set().gather(source, x, y, count, actual.data());
                ASSERT_TRUE(std::equal(actual.begin(), actual.begin() + static_cast<ptrdiff_t>(count),
                                       expected.begin()));
                for (const uint32_t bytesPerPixel : {3u, 4u}) {
                    for (const uint32_t order : {TXC_ORDER_RGB, TXC_ORDER_BGR}) {
                        std::vector<uint8_t> plain(size_t{71} * 10 * bytesPerPixel, 0xA5);
                        std::vector<uint8_t> fast = plain;
                        kScalarKernels.scatter(expected.data(), count,
                                               {plain.data(), 71, 10, bytesPerPixel, order}, x, y);
                        Set().scatter(expected.data(), count, {fast.data(), 71, 10, bytesPerPixel, order}, x,
                                      y);
                        ASSERT_EQ(fast, plain) << x << ',' << y << ' ' << bytesPerPixel << ' ' << order;
                    }
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, Kernels, testing::Range(size_t{1}, KernelSetCount()),
                         [](const auto& set) { return std::string(KernelSetAt(set.param).name); });

}  // namespace
}  // namespace zorvan::texcompress
