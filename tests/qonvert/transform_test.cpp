// The tool's conversion in steps and pieces gives the bytes of one call of the converter; differences are
// measured by the formula; names find their formats.
#include "tools/qonvert/transform.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cmath>

#include "tests/qonvert/samples.h"
#include "tools/qonvert/difference.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/parallel.h"

namespace qonvert {
namespace {

using QXTextureConverter::kFormats;

// Level 0 as Transform makes it, and as one call of the converter does.
void ExpectOneCall(const TextureFile& source, const Recipe& recipe) {
    const Picture base{source.format, source.width, source.height, source.levels.front()};
    EXPECT_EQ(Transform(source, recipe).texture.levels.front(),
              ConvertPicture(base, recipe.format, recipe.width, recipe.height, recipe.steps))
        << FormatName(source.format) << " to " << FormatName(recipe.format);
}

TEST(Transform, EveryPairOfFormatsIsOneCallOfTheConverter) {
    for (const auto& from : kFormats) {
        const TextureFile source = NoiseTexture(from.code, 6, 5);
        for (const auto& to : kFormats) {
            if (from.code != to.code) {
                ExpectOneCall(source, {.format = to.code, .width = 6, .height = 5});
            }
        }
    }
}

TEST(Transform, StepsAreThoseOfOneCall) {
    const struct {
        const char* name;
        Steps steps;
        std::uint32_t width, height;
    } rows[] = {
        {"mirror", {.mirrorX = true}, 20, 36},
        {"flip", {.flipY = true}, 20, 36},
        {"both, larger", {.mirrorX = true, .flipY = true}, 33, 50},
        {"box, smaller", {}, 7, 35},
        {"point", {.filter = 1}, 11, 40},
        {"four", {.filter = 3}, 11, 40},
        {"cubic", {.filter = 4}, 40, 19},
        {"fast", {.fastCompress = true}, 21, 37},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const std::uint32_t from :
             {FMT_RGBA8888, FMT_RGB565, FMT_P4_RGB888, FMT_ETC1_RGB8, FMT_RGB16F}) {
            for (const std::uint32_t to :
                 {FMT_RGBA8888, FMT_ATITC_RGBA_EXPLICIT, FMT_P8_RGB565, FMT_RGBA32F}) {
                ExpectOneCall(NoiseTexture(from, 20, 36),
                              {.format = to, .width = row.width, .height = row.height, .steps = row.steps});
            }
        }
    }
}

TEST(Transform, RowsOfIndicesThatEndInsideAByte) {
    for (const std::uint32_t format : {FMT_P4_RGBA8888, FMT_P1_RGBA8888, FMT_P8_RGBA8888}) {
        const unsigned bits = QXTextureConverter::FindFormat(format)->bitsPerPixel;
        const Bytes level = NoiseTexture(format, 5, 7).levels.front();
        const Bytes pixels = ConvertPicture({format, 5, 7, level}, FMT_RGBA8888, 5, 7);
        for (std::size_t i = 0; i < 35; ++i) {
            const std::size_t bit = i * bits;
            const unsigned index = level[TableBytes(format) + bit / 8] >> (bit % 8) & ((1u << bits) - 1);
            EXPECT_EQ(Part(pixels, 4 * i, 4), Part(level, 4 * index, 4)) << bits << " bits, pixel " << i;
        }
    }
}

TEST(Transform, NormalMapsAreMadeForFloatsToo) {
    const TextureFile source = NoiseTexture(FMT_L32F, 8, 8);
    const Recipe recipe{.format = FMT_RGB32F, .width = 8, .height = 8, .steps = {.normalMap = 2}};
    const Bytes bytes = ConvertPicture({FMT_L32F, 8, 8, source.levels[0]}, FMT_RGBA8888, 8, 8, recipe.steps);
    EXPECT_EQ(Transform(source, recipe).texture.levels.front(),
              ConvertPicture({FMT_RGBA8888, 8, 8, bytes}, FMT_RGB32F, 8, 8));
}

TEST(Transform, EachLevelIsTheBoxFilteredLevelAbove) {
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{13, 5}, {6, 2}, {3, 1}, {1, 1}};
    const TextureFile source = NoiseTexture(FMT_RGBA8888, 13, 5);
    const auto levels =
        Transform(source, {.format = FMT_RGBA8888, .width = 13, .height = 5, .levels = UINT32_MAX})
            .texture.levels;
    ASSERT_EQ(levels.size(), 4u);
    EXPECT_EQ(levels[0], source.levels[0]);
    for (std::size_t i = 1; i < 4; ++i) {
        const auto [width, height] = sizes[i - 1];
        EXPECT_EQ(levels[i], ConvertPicture({FMT_RGBA8888, width, height, levels[i - 1]}, FMT_RGBA8888,
                                            sizes[i].first, sizes[i].second));
    }
    // By hand: a 2 x 2 picture's last level is the truncated mean.
    const TextureFile small{FMT_L8, 2, 2, Origin::kTopLeft, "", {{10, 20, 30, 43}}};
    EXPECT_EQ(Transform(small, {.format = FMT_L8, .width = 2, .height = 2, .levels = 2}).texture.levels.at(1),
              Bytes{25});
}

TEST(Transform, CopiesWhatNeedsNoChange) {
    for (const std::uint32_t format : {FMT_ETC1_RGB8, FMT_L16, FMT_P4_RGB565, FMT_RGB16F}) {
        const TextureFile source = NoiseTexture(format, 9, 9, 3);
        Recipe recipe{.format = format, .width = 9, .height = 9};
        EXPECT_EQ(Transform(source, recipe).texture.levels, source.levels);
        recipe.levels = 1;
        EXPECT_EQ(Transform(source, recipe).texture.levels, std::vector<Bytes>{source.levels.front()});
    }
}

TEST(ParallelFor, DoesAllWithoutThreadsThatCannotBeMade) {
    pthread_attr_t usual, impossible;
    pthread_getattr_default_np(&usual);
    pthread_attr_init(&impossible);
    ASSERT_EQ(pthread_attr_setstacksize(&impossible, SIZE_MAX / 4 & ~std::size_t{0xFFFF}), 0);
    ASSERT_EQ(pthread_setattr_default_np(&impossible), 0);
    std::atomic<int> done{0};
    EXPECT_NO_THROW(ParallelFor(9, 4, [&](std::size_t) { ++done; }));
    pthread_setattr_default_np(&usual);
    EXPECT_EQ(done, 9);
}

TEST(Difference, FollowsTheFormula) {
    const Bytes a = {10, 20, 30, 40, 50, 60}, b = {15, 20, 27, 40, 50, 60};
    const Difference difference = Measure({FMT_RGB888, 2, 1, a}, {FMT_RGB888, 2, 1, b}, true);
    EXPECT_NEAR(difference.channels[0].psnr(255), 10 * std::log10(255.0 * 255.0 / 12.5), 1e-9);
    EXPECT_NEAR(difference.together.psnr(255), 10 * std::log10(255.0 * 255.0 / ((25.0 + 9.0) / 6)), 1e-9);
    EXPECT_EQ(difference.picture, (Bytes{5, 0, 3, 0, 0, 0}));
    EXPECT_EQ(ToText(difference),
              "PSNR R 37.16, G inf, B 41.60, together 40.60 dB; largest error R 5, G 0, B 3, together 5");
}

TEST(Difference, SeesAlphaWideLuminanceAndNotANumber) {
    const Bytes opaque = {1, 2, 3}, clear = {1, 2, 3, 0}, low = {0, 0}, high = {0xFF, 0xFF};
    const Bytes zero = {0, 0, 0, 0}, nan = {0, 0, 0xC0, 0x7F};
    const Difference alpha = Measure({FMT_RGB888, 1, 1, opaque}, {FMT_RGBA8888, 1, 1, clear}, true);
    EXPECT_EQ(alpha.channels[3].largest, 255);
    EXPECT_EQ(alpha.picture, (Bytes{255, 255, 255}));
    EXPECT_EQ(Measure({FMT_L16, 1, 1, low}, {FMT_L16, 1, 1, high}).together.largest, 1);
    EXPECT_FALSE(Measure({FMT_L32F, 1, 1, zero}, {FMT_L32F, 1, 1, nan}).equal());
    EXPECT_TRUE(Measure({FMT_L32F, 1, 1, nan}, {FMT_L32F, 1, 1, nan}).equal());
}

TEST(FormatNames, EveryNameAndAliasFindsItsFormat) {
    for (const auto& row : kFormats) {
        std::vector<std::string> names = FormatAliases(row.code);
        names.insert(names.end(), {row.name, std::string(FormatName(row.code))});
        for (std::string name : names) {
            EXPECT_EQ(ParseFormat(name), row.code) << name;
            std::transform(name.begin(), name.end(), name.begin(), [](char c) { return std::tolower(c); });
            EXPECT_EQ(ParseFormat(name), row.code) << name;
        }
    }
    const std::pair<const char*, std::uint32_t> aliases[] = {{"B8G8R8A8_UNORM", FMT_BGRA8888},
                                                             {"bc5u", FMT_3DC_XY},
                                                             {"ATC ", FMT_ATITC_RGB},
                                                             {"atc_rgb_amd", FMT_ATITC_RGB},
                                                             {"0X8d64", FMT_ETC1_RGB8}};
    for (const auto& [name, format] : aliases) {
        EXPECT_EQ(ParseFormat(name), format) << name;
    }
}

}  // namespace
}  // namespace qonvert
