// Descriptor queries, checks, messages and the calls that convert nothing.
#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

TEST(Size, FollowsTheFormat) {
    struct Row {
        const char* what;
        std::uint32_t width, height, format, stride, bytes;
    };
    const Row rows[] = {
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
        {"64-bit product of a palette", 0x10001, 0x10000, FMT_P4_RGB888, 0, 0x80008000 + 48},
        {"bits beyond 64", 0xFFFFFFFF, 0xFFFFFFFF, FMT_P8_RGBA8888, 0, 1 + 1024},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        TestImage image(row.width, row.height, row.format, {}, Flags{.stride = row.stride});
        EXPECT_EQ(image.Size(), row.bytes);
        // A size query stores the same and touches nothing else.
        TQonvertImage* asked = image.Get();
        asked->nDataSize = 77;
        EXPECT_EQ(MessagesOf([&] { Qonvert(TestImage(1, 1, FMT_L8).Get(), asked); }), Messages{});
        EXPECT_EQ(asked->nDataSize, row.bytes);
    }
}

TEST(Info, TableValuesAgreeWithEachOther) {
    CImage query(nullptr, nullptr);
    for (const FormatInfo& format : kFormats) {
        SCOPED_TRACE(format.name);
        TQonvertImage image{7, 1, format.code, nullptr, 0, nullptr};
        const auto info = [&](TInfo what) { return query.ImgInfo(&image, what); };
        const bool masked = !format.IsCompressed() && !format.IsFloat();
        const std::uint32_t pixel = format.IsPalette() ? info(INFO_PALETTE_BITS) : info(INFO_BPP);
        const std::uint32_t masks =
            info(INFO_MASK_R) | info(INFO_MASK_G) | info(INFO_MASK_B) | info(INFO_MASK_A);
        // Channels fill the pixel word exactly, and alpha formats have an alpha mask.
        EXPECT_EQ(masks, masked ? static_cast<std::uint32_t>((std::uint64_t{1} << pixel) - 1) : 0);
        EXPECT_TRUE(!masked || (info(INFO_MASK_A) != 0) == (info(INFO_ALPHA) == 1));
        EXPECT_EQ(info(INFO_COMPRESSED) + 2 * info(INFO_FLOAT), format.IsCompressed() + 2 * format.IsFloat());
        EXPECT_TRUE(!format.IsFloat() || format.bitsPerPixel % (8 * format.floatBytes) == 0);
    }
}

TEST(Info, FlagsOverrideAndDefault) {
    CImage query(nullptr, nullptr);
    TQonvertImage image{10, 1, FMT_RGB565, nullptr, 0, nullptr};
    const auto infos = [&] {
        std::vector<std::uint32_t> values;
        for (std::uint32_t what = INFO_STRIDE; what <= INFO_MODE; ++what) {
            values.push_back(query.ImgInfo(&image, static_cast<TInfo>(what)));
        }
        return values;
    };
    using Words = std::vector<std::uint32_t>;
    EXPECT_EQ(infos(), (Words{20, 0xF800, 0x7E0, 0x1F, 0, 0, 0, 0, 0, 0, 10, 0, 0}));
    TFormatFlags flags{};
    image.pFormatFlags = &flags;
    EXPECT_EQ(infos(), (Words{20, 0xF800, 0x7E0, 0x1F, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const Words words{100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112};
    std::memcpy(&flags, words.data(), sizeof(flags));
    EXPECT_EQ(infos(), words);
    EXPECT_EQ(query.ImgInfo(nullptr, INFO_BPP), 0u);
    EXPECT_EQ(MessagesOf([&] { EXPECT_EQ(query.ImgInfo(&image, static_cast<TInfo>(18)), 0u); }),
              Messages{"ImgInfo missing info field"});
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
        Messages messages;
    };
    const std::string u = "ImgInfo unsupported pInput->nFormat";
    const std::string noSize = "ImgSize missing format";
    const Messages all{"m_pDst->nDataSize is to small", "m_pSrc->nWidth == 0", "m_pSrc->nHeight == 0",
                       "m_pSrc->nDataSize is smaller then the format suggests", "m_pSrc->pData == NULL"};
    const Row rows[] = {
        {"plain pair", {1, FMT_L8, 0, 1}, {1, FMT_A8, 0, 1}, CHECK_GENERIC, {}},
        {"float pair", {1, FMT_L16F, 0, 2}, {1, FMT_L32F, 0, 4}, CHECK_FLOAT, {}},
        {"from float", {1, FMT_L16F, 0, 2}, {1, FMT_L8, 0, 1}, CHECK_GENERIC, {}},
        {"to float", {1, FMT_L8, 0, 1}, {1, FMT_L16F, 0, 2}, CHECK_GENERIC, {}},
        {"all", {0, FMT_P8_RGB565, 0, 511, false}, {2, FMT_RGBA8888, 0, 15}, CHECK_GENERIC, all},
        {"quiet source", {0, FMT_L8, 1, 0, false}, {2, FMT_L8, 0, 1}, CHECK_GENERIC, {}},
        {"quiet destination", {0, FMT_L8, 3, 0, false}, {2, FMT_L8, 1, 1}, CHECK_GENERIC, {}},
        {"version before size", {0, 0, 2, 0, false}, {1, FMT_L8, 0, 0, false}, CHECK_VERSION, {u, u}},
        {"size before checks", {0, FMT_L8, 0, 0, false}, {1, FMT_L8, 0, 0, false}, CHECK_DATASIZE, {}},
        {"unsupported source", {1, 26, 0, 1}, {1, FMT_L8, 0, 1}, CHECK_GENERIC, {u, u, noSize, u}},
        {"unsupported from plain", {1, FMT_L8, 0, 1}, {1, 42, 0, 1}, CHECK_GENERIC, {u, u, noSize}},
        {"unsupported from float", {1, FMT_L32F, 0, 4}, {1, 0, 0, 1}, CHECK_GENERIC, {u, u, noSize, u}},
        {"quiet from the first answer on", {1, 26, 1, 1}, {1, 26, 0, 1}, CHECK_GENERIC, {u}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const auto imageOf = [](const Side& side) {
            return TestImage(side.size, side.size, side.format, Bytes(side.data ? side.bytes : 0),
                             Flags{.mode = side.mode});
        };
        TestImage source = imageOf(row.source);
        TestImage destination = imageOf(row.destination);
        CImage image(source.Get(), destination.Get());
        source.Get()->nDataSize = row.source.bytes;
        EXPECT_EQ(MessagesOf([&] { EXPECT_EQ(image.Input_Check(), row.path); }), row.messages);
    }
}

TEST(Version, IsStoredWhateverElseIsWrong) {
    for (const bool inSource : {true, false}) {
        TFormatFlags flags = Flags{.mode = 2};
        Bytes word(5, 0xEE);
        TQonvertImage source{0, 0, 77, inSource ? &flags : nullptr, 0, nullptr};
        TQonvertImage destination{0, 0, FMT_L8, inSource ? nullptr : &flags, 3, word.data()};
        const Messages messages = MessagesOf([&] { Qonvert(&source, &destination); });
        ASSERT_FALSE(messages.empty());
        EXPECT_EQ(messages.back(),
                  "nDataSize not large enough to hold version number. Should be sizeof(unsigned int)");
        EXPECT_EQ(word, (Bytes{2, 0, 2, 0, 0xEE}));
    }
}

TEST(Qonvert, WithoutSourcePixelsLeavesTheDestination) {
    for (const std::uint32_t format : {FMT_RGBA8888, FMT_RGB565, FMT_P4_RGB565, FMT_ETC1_RGB8, FMT_LA16F}) {
        TestImage destination(4, 4, format, {}, Flags{.mode = 1});
        const Bytes before = destination.Allocate(0xEE).Data();
        EXPECT_EQ(Convert(TestImage(4, 4, FMT_L8), destination), before);
        EXPECT_EQ(destination.DataSize(), before.size());
    }
    EXPECT_EQ(MessagesOf([] { Qonvert(nullptr, nullptr); }), Messages{"ImgSize missing format"});
}

TEST(Qonvert, SurvivesSizesThatNoMemoryHolds) {
    const std::uint32_t sizes[][2] = {{0xFFFFFFFF, 0xFFFFFFFF}, {0x10000, 0x10000}, {0x80000000, 1}};
    for (const auto& [width, height] : sizes) {
        for (const FormatInfo& format : kFormats) {
            for (const bool enlarge : {true, false}) {
                TestImage huge(width, height, format.code, Bytes(2048, 0xEE));
                TestImage one(1, 1, FMT_RGBA8888, Bytes(4, 0xEE));
                const Messages messages = MessagesOf(
                    [&] { enlarge ? Qonvert(one.Get(), huge.Get()) : Qonvert(huge.Get(), one.Get()); });
                ASSERT_FALSE(messages.empty()) << format.name;
                EXPECT_EQ(messages.back(), "Could not create memory") << format.name;
                EXPECT_EQ(huge.Data(), Bytes(2048, 0xEE)) << format.name;
                EXPECT_EQ(one.Data(), Bytes(4, 0xEE)) << format.name;
                EXPECT_EQ((enlarge ? huge : one).DataSize(), 0u) << format.name;
            }
        }
    }
}

}  // namespace
}  // namespace texconv_test
