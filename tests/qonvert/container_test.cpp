// What is written is read back, in every container and format, and lies in the file as readers expect it.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/qonvert/samples.h"
#include "tools/qonvert/dds_formats.h"

namespace qonvert {
namespace {

using QXTextureConverter::FindFormat;
using QXTextureConverter::kFormats;

const WriteOptions kAmd{.ktxAmdTokens = true};
const WriteOptions kBc{.ddsNames = DdsNames::kBc};
const WriteOptions kDx10{.ddsNames = DdsNames::kDx10};

TextureFile ReadBack(const char* container, const Bytes& file, const ReadOptions& options = {}) {
    Findings findings;
    TextureFile texture = FindContainer(container)->read(file, options, findings);
    EXPECT_TRUE(findings.empty()) << findings.front().Describe();
    return texture;
}

TEST(ContainerRoundTrip, EveryFormatSizeAndChain) {
    const std::pair<const char*, WriteOptions> variants[] = {{"ktx", {}},  {"ktx", kAmd},  {"dds", {}},
                                                             {"dds", kBc}, {"dds", kDx10}, {"pkm", {}},
                                                             {"png", {}},  {"raw", {}}};
    int pairs = 0;
    for (const auto& [name, options] : variants) {
        const Container& container = *FindContainer(name);
        for (const auto& row : kFormats) {
            // PNG widens 16-bit colour table entries; their test is below.
            if (!container.carries(row.code, options) || (container.name == "png" && row.paletteBits == 16)) {
                continue;
            }
            for (const auto& [width, height] : {std::pair{1u, 1u}, {5u, 3u}, {3u, 9u}, {8u, 8u}}) {
                SCOPED_TRACE(std::string(name) + " " + row.name + " " + std::to_string(width));
                const TextureFile texture =
                    NoiseTexture(row.code, width, height, container.levels ? FullChain(width, height) : 1);
                const Bytes file = WriteContainer(container, texture, options);
                const auto deep = row.code == FMT_L16 ? DeepSamples::kLuminance16 : DeepSamples::kTopByte;
                const TextureFile back = ReadBack(name, file, {deep, width, height, row.code});
                EXPECT_EQ(back.format, texture.format);
                EXPECT_EQ(back.width, width);
                EXPECT_EQ(back.height, height);
                EXPECT_EQ(back.levels, texture.levels);
                ++pairs;
            }
        }
    }
    EXPECT_GT(pairs, 400);
}

TEST(Containers, HeadersNameTheFormats) {
    const struct {
        const char* container;
        std::uint32_t format;
        WriteOptions options;
        std::size_t at;
        std::vector<std::uint32_t> words;
    } rows[] = {
        // KTX1: the byte order's word, glType, glTypeSize, glFormat, glInternalFormat.
        {"ktx", FMT_ATITC_RGB, {}, 12, {0x04030201, 0, 1, 0, 0x8C92}},
        {"ktx", FMT_ATITC_RGBA_EXPLICIT, {}, 16, {0, 1, 0, 0x8C93}},
        {"ktx", FMT_ATITC_RGBA_INTERPOLATED, {}, 16, {0, 1, 0, 0x87EE}},
        {"ktx", FMT_ETC1_RGB8, {}, 16, {0, 1, 0, 0x8D64}},
        {"ktx", FMT_3DC_X, {}, 16, {0, 1, 0, 0x8DBB}},
        {"ktx", FMT_3DC_XY, {}, 16, {0, 1, 0, 0x8DBD}},
        {"ktx", FMT_3DC_X, kAmd, 16, {0, 1, 0, 0x87F9}},
        {"ktx", FMT_3DC_XY, kAmd, 16, {0, 1, 0, 0x87FA}},
        {"ktx", FMT_P4_RGB888, {}, 16, {0, 1, 0, 0x8B90}},
        {"ktx", FMT_P8_RGBA5551, {}, 16, {0, 1, 0, 0x8B99}},
        {"ktx", FMT_RGB565, {}, 16, {0x8363, 2, 0x1907, 0x8D62}},
        {"ktx", FMT_RGBA16F, {}, 16, {0x140B, 2, 0x1908, 0x881A}},
        // And glBaseInternalFormat, sides, depth, elements, faces, levels, key/value bytes.
        {"ktx", FMT_L32F, {}, 16, {0x1406, 4, 0x1909, 0x8818, 0x1909, 8, 4, 0, 0, 1, 1, 28}},
        // DDS: flags, height, width, bytes of a row or of a level.
        {"dds", FMT_RGB565, {}, 4, {124, 0x100F, 4, 8, 16}},
        {"dds", FMT_ETC1_RGB8, {}, 4, {124, 0x81007, 4, 8, 16}},
        // The pixel format: its size, flags, FourCC, bits, masks; capabilities.
        {"dds", FMT_RGB565, {}, 76, {32, 0x40, 0, 16, 0xF800, 0x7E0, 0x1F, 0, 0x1000}},
        {"dds", FMT_RGB888, {}, 76, {32, 0x40, 0, 24, 0xFF0000, 0xFF00, 0xFF, 0}},
        {"dds", FMT_LA88, {}, 76, {32, 0x20001, 0, 16, 0xFF, 0, 0, 0xFF00}},
        {"dds", FMT_A8, {}, 76, {32, 2, 0, 8, 0, 0, 0, 0xFF}},
        {"dds", FMT_ATITC_RGB, {}, 76, {32, 4, FourCc("ATC ")}},
        {"dds", FMT_ATITC_RGBA_EXPLICIT, {}, 84, {FourCc("ATCA")}},
        {"dds", FMT_ATITC_RGBA_INTERPOLATED, {}, 84, {FourCc("ATCI")}},
        {"dds", FMT_ETC1_RGB8, {}, 84, {FourCc("ETC1")}},
        {"dds", FMT_3DC_X, {}, 84, {FourCc("ATI1")}},
        {"dds", FMT_3DC_XY, {}, 84, {FourCc("ATI2")}},
        {"dds", FMT_3DC_X, kBc, 84, {FourCc("BC4U")}},
        {"dds", FMT_3DC_XY, kBc, 84, {FourCc("BC5U")}},
        {"dds", FMT_3DC_XY, kDx10, 84, {FourCc("DX10")}},
        {"dds", FMT_3DC_XY, kDx10, 128, {83, 3, 0, 1, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.container) + " " + FindFormat(row.format)->name);
        const Bytes file = NoiseFile(row.container, row.format, 8, 4, row.options);
        Bytes expected(4 * row.words.size());
        for (std::size_t i = 0; i < row.words.size(); ++i) {
            PatchWord(expected, 4 * i, row.words[i]);
        }
        EXPECT_EQ(Part(file, row.at, expected.size()), expected);
    }
}

TEST(Containers, PixelsLieAsReadersExpect) {
    const Bytes palette(32), half = {1, 2, 3, 4, 5, 6, 7, 8}, other = {11, 12, 13, 14, 15, 16, 17, 18};
    const Bytes pkm = {'P', 'K', 'M', ' ', '1', '0', 0, 0, 0, 8, 0, 4, 0, 5, 0, 3};
    const auto join = [](Bytes a, const Bytes& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    const Bytes greenFirst = join(half, other), redFirst = join(other, half);
    const struct {
        const char* name;
        const char* container;
        WriteOptions options;
        std::uint32_t format, width, height;
        std::vector<Bytes> levels;
        std::size_t at;
        Bytes expected;
    } rows[] = {
        {"padded rows", "ktx", {}, FMT_RGB888, 1, 2, {{1, 2, 3, 4, 5, 6}}, 96, {1, 2, 3, 0, 4, 5, 6, 0}},
        {"level order", "ktx", {}, FMT_L8, 2, 1, {{1, 2}, {3}}, 96, {1, 2, 0, 0, 4, 0, 0, 0, 3, 0, 0, 0}},
        {"level order", "dds", {}, FMT_L8, 2, 1, {{1, 2}, {3}}, 128, {1, 2, 3}},
        {"index order", "ktx", {}, FMT_P4_RGB565, 2, 1, {join(palette, {0x21})}, 128, {0x12, 0, 0, 0}},
        {"luminance before alpha", "ktx", {}, FMT_LA88, 1, 1, {{0xAA, 0x11}}, 96, {0x11, 0xAA, 0, 0}},
        {"luminance before alpha", "dds", {}, FMT_LA88, 1, 1, {{0xAA, 0x11}}, 128, {0x11, 0xAA}},
        {"blue first", "dds", {}, FMT_RGB888, 1, 1, {{1, 2, 3}}, 128, {3, 2, 1}},
        {"green block first", "dds", {}, FMT_3DC_XY, 4, 4, {greenFirst}, 128, greenFirst},
        {"red block first", "dds", kBc, FMT_3DC_XY, 4, 4, {greenFirst}, 128, redFirst},
        {"red block first", "dds", kDx10, FMT_3DC_XY, 4, 4, {greenFirst}, 148, redFirst},
        {"green block first", "ktx", kAmd, FMT_3DC_XY, 4, 4, {greenFirst}, 96, greenFirst},
        {"red block first", "ktx", {}, FMT_3DC_XY, 4, 4, {greenFirst}, 96, redFirst},
        {"padded and real sides", "pkm", {}, FMT_ETC1_RGB8, 5, 3, {greenFirst}, 0, join(pkm, greenFirst)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.container) + ": " + row.name);
        const TextureFile texture{row.format, row.width, row.height, Origin::kTopLeft, "", row.levels};
        const Bytes file = WriteContainer(*FindContainer(row.container), texture, row.options);
        EXPECT_EQ(Part(file, row.at, row.expected.size()), row.expected);
        EXPECT_EQ(ReadBack(row.container, file).levels, row.levels);
    }
}

TEST(Ktx1, OriginsAreWordsOfTheFile) {
    for (const auto& [origin, letter] : {std::pair{Origin::kTopLeft, 'd'}, {Origin::kBottomLeft, 'u'}}) {
        TextureFile texture = NoiseTexture(FMT_L8, 1, 1);
        texture.origin = origin;
        const Bytes file = WriteContainer(*FindContainer("ktx"), texture, {});
        const std::string pair = std::string("\x17\0\0\0KTXorientation\0S=r,T=", 26 - 1) + letter + '\0';
        EXPECT_EQ(Part(file, 64, pair.size()), Bytes(pair.begin(), pair.end()));
        EXPECT_EQ(ReadBack("ktx", file).origin, origin);
    }
}

TEST(Ktx1, ReadsBigEndianFiles) {
    for (const std::uint32_t format : {FMT_RGB565, FMT_L32F, FMT_RGB888, FMT_ETC1_RGB8, FMT_RGBA16F}) {
        SCOPED_TRACE(FindFormat(format)->name);
        Bytes file = NoiseFile("ktx", format, 4, 4);
        const auto swap = [&](std::size_t from, std::size_t to, std::size_t size) {
            for (; size > 1 && from < to; from += size) {
                std::reverse(file.begin() + from, file.begin() + from + size);
            }
        };
        swap(96, file.size(), file[20]);  // of the type's size
        swap(92, 96, 4);
        swap(12, 68, 4);  // the header, and the size of the key/value pair
        const TextureFile back = ReadBack("ktx", file);
        EXPECT_EQ(back.origin, Origin::kTopLeft);
        EXPECT_EQ(back.levels, NoiseTexture(format, 4, 4).levels);
    }
}

TEST(Ktx1, LevelsWithDifferentColourTablesAreRefused) {
    TextureFile texture = NoiseTexture(FMT_P8_RGB888, 4, 4, 3);
    texture.levels[2][0] ^= 1;
    EXPECT_THROW(WriteContainer(*FindContainer("ktx"), texture, {}), ToolError);
}

TEST(Dds, ReadsWhatItDoesNotWrite) {
    // One pixel or block under another FourCC, or under masks that no format has: flags, FourCC, bits, masks.
    const struct {
        const char* name;
        std::vector<std::uint32_t> words;
        Bytes data;
        std::uint32_t format;
        Bytes expected;
    } rows[] = {
        {"ATCE", {4, FourCc("ATCE"), 0, 0, 0, 0, 0}, Bytes(16, 7), FMT_ATITC_RGBA_EXPLICIT, Bytes(16, 7)},
        {"XRGB", {0x40, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0}, {3, 2, 1, 9}, FMT_RGB888, {1, 2, 3}},
        {"ABGR", {0x41, 0, 32, 0xFF000000, 0xFF0000, 0xFF00, 0xFF}, {4, 3, 2, 1}, FMT_RGBA8888, {1, 2, 3, 4}},
        {"ARGB1555", {0x41, 0, 16, 0x7C00, 0x3E0, 0x1F, 0x8000}, {0, 0xFC}, FMT_RGBA8888, {255, 0, 0, 255}},
        {"ARGB4444", {0x41, 0, 16, 0xF00, 0xF0, 0xF, 0xF000}, {0x23, 0x41}, FMT_RGBA8888, {17, 34, 51, 68}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Bytes file = NoiseFile("dds", FMT_RGBA8888, 1, 1);
        for (std::size_t i = 0; i < row.words.size(); ++i) {
            PatchWord(file, 80 + 4 * i, row.words[i]);
        }
        PatchWord(file, 20, static_cast<std::uint32_t>(row.data.size()));
        file.resize(128);
        file.insert(file.end(), row.data.begin(), row.data.end());
        const TextureFile back = ReadBack("dds", file);
        EXPECT_EQ(back.format, row.format);
        EXPECT_EQ(back.levels.at(0), row.expected);
    }
}

float FloatAt(const Bytes& bytes, std::size_t index) {
    float value = 0;
    std::memcpy(&value, bytes.data() + 4 * index, sizeof value);
    return value;
}

TEST(Png, SamplesOfSixteenBits) {
    TextureFile grey{FMT_L16, 1, 1, Origin::kTopLeft, "", {{0x34, 0x12}}};
    const Bytes file = WriteContainer(*FindContainer("png"), grey, {});
    const TextureFile top = ReadBack("png", file);
    EXPECT_EQ(top.format, FMT_L8);
    EXPECT_EQ(top.levels[0], Bytes{0x12});
    const TextureFile floats = ReadBack("png", file, {.deepSamples = DeepSamples::kFloat});
    EXPECT_EQ(floats.format, FMT_L32F);
    EXPECT_EQ(FloatAt(floats.levels[0], 0), 4660.0f / 65535.0f);
    // Floats are cut to 0..1 when they are written.
    const float values[] = {-1.0f, 0.5f, 7.0f, 1.0f};
    const float expected[] = {0, 32768 / 65535.0f, 1, 1};
    TextureFile texture = NoiseTexture(FMT_RGBA32F, 1, 1);
    std::memcpy(texture.levels[0].data(), values, sizeof values);
    const TextureFile back =
        ReadBack("png", WriteContainer(*FindContainer("png"), texture, {.pngDeepFloats = true}),
                 {.deepSamples = DeepSamples::kFloat});
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(FloatAt(back.levels[0], i), expected[i]) << i;
    }
}

TEST(Png, WidensSmallColourTableEntries) {
    TextureFile texture = NoiseTexture(FMT_P4_RGBA4444, 1, 1);
    PatchWord(texture.levels[0], 0, 0x1234);  // entry 0: R 1, G 2, B 3, A 4
    const TextureFile back = ReadBack("png", WriteContainer(*FindContainer("png"), texture, {}));
    EXPECT_EQ(back.format, FMT_P4_RGBA8888);
    EXPECT_EQ(Part(back.levels[0], 0, 4), (Bytes{0x11, 0x22, 0x33, 0x44}));
}

#ifdef QONVERT_JPEG
TEST(Jpeg, ReadsGreyAndColour) {
    for (const bool grey : {true, false}) {
        const TextureFile texture = ReadBack("jpg", JpegSample(17, 9, grey));
        EXPECT_EQ(texture.format, grey ? FMT_L8 : FMT_RGB888);
        EXPECT_EQ(texture.levels.at(0).size(), PictureBytes(texture.format, 17, 9));
    }
}
#endif

}  // namespace
}  // namespace qonvert
