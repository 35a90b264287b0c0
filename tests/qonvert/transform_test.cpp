// The tool's conversion in steps and pieces gives the bytes of one call of the converter.
#include "tools/qonvert/transform.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/qonvert/samples.h"
#include "tools/qonvert/difference.h"
#include "tools/qonvert/format_names.h"

namespace qonvert {
namespace {

using QXTextureConverter::kFormats;

Picture Base(const TextureFile& texture) {
    return {texture.format, texture.width, texture.height, texture.levels.front()};
}

TEST(Transform, EveryPairOfFormatsIsOneCallOfTheConverter) {
    for (const auto& from : kFormats) {
        const TextureFile source = NoiseTexture(from.code, 6, 5);
        for (const auto& to : kFormats) {
            if (from.code == to.code) {
                continue;
            }
            const Recipe recipe{.format = to.code, .width = 6, .height = 5};
            ASSERT_EQ(Transform(source, recipe).texture.levels.front(),
                      ConvertPicture(Base(source), to.code, 6, 5))
                << from.name << " to " << to.name;
        }
    }
}

TEST(Transform, RowsOfIndicesThatEndInsideAByte) {
    for (const std::uint32_t format : {FMT_P4_RGBA8888, FMT_P1_RGBA8888, FMT_P8_RGBA8888}) {
        const auto* info = QXTextureConverter::FindFormat(format);
        const TextureFile source = NoiseTexture(format, 5, 7);
        const Bytes& level = source.levels.front();
        const Bytes pixels = ConvertPicture(Base(source), FMT_RGBA8888, 5, 7);
        for (std::size_t i = 0; i < 35; ++i) {
            const std::size_t bit = i * info->bitsPerPixel;
            const unsigned index =
                level[TableBytes(format) + bit / 8] >> (bit % 8) & ((1u << info->bitsPerPixel) - 1);
            EXPECT_TRUE(
                std::equal(pixels.begin() + 4 * i, pixels.begin() + 4 * i + 4, level.begin() + 4 * index))
                << info->name << " pixel " << i;
        }
    }
}

TEST(Transform, StepsAreThoseOfOneCall) {
    const std::uint32_t sources[] = {FMT_RGBA8888, FMT_RGB565, FMT_P4_RGB888, FMT_ETC1_RGB8, FMT_RGB16F};
    const std::uint32_t targets[] = {FMT_RGBA8888, FMT_ATITC_RGBA_EXPLICIT, FMT_P8_RGB565, FMT_RGBA32F};
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
        for (const std::uint32_t from : sources) {
            for (const std::uint32_t to : targets) {
                const TextureFile source = NoiseTexture(from, 20, 36);
                const Recipe recipe{
                    .format = to, .width = row.width, .height = row.height, .steps = row.steps};
                EXPECT_EQ(Transform(source, recipe).texture.levels.front(),
                          ConvertPicture(Base(source), to, row.width, row.height, row.steps))
                    << row.name << ' ' << FormatName(from) << " to " << FormatName(to);
            }
        }
    }
}

TEST(Transform, NormalMapsAreMadeForFloatsToo) {
    const TextureFile source = NoiseTexture(FMT_L32F, 8, 8);
    const Recipe recipe{.format = FMT_RGB32F, .width = 8, .height = 8, .steps = {.normalMap = 2}};
    const Bytes bytes = ConvertPicture(Base(source), FMT_RGBA8888, 8, 8, recipe.steps);
    EXPECT_EQ(Transform(source, recipe).texture.levels.front(),
              ConvertPicture({FMT_RGBA8888, 8, 8, bytes}, FMT_RGB32F, 8, 8));
}

TEST(Transform, ResultDoesNotDependOnThreads) {
    for (const std::uint32_t to :
         {FMT_ATITC_RGBA_INTERPOLATED, FMT_ETC1_RGB8, FMT_3DC_XY, FMT_P8_RGB888, FMT_RGB565}) {
        const TextureFile source = NoiseTexture(FMT_RGBA8888, 70, 90);
        Recipe recipe{
            .format = static_cast<std::uint32_t>(to), .width = 70, .height = 90, .levels = UINT32_MAX};
        const Transformed one = Transform(source, recipe);
        EXPECT_EQ(one.texture.levels.size(), 7u);
        for (const unsigned threads : {2u, 3u, 16u}) {
            recipe.threads = threads;
            EXPECT_EQ(Transform(source, recipe).texture.levels, one.texture.levels)
                << FormatName(to) << threads;
        }
    }
}

TEST(Transform, EachLevelIsTheBoxFilteredLevelAbove) {
    const TextureFile source = NoiseTexture(FMT_RGBA8888, 13, 5);
    const Transformed result =
        Transform(source, {.format = FMT_RGBA8888, .width = 13, .height = 5, .levels = UINT32_MAX});
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{13, 5}, {6, 2}, {3, 1}, {1, 1}};
    ASSERT_EQ(result.texture.levels.size(), 4u);
    EXPECT_EQ(result.texture.levels[0], source.levels[0]);
    for (std::size_t i = 1; i < 4; ++i) {
        const auto [width, height] = sizes[i - 1];
        EXPECT_EQ(result.texture.levels[i],
                  ConvertPicture({FMT_RGBA8888, width, height, result.texture.levels[i - 1]}, FMT_RGBA8888,
                                 sizes[i].first, sizes[i].second));
    }
    // By hand: a 2 x 2 picture's last level is the truncated mean.
    TextureFile small = NoiseTexture(FMT_L8, 2, 2);
    small.levels[0] = {10, 20, 30, 43};
    EXPECT_EQ(Transform(small, {.format = FMT_L8, .width = 2, .height = 2, .levels = 2}).texture.levels.at(1),
              Bytes{25});
}

TEST(Transform, CopiesWhatNeedsNoChange) {
    for (const std::uint32_t format : {FMT_ETC1_RGB8, FMT_L16, FMT_P4_RGB565, FMT_RGB16F}) {
        const TextureFile source = NoiseTexture(format, 9, 9, 3);
        const Transformed copy = Transform(source, {.format = format, .width = 9, .height = 9});
        EXPECT_EQ(copy.texture.levels, source.levels);
        EXPECT_TRUE(copy.pixels.empty());
        const Transformed cut = Transform(source, {.format = format, .width = 9, .height = 9, .levels = 1});
        EXPECT_EQ(cut.texture.levels, std::vector<Bytes>{source.levels.front()});
    }
}

TEST(Transform, RefusesSizesThatTheConverterCannotHold) {
    const TextureFile source = NoiseTexture(FMT_L8, 4, 4);
    const struct {
        std::uint32_t format, width, height;
    } rows[] = {{FMT_L8, 65537, 1}, {FMT_L8, 65536, 65536}, {FMT_RGBA32F, 16384, 16384}, {FMT_L8, 0, 4}};
    for (const auto& row : rows) {
        try {
            Transform(source, {.format = row.format, .width = row.width, .height = row.height});
            ADD_FAILURE() << row.width << " x " << row.height;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.code(), ExitCode::kUnsupported);
        }
    }
}

TEST(Difference, FollowsTheFormula) {
    const Bytes a = {10, 20, 30, 40, 50, 60};
    const Bytes b = {15, 20, 27, 40, 50, 60};
    const Difference difference = Measure({FMT_RGB888, 2, 1, a}, {FMT_RGB888, 2, 1, b}, true);
    EXPECT_NEAR(difference.channels[0].psnr(255), 10 * std::log10(255.0 * 255.0 / 12.5), 1e-9);
    EXPECT_TRUE(std::isinf(difference.channels[1].psnr(255)));
    EXPECT_NEAR(difference.together.psnr(255), 10 * std::log10(255.0 * 255.0 / ((25.0 + 9.0) / 6)), 1e-9);
    EXPECT_EQ(difference.together.largest, 5);
    EXPECT_FALSE(difference.alpha);
    EXPECT_EQ(difference.picture, (Bytes{5, 0, 3, 0, 0, 0}));
    EXPECT_FALSE(difference.equal());
    EXPECT_EQ(ToText(difference),
              "PSNR R 37.16, G inf, B 41.60, together 40.60 dB; largest error R 5, G 0, B 3, together 5");
}

TEST(Difference, SeesAlphaWideLuminanceAndNotANumber) {
    const Bytes opaque = {1, 2, 3};
    const Bytes clear = {1, 2, 3, 0};
    const Difference alpha = Measure({FMT_RGB888, 1, 1, opaque}, {FMT_RGBA8888, 1, 1, clear}, true);
    EXPECT_EQ(alpha.channels[3].largest, 255);
    EXPECT_EQ(alpha.picture, (Bytes{255, 255, 255}));
    const Bytes low = {0, 0};
    const Bytes high = {0xFF, 0xFF};
    EXPECT_EQ(Measure({FMT_L16, 1, 1, low}, {FMT_L16, 1, 1, high}).together.largest, 1);
    const Bytes zero = {0, 0, 0, 0};
    const Bytes nan = {0, 0, 0xC0, 0x7F};
    EXPECT_FALSE(Measure({FMT_L32F, 1, 1, zero}, {FMT_L32F, 1, 1, nan}).equal());
    EXPECT_TRUE(Measure({FMT_L32F, 1, 1, nan}, {FMT_L32F, 1, 1, nan}).equal());
}

TEST(FormatNames, EveryNameAndAliasFindsItsFormat) {
    for (const auto& row : kFormats) {
        EXPECT_EQ(ParseFormat(row.name), row.code);
        std::string lower(FormatName(row.code));
        for (char& c : lower) {
            c = static_cast<char>(std::tolower(c));
        }
        EXPECT_EQ(ParseFormat(lower), row.code);
        for (const std::string& alias : FormatAliases(row.code)) {
            EXPECT_EQ(ParseFormat(alias), row.code) << alias;
        }
    }
    EXPECT_EQ(ParseFormat("B8G8R8A8_UNORM"), FMT_BGRA8888);
    EXPECT_EQ(ParseFormat("bc5u"), FMT_3DC_XY);
    EXPECT_EQ(ParseFormat("ATC "), FMT_ATITC_RGB);
    EXPECT_EQ(ParseFormat("atc_rgb_amd"), FMT_ATITC_RGB);
    EXPECT_EQ(ParseFormat("0X8d64"), FMT_ETC1_RGB8);
}

TEST(FormatNames, MissesListTheThreeNearest) {
    const struct {
        const char* name;
        const char* nearest;
    } rows[] = {
        {"rgb56", "RGB565, "}, {"ETC", "ETC1_RGB8"}, {"RGBA888", "RGBA8888, "}, {"", ""}, {"FMT_", ""}};
    for (const auto& row : rows) {
        try {
            ParseFormat(row.name);
            ADD_FAILURE() << row.name;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.code(), ExitCode::kUsage);
            const std::string text = error.what();
            const std::size_t at = text.find("the nearest are ");
            ASSERT_NE(at, std::string::npos);
            EXPECT_EQ(std::count(text.begin() + at, text.end(), ','), 2);
            EXPECT_NE(text.find(row.nearest, at), std::string::npos) << text;
        }
    }
}

}  // namespace
}  // namespace qonvert
