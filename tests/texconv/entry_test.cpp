// Descriptor queries, checks, messages and the calls that convert nothing.
#include "tests/texconv/support.h"

extern "C" std::uint32_t ConvertFromC(const std::uint8_t* rgb565, std::uint8_t* rgba);

namespace texconv_test {
namespace {

const std::string kUnsupported = "ImgInfo unsupported pInput->nFormat";
const std::string kNoSize = "ImgSize missing format";

TEST(CInterface, ConvertsAPixel) {
    const std::uint8_t red[2] = {0x00, 0xF8};
    std::uint8_t rgba[4] = {1, 2, 3, 4};
    EXPECT_EQ(ConvertFromC(red, rgba), 0u);
    EXPECT_EQ((Bytes{rgba, rgba + 4}), (Bytes{255, 0, 0, 255}));
}

struct SizeRow {
    const char* what;
    std::uint32_t width, height, format, stride, bytes;
};

TEST(Size, FollowsTheFormat) {
    const SizeRow rows[] = {
        {"blocks round up", 5, 3, FMT_ATITC_RGB, 0, 16},
        {"interpolated alpha blocks", 4, 4, FMT_ATITC_RGBA_INTERPOLATED, 0, 16},
        {"one channel", 8, 4, FMT_3DC_X, 0, 16},
        {"two channels", 8, 5, FMT_3DC_XY, 0, 64},
        {"stride does not count for blocks", 8, 8, FMT_ETC1_RGB8, 999, 32},
        {"palette and indices", 256, 256, FMT_P8_RGB565, 0, 66048},
        {"unpadded nibbles", 3, 3, FMT_P4_RGB888, 0, 5 + 48},
        {"unpadded bits, stride ignored", 3, 3, FMT_P1_RGBA8888, 40, 2 + 8},
        {"plain with stride", 3, 2, FMT_RGB888, 12, 24},
        {"stride below the row", 3, 2, FMT_RGB888, 1, 2},
        {"half", 3, 3, FMT_RGB16F, 0, 54},
        {"empty", 0, 9, FMT_RGBA8888, 0, 0},
        {"64-bit product, low word", 0x10000, 0x10000, FMT_L16, 0, 0},
        {"64-bit product of a palette", 0x10001, 0x10000, FMT_P8_RGB888, 0, 0x10000 + 768},
        {"bits beyond 64", 0xFFFFFFFF, 0xFFFFFFFF, FMT_P8_RGBA8888, 0, 1 + 1024},
    };
    for (const SizeRow& row : rows) {
        SCOPED_TRACE(row.what);
        TestImage image(row.width, row.height, row.format);
        if (row.stride != 0) {
            image.With(&TFormatFlags::nStride, row.stride);
        }
        EXPECT_EQ(image.Size(), row.bytes);
        // A size query stores the same and touches nothing else.
        TestImage source(1, 1, FMT_L8);
        image.Data().clear();
        EXPECT_EQ(MessagesOf([&] { Qonvert(source.Get(), image.Get()); }), std::vector<std::string>{});
        EXPECT_EQ(image.DataSize(), row.bytes);
    }
}

TEST(Info, TableValuesAgreeWithEachOther) {
    CImage query(nullptr, nullptr);
    for (const FormatInfo& format : kFormats) {
        SCOPED_TRACE(format.name);
        TQonvertImage image{7, 1, format.code, nullptr, 0, nullptr};
        const std::uint32_t masks = query.ImgInfo(&image, INFO_MASK_R) | query.ImgInfo(&image, INFO_MASK_G) |
                                    query.ImgInfo(&image, INFO_MASK_B) | query.ImgInfo(&image, INFO_MASK_A);
        const std::uint32_t pixel = format.IsPalette() ? format.paletteBits : format.bitsPerPixel;
        const bool masked = !format.IsCompressed() && !format.IsFloat();
        // Channels fill the pixel word exactly, and alpha formats have an alpha mask.
        EXPECT_EQ(NumBitsSet(masks), masked ? pixel : 0);
        EXPECT_EQ(FirstBitSet(masks), 0u);
        if (masked) {
            EXPECT_EQ(query.ImgInfo(&image, INFO_MASK_A) != 0, query.ImgInfo(&image, INFO_ALPHA) == 1);
        }
        EXPECT_EQ(query.ImgInfo(&image, INFO_BPP), format.bitsPerPixel);
        EXPECT_EQ(query.ImgInfo(&image, INFO_PALETTE_BITS) != 0, format.IsPalette());
        EXPECT_EQ(query.ImgInfo(&image, INFO_COMPRESSED), format.IsCompressed() ? 1u : 0u);
        EXPECT_EQ(query.ImgInfo(&image, INFO_FLOAT), format.IsFloat() ? 1u : 0u);
        EXPECT_EQ(query.ImgInfo(&image, INFO_STRIDE), (format.bitsPerPixel * 7 + 7) / 8);
        if (format.IsFloat()) {
            EXPECT_EQ(format.bitsPerPixel % (8 * format.floatBytes), 0u);
        }
    }
}

TEST(Info, FlagsOverrideAndDefault) {
    CImage query(nullptr, nullptr);
    TQonvertImage image{10, 1, FMT_RGB565, nullptr, 0, nullptr};
    EXPECT_EQ(query.ImgInfo(&image, INFO_BUMPMAP_HEIGHT), 10u);
    for (std::uint32_t what = INFO_MIRROR_X; what <= INFO_MODE; ++what) {
        if (what != INFO_BUMPMAP_HEIGHT) {
            EXPECT_EQ(query.ImgInfo(&image, static_cast<TInfo>(what)), 0u) << what;
        }
    }
    TFormatFlags flags{};
    image.pFormatFlags = &flags;
    EXPECT_EQ(query.ImgInfo(&image, INFO_BUMPMAP_HEIGHT), 0u);
    EXPECT_EQ(query.ImgInfo(&image, INFO_STRIDE), 20u);
    EXPECT_EQ(query.ImgInfo(&image, INFO_MASK_G), 0x7E0u);
    // Word n answers property n + 5.
    std::uint32_t words[13];
    for (std::uint32_t i = 0; i < 13; ++i) {
        words[i] = 100 + i;
    }
    std::memcpy(&flags, words, sizeof(flags));
    for (std::uint32_t i = 0; i < 13; ++i) {
        EXPECT_EQ(query.ImgInfo(&image, static_cast<TInfo>(i + 5)), 100 + i);
    }
    EXPECT_EQ(query.ImgInfo(nullptr, INFO_BPP), 0u);
    EXPECT_EQ(MessagesOf([&] { EXPECT_EQ(query.ImgInfo(&image, static_cast<TInfo>(18)), 0u); }),
              std::vector<std::string>{"ImgInfo missing info field"});
}

TEST(Check, ReportsInOrderAndChoosesThePath) {
    struct Side {
        std::uint32_t size, format, mode, bytes;
        bool data = true;
    };
    struct Row {
        const char* what;
        Side source, destination;
        TCheck path;
        std::vector<std::string> messages;
    };
    const std::string& u = kUnsupported;
    const Row rows[] = {
        {"plain pair", {1, FMT_L8, 0, 1}, {1, FMT_A8, 0, 1}, CHECK_GENERIC, {}},
        {"float pair", {1, FMT_L16F, 0, 2}, {1, FMT_L32F, 0, 4}, CHECK_FLOAT, {}},
        {"from float", {1, FMT_L16F, 0, 2}, {1, FMT_L8, 0, 1}, CHECK_GENERIC, {}},
        {"to float", {1, FMT_L8, 0, 1}, {1, FMT_L16F, 0, 2}, CHECK_GENERIC, {}},
        {"everything wrong",
         {0, FMT_P8_RGB565, 0, 511, false},
         {2, FMT_RGBA8888, 0, 15},
         CHECK_GENERIC,
         {"m_pDst->nDataSize is to small", "m_pSrc->nWidth == 0", "m_pSrc->nHeight == 0",
          "m_pSrc->nDataSize is smaller then the format suggests", "m_pSrc->pData == NULL"}},
        {"quiet source", {0, FMT_L8, 1, 0, false}, {2, FMT_L8, 0, 1}, CHECK_GENERIC, {}},
        {"quiet destination", {0, FMT_L8, 3, 0, false}, {2, FMT_L8, 1, 1}, CHECK_GENERIC, {}},
        {"version before size", {0, 0, 2, 0, false}, {1, FMT_L8, 0, 0, false}, CHECK_VERSION, {u, u}},
        {"size before checks", {0, FMT_L8, 0, 0, false}, {1, FMT_L8, 0, 0, false}, CHECK_DATASIZE, {}},
        {"unsupported source", {1, 26, 0, 1}, {1, FMT_L8, 0, 1}, CHECK_GENERIC, {u, u, kNoSize, u}},
        {"unsupported from plain", {1, FMT_L8, 0, 1}, {1, 42, 0, 1}, CHECK_GENERIC, {u, u, kNoSize}},
        {"unsupported from float", {1, FMT_L32F, 0, 4}, {1, 0, 0, 1}, CHECK_GENERIC, {u, u, kNoSize, u}},
        {"quiet from the first answer on", {1, 26, 1, 1}, {1, 26, 0, 1}, CHECK_GENERIC, {u}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        std::uint8_t bytes[4] = {};
        const auto describe = [&bytes](const Side& side, TFormatFlags& flags) {
            flags.nMode = side.mode;
            return TQonvertImage{side.size, side.size,  side.format,
                                 &flags,    side.bytes, side.data ? bytes : nullptr};
        };
        TFormatFlags flags[2] = {};
        TQonvertImage source = describe(row.source, flags[0]);
        TQonvertImage destination = describe(row.destination, flags[1]);
        CImage image(&source, &destination);
        TCheck path{};
        EXPECT_EQ(MessagesOf([&] { path = image.Input_Check(); }), row.messages);
        EXPECT_EQ(path, row.path);
    }
}

TEST(Version, IsStoredWhateverElseIsWrong) {
    for (const bool inSource : {true, false}) {
        TFormatFlags flags{};
        flags.nMode = 2;
        Bytes word(5, 0xEE);
        TQonvertImage source{0, 0, 77, inSource ? &flags : nullptr, 0, nullptr};
        TQonvertImage destination{0, 0, FMT_L8, inSource ? nullptr : &flags, 3, word.data()};
        const auto messages = MessagesOf([&] { Qonvert(&source, &destination); });
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back(),
                  "nDataSize not large enough to hold version number. Should be sizeof(unsigned int)");
        EXPECT_EQ(word, (Bytes{2, 0, 2, 0, 0xEE}));
        EXPECT_EQ(destination.nDataSize, 3u);
    }
}

TEST(Qonvert, WithoutSourcePixelsLeavesTheDestination) {
    for (const std::uint32_t format : {FMT_RGBA8888, FMT_RGB565, FMT_P4_RGB565, FMT_ETC1_RGB8, FMT_LA16F}) {
        TestImage source(4, 4, FMT_L8);
        TestImage destination(4, 4, format);
        destination.Allocate(0xEE);
        const Bytes before = destination.Data();
        Qonvert(source.With(&TFormatFlags::nMode, 1).Get(), destination.Get());
        EXPECT_EQ(destination.Data(), before);
        EXPECT_EQ(destination.DataSize(), before.size());
    }
    EXPECT_EQ(MessagesOf([] { Qonvert(nullptr, nullptr); }), std::vector<std::string>{kNoSize});
}

TEST(Qonvert, SurvivesSizesThatNoMemoryHolds) {
    const std::uint32_t sizes[][2] = {{0xFFFFFFFF, 0xFFFFFFFF}, {0x10000, 0x10000}, {0x80000000, 1}};
    Bytes bytes(2048, 0xEE);
    Bytes pixel(4, 0xEE);
    for (const auto& size : sizes) {
        for (const FormatInfo& format : kFormats) {
            TQonvertImage huge{size[0], size[1], format.code, nullptr, 2048, bytes.data()};
            TQonvertImage one{1, 1, FMT_RGBA8888, nullptr, 4, pixel.data()};
            for (const bool enlarge : {true, false}) {
                const auto messages =
                    MessagesOf([&] { enlarge ? Qonvert(&one, &huge) : Qonvert(&huge, &one); });
                ASSERT_FALSE(messages.empty()) << format.name;
                EXPECT_EQ(messages.back(), "Could not create memory") << format.name;
                EXPECT_EQ(bytes, Bytes(2048, 0xEE)) << format.name;
                EXPECT_EQ(pixel, Bytes(4, 0xEE)) << format.name;
            }
        }
    }
}

}  // namespace
}  // namespace texconv_test
