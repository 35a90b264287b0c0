// What is written is read back, in every container and format.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/qonvert/samples.h"
#include "tools/qonvert/block_halves.h"
#include "tools/qonvert/pixels.h"

namespace qonvert {
namespace {

using QXTextureConverter::FindFormat;
using QXTextureConverter::kFormats;

struct Variant {
    const char* container;
    const char* name;
    WriteOptions options;
};

const Variant kVariants[] = {
    {"ktx", "default", {}},
    {"ktx", "AMD tokens", {.ktxAmdTokens = true}},
    {"dds", "default", {}},
    {"dds", "BC names", {.ddsNames = DdsNames::kBc}},
    {"dds", "DX10", {.ddsNames = DdsNames::kDx10}},
    {"pkm", "default", {}},
    {"png", "default", {}},
    {"raw", "default", {}},
};

ReadOptions OptionsFor(const TextureFile& texture) {
    ReadOptions options;
    options.rawWidth = texture.width;
    options.rawHeight = texture.height;
    options.rawFormat = texture.format;
    options.deepSamples = texture.format == FMT_L16 ? DeepSamples::kLuminance16 : DeepSamples::kTopByte;
    return options;
}

TEST(ContainerRoundTrip, EveryFormatSizeAndChain) {
    int pairs = 0;
    for (const Variant& variant : kVariants) {
        const Container& container = *FindContainer(variant.container);
        for (const auto& row : kFormats) {
            // PNG widens 16-bit colour table entries; their test is below.
            if (!container.carries(row.code, variant.options) ||
                (container.name == "png" && row.paletteBits == 16)) {
                continue;
            }
            for (const auto& [width, height] : {std::pair{1u, 1u}, {5u, 3u}, {3u, 9u}, {8u, 8u}}) {
                SCOPED_TRACE(std::string(variant.container) + " " + variant.name + " " + row.name + " " +
                             std::to_string(width) + "x" + std::to_string(height));
                const TextureFile texture =
                    NoiseTexture(row.code, width, height, container.levels ? FullChain(width, height) : 1);
                const Bytes file = WriteContainer(container, texture, variant.options);
                Findings findings;
                const TextureFile back = container.read(file, OptionsFor(texture), findings);
                EXPECT_EQ(back.format, texture.format);
                EXPECT_EQ(back.width, width);
                EXPECT_EQ(back.height, height);
                EXPECT_EQ(back.levels, texture.levels);
                EXPECT_TRUE(findings.empty()) << findings.front().Describe();
                EXPECT_EQ(WriteContainer(container, texture, variant.options), file);
                ++pairs;
            }
        }
    }
    EXPECT_GT(pairs, 400);
}

TEST(ContainerRoundTrip, RefusalsNameTheContainersThatCan) {
    const struct {
        const char* container;
        std::uint32_t format;
        const char* others;
    } rows[] = {
        {"png", FMT_ETC1_RGB8, "ktx, dds, pkm, raw"},
        {"png", FMT_RGBA32F, "ktx, raw"},
        {"png", FMT_RGB565, "ktx, dds, raw"},
        {"dds", FMT_RGBA16F, "ktx, raw"},
        {"dds", FMT_P4_RGB565, "png, ktx, raw"},
        {"ktx", FMT_P1_RGBA8888, "png, raw"},
        {"ktx", FMT_L24A8, "dds, raw"},
        {"pkm", FMT_RGBA8888, "png, ktx, dds, raw"},
        {"pkm", FMT_ATITC_RGBA_EXPLICIT, "ktx, dds, raw"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.container);
        try {
            WriteContainer(*FindContainer(row.container), NoiseTexture(row.format, 4, 4), {});
            ADD_FAILURE() << "was written";
        } catch (const ToolError& error) {
            EXPECT_EQ(error.code(), ExitCode::kUnsupported);
            EXPECT_TRUE(std::string(error.what()).ends_with(std::string("these can: ") + row.others))
                << error.what();
        }
    }
}

TEST(Ktx1, TokensAreThoseOfTheExtensions) {
    const struct {
        std::uint32_t format, type, typeSize, layout, internal;
        bool amd;
    } rows[] = {
        {FMT_ATITC_RGB, 0, 1, 0, 0x8C92, false},
        {FMT_ATITC_RGBA_EXPLICIT, 0, 1, 0, 0x8C93, false},
        {FMT_ATITC_RGBA_INTERPOLATED, 0, 1, 0, 0x87EE, false},
        {FMT_ETC1_RGB8, 0, 1, 0, 0x8D64, false},
        {FMT_3DC_X, 0, 1, 0, 0x8DBB, false},
        {FMT_3DC_XY, 0, 1, 0, 0x8DBD, false},
        {FMT_3DC_X, 0, 1, 0, 0x87F9, true},
        {FMT_3DC_XY, 0, 1, 0, 0x87FA, true},
        {FMT_P4_RGB888, 0, 1, 0, 0x8B90, false},
        {FMT_P8_RGBA5551, 0, 1, 0, 0x8B99, false},
        {FMT_RGB565, 0x8363, 2, 0x1907, 0x8D62, false},
        {FMT_RGBA16F, 0x140B, 2, 0x1908, 0x881A, false},
        {FMT_L32F, 0x1406, 4, 0x1909, 0x8818, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(FindFormat(row.format)->name);
        const Bytes file =
            WriteContainer(*FindContainer("ktx"), NoiseTexture(row.format, 8, 4), {.ktxAmdTokens = row.amd});
        EXPECT_EQ(WordAt(file, 12), 0x04030201u);
        EXPECT_EQ(WordAt(file, 16), row.type);
        EXPECT_EQ(WordAt(file, 20), row.typeSize);
        EXPECT_EQ(WordAt(file, 24), row.layout);
        EXPECT_EQ(WordAt(file, 28), row.internal);
        EXPECT_EQ(WordAt(file, 36), 8u);
        EXPECT_EQ(WordAt(file, 40), 4u);
        EXPECT_EQ(WordAt(file, 52), 1u);
    }
}

TEST(Ktx1, RowsArePaddedAndTheOriginIsWritten) {
    TextureFile texture = NoiseTexture(FMT_RGB888, 3, 2);
    texture.origin = Origin::kBottomLeft;
    const Bytes file = WriteContainer(*FindContainer("ktx"), texture, {});
    const std::string key("\x17\0\0\0KTXorientation\0S=r,T=u\0\0", 28);
    EXPECT_EQ(WordAt(file, 60), key.size());
    EXPECT_EQ(std::string(file.begin() + 64, file.begin() + 64 + 28), key);
    EXPECT_EQ(WordAt(file, 92), 24u);  // two rows of 9 bytes, padded to 12
    ASSERT_EQ(file.size(), 96u + 24u);
    EXPECT_TRUE(std::equal(texture.levels[0].begin() + 9, texture.levels[0].end(), file.begin() + 96 + 12));
    Findings findings;
    EXPECT_EQ(FindContainer("ktx")->read(file, {}, findings).origin, Origin::kBottomLeft);
}

TEST(Ktx1, ReadsBigEndianFiles) {
    for (const std::uint32_t format : {FMT_RGB565, FMT_L32F, FMT_RGB888, FMT_ETC1_RGB8, FMT_RGBA16F}) {
        SCOPED_TRACE(FindFormat(format)->name);
        const TextureFile texture = NoiseTexture(format, 5, 4);
        Bytes file = WriteContainer(*FindContainer("ktx"), texture, {});
        Bytes head(file.begin() + 12, file.begin() + 68);  // 13 words and the pair's size
        const std::uint32_t typeSize = WordAt(file, 20);
        SwapBytes(head, 4);
        std::copy(head.begin(), head.end(), file.begin() + 12);
        Bytes tail(file.begin() + 92, file.end());
        Bytes sizeWord(tail.begin(), tail.begin() + 4);
        SwapBytes(sizeWord, 4);
        Bytes data(tail.begin() + 4, tail.end());
        if (typeSize > 1) {
            SwapBytes(data, typeSize);
        }
        std::copy(sizeWord.begin(), sizeWord.end(), file.begin() + 92);
        std::copy(data.begin(), data.end(), file.begin() + 96);
        Findings findings;
        const TextureFile back = FindContainer("ktx")->read(file, {}, findings);
        EXPECT_EQ(back.format, format);
        EXPECT_EQ(back.origin, Origin::kTopLeft);
        EXPECT_EQ(back.levels, texture.levels);
    }
}

TEST(Ktx1, FirstPaletteIndexLiesInTheHighNibble) {
    TextureFile texture = NoiseTexture(FMT_P4_RGB565, 2, 1);
    texture.levels[0].back() = 0x21;  // pixel 0 has index 1
    const Bytes file = WriteContainer(*FindContainer("ktx"), texture, {});
    EXPECT_EQ(file.at(file.size() - 4), 0x12);  // 33 bytes and 3 of padding
}

TEST(Ktx1, LevelsWithDifferentColourTablesAreRefused) {
    TextureFile texture = NoiseTexture(FMT_P8_RGB888, 4, 4, 3);
    texture.levels[2][0] ^= 1;
    EXPECT_THROW(WriteContainer(*FindContainer("ktx"), texture, {}), ToolError);
}

TEST(Dds, TwoChannelBlocksAreGreenFirstOnlyUnderAti2) {
    const TextureFile texture = NoiseTexture(FMT_3DC_XY, 4, 4);
    Bytes swapped = texture.levels[0];
    std::rotate(swapped.begin(), swapped.begin() + 8, swapped.end());
    const struct {
        DdsNames names;
        const char* fourCc;
        std::size_t header;
        const Bytes& blocks;
    } rows[] = {
        {DdsNames::kAti, "ATI2", 128, texture.levels[0]},
        {DdsNames::kBc, "BC5U", 128, swapped},
        {DdsNames::kDx10, "DX10", 148, swapped},
    };
    for (const auto& row : rows) {
        const Bytes file = WriteContainer(*FindContainer("dds"), texture, {.ddsNames = row.names});
        EXPECT_EQ(std::string(file.begin() + 84, file.begin() + 88), row.fourCc);
        EXPECT_EQ(Bytes(file.begin() + row.header, file.end()), row.blocks) << row.fourCc;
    }
    const Bytes ktx = WriteContainer(*FindContainer("ktx"), texture, {});
    EXPECT_EQ(Bytes(ktx.end() - 16, ktx.end()), swapped);
    const Bytes amd = WriteContainer(*FindContainer("ktx"), texture, {.ktxAmdTokens = true});
    EXPECT_EQ(Bytes(amd.end() - 16, amd.end()), texture.levels[0]);
}

TEST(Dds, ReadsTheOtherNameOfExplicitAlpha) {
    const TextureFile texture = NoiseTexture(FMT_ATITC_RGBA_EXPLICIT, 4, 4);
    Bytes file = WriteContainer(*FindContainer("dds"), texture, {});
    EXPECT_EQ(std::string(file.begin() + 84, file.begin() + 88), "ATCA");
    file[87] = 'E';
    Findings findings;
    const TextureFile back = FindContainer("dds")->read(file, {}, findings);
    EXPECT_EQ(back.format, FMT_ATITC_RGBA_EXPLICIT);
    EXPECT_EQ(back.levels, texture.levels);
}

TEST(Dds, ReadsMasksThatNoFormatHas) {
    // One pixel each: bits, four masks, its word, and the RGBA that comes out.
    const struct {
        const char* name;
        std::uint32_t flags, bits, red, green, blue, alpha, word;
        std::uint32_t format;
        Bytes pixel;
    } rows[] = {
        {"BGR888", 0x40, 24, 0xFF0000, 0xFF00, 0xFF, 0, 0x112233, FMT_RGB888, {0x11, 0x22, 0x33}},
        {"XRGB8888", 0x40, 32, 0xFF0000, 0xFF00, 0xFF, 0, 0x99112233, FMT_RGB888, {0x11, 0x22, 0x33}},
        {"ABGR8888",
         0x41,
         32,
         0xFF000000,
         0xFF0000,
         0xFF00,
         0xFF,
         0x11223344,
         FMT_RGBA8888,
         {0x11, 0x22, 0x33, 0x44}},
        {"ARGB1555", 0x41, 16, 0x7C00, 0x3E0, 0x1F, 0x8000, 0xFC00, FMT_RGBA8888, {0xFF, 0, 0, 0xFF}},
        {"ARGB4444", 0x41, 16, 0xF00, 0xF0, 0xF, 0xF000, 0x4123, FMT_RGBA8888, {0x11, 0x22, 0x33, 0x44}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Bytes file = WriteContainer(*FindContainer("dds"), NoiseTexture(FMT_RGBA8888, 1, 1), {});
        PatchWord(file, 80, row.flags);
        PatchWord(file, 88, row.bits);
        PatchWord(file, 92, row.red);
        PatchWord(file, 96, row.green);
        PatchWord(file, 100, row.blue);
        PatchWord(file, 104, row.alpha);
        PatchWord(file, 20, row.bits / 8);
        PatchWord(file, 128, row.word);
        file.resize(128 + row.bits / 8);
        Findings findings;
        const TextureFile back = FindContainer("dds")->read(file, {}, findings);
        EXPECT_EQ(back.format, row.format);
        EXPECT_EQ(back.levels.at(0), row.pixel);
    }
}

TEST(Pkm, HeaderIsBigEndianWithPaddedAndRealSize) {
    const Bytes file = WriteContainer(*FindContainer("pkm"), NoiseTexture(FMT_ETC1_RGB8, 5, 3), {});
    const Bytes header = {'P', 'K', 'M', ' ', '1', '0', 0, 0, 0, 8, 0, 4, 0, 5, 0, 3};
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 16), header);
    EXPECT_EQ(file.size(), 16u + 16u);
}

TEST(Png, SixteenBitSamplesBecomeWhatIsAskedFor) {
    TextureFile grey = NoiseTexture(FMT_L16, 1, 1);
    grey.levels[0] = {0x34, 0x12};
    const Container& png = *FindContainer("png");
    const Bytes file = WriteContainer(png, grey, {});
    Findings findings;
    const TextureFile top = png.read(file, {}, findings);
    EXPECT_EQ(top.format, FMT_L8);
    EXPECT_EQ(top.levels[0], Bytes{0x12});
    const TextureFile floats = png.read(file, {.deepSamples = DeepSamples::kFloat}, findings);
    EXPECT_EQ(floats.format, FMT_L32F);
    float value = 0;
    std::memcpy(&value, floats.levels[0].data(), sizeof value);
    EXPECT_EQ(value, 4660.0f / 65535.0f);
}

TEST(Png, WritesFloatsWithSixteenBitsWhenAsked) {
    const float values[] = {-1.0f, 0.5f, 7.0f, 1.0f};
    const std::uint16_t expected[] = {0, 32768, 65535, 65535};
    TextureFile texture = NoiseTexture(FMT_RGBA32F, 1, 1);
    std::memcpy(texture.levels[0].data(), values, sizeof values);
    const Container& png = *FindContainer("png");
    Findings findings;
    const Bytes file = WriteContainer(png, texture, {.pngDeepFloats = true});
    const TextureFile back = png.read(file, {.deepSamples = DeepSamples::kFloat}, findings);
    for (std::size_t i = 0; i < 4; ++i) {
        float value = 0;
        std::memcpy(&value, back.levels[0].data() + 4 * i, sizeof value);
        EXPECT_EQ(value, static_cast<float>(expected[i]) / 65535.0f) << i;
    }
}

TEST(Png, WidensSmallColourTableEntries) {
    TextureFile texture = NoiseTexture(FMT_P4_RGBA4444, 1, 1);
    texture.levels[0][0] = 0x34;  // entry 0 is 0x1234: R 1, G 2, B 3, A 4
    texture.levels[0][1] = 0x12;
    Findings findings;
    const Container& png = *FindContainer("png");
    const TextureFile back = png.read(WriteContainer(png, texture, {}), {}, findings);
    EXPECT_EQ(back.format, FMT_P4_RGBA8888);
    EXPECT_EQ(Bytes(back.levels[0].begin(), back.levels[0].begin() + 4), (Bytes{0x11, 0x22, 0x33, 0x44}));
}

#ifdef QONVERT_JPEG
TEST(Jpeg, ReadsGreyAndColour) {
    for (const bool grey : {true, false}) {
        Findings findings;
        const TextureFile texture = FindContainer("jpg")->read(JpegSample(17, 9, grey), {}, findings);
        EXPECT_EQ(texture.format, grey ? FMT_L8 : FMT_RGB888);
        EXPECT_EQ(texture.levels.at(0).size(), PictureBytes(texture.format, 17, 9));
        EXPECT_TRUE(findings.empty());
    }
}
#endif

}  // namespace
}  // namespace qonvert
