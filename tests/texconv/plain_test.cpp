// Plain and palette pixels through the 8-bit pipeline, rows and orientation.
#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

TEST(Plain, Channels) {
    const Bytes wide{0xFF, 0xFF, 0xFF, 0x7E};
    ExpectConversions({
        {"5 and 6 bits repeat", {1, 1, FMT_RGB565, {0xAA, 0xAA}}, {1, 1, FMT_RGBA8888}, {173, 85, 82, 255}},
        {"1 bit is 0 or 255",
         {2, 1, FMT_RGBA5551, {0xAA, 0xAA, 0x55, 0x55}},
         {2, 1, FMT_RGBA8888},
         {173, 82, 173, 0, 82, 173, 82, 255}},
        {"4 bits repeat", {1, 1, FMT_RGBA4444, {0x34, 0x12}}, {1, 1, FMT_RGBA8888}, {0x11, 0x22, 0x33, 0x44}},
        {"A8 is black", {1, 1, FMT_A8, {0x80}}, {1, 1, FMT_RGBA8888}, {0, 0, 0, 0x80}},
        {"wide luminance reads 0", {1, 1, FMT_L16, {0xFF, 0xFF}}, {1, 1, FMT_RGBA8888}, {0, 0, 0, 255}},
        {"beside it, alpha reads", {1, 1, FMT_L24A8, wide}, {1, 1, FMT_RGBA8888}, {0, 0, 0, 0x7E}},
        {"wide luminance writes 0", {1, 1, FMT_RGBA8888, {9, 8, 7, 6}}, {1, 1, FMT_L24A8}, {0, 0, 0, 6}},
        {"luminance by OR", {1, 1, FMT_RGB888, {0x10, 0x20, 0x40}}, {1, 1, FMT_LA88}, {0xFF, 0x70}},
        {"packing truncates", {1, 1, FMT_RGB888, {0x7F, 0xFF, 0x07}}, {1, 1, FMT_RGB565}, {0xE0, 0x7F}},
        {"BGRA swaps", {1, 1, FMT_BGRA8888, {1, 2, 3, 4}}, {1, 1, FMT_RGBA8888}, {3, 2, 1, 4}},
        {"2 and 3 bits are not widened, alpha is opaque without a mask",
         {1, 1, FMT_L8, {0b11101001}, Flags{.red = 0x03, .green = 0x1C, .blue = 0xE0}},
         {1, 1, FMT_RGBA8888},
         {0x40, 0x40, 0xE0, 255}},
        {"12 bits write 0, 8 bits anywhere are kept",
         {1, 1, FMT_RGBA8888, {0xAB, 0xFF, 0xFF, 0x00}},
         {1, 1, FMT_RGB888, {}, Flags{.red = 0xFF0, .green = 0xFFF000, .blue = 0x1}},
         {0xB1, 0x0A, 0}},
    });
}

// A word is the four bytes from the pixel's first on; those beyond the image read as 0.
TEST(Plain, MasksBeyondThePixelReadTheBytesBehindIt) {
    Bytes palette{0, 0, 0, 0, 0x33};
    palette.resize(2 * 256);
    palette.push_back(1);
    ExpectConversions({
        {"a byte",
         {2, 1, FMT_L8, {0x11, 0x22}, Flags{.red = 0xFF00, .green = 0xFF0000}},
         {2, 1, FMT_RGBA8888},
         {0x22, 0, 0x11, 255, 0, 0, 0x22, 255}},
        {"three bytes",
         {2, 1, FMT_RGB888, {1, 2, 3, 4, 5, 6}, Flags{.red = 0xFF000000}},
         {2, 1, FMT_RGBA8888},
         {4, 2, 3, 255, 0, 5, 6, 255}},
        {"a table's entry",
         {1, 1, FMT_P8_RGB565, palette, Flags{.red = 0xFF0000}},
         {1, 1, FMT_RGBA8888},
         {0x33, 0, 0, 255}},
    });
}

TEST(Plain, MaskBits) {
    EXPECT_EQ(NumBitsSet(0x8001F00Ful), 10u);
    EXPECT_EQ(FirstBitSet(0x80000000ul), 31u);
    EXPECT_EQ(FirstBitSet(0), 0u);
}

TEST(Plain, Every16BitPixelComesBack) {
    for (const std::uint32_t format : {FMT_RGB565, FMT_RGBA5551, FMT_RGBA4444, FMT_LA88}) {
        const Bytes rgba = Convert({256, 256, format, BytesOf(EveryWord())}, FMT_RGBA8888);
        EXPECT_EQ(Convert({256, 256, FMT_RGBA8888, rgba}, format), BytesOf(EveryWord()));
    }
}

TEST(Plain, DataSizeIsWrittenExceptByThePackedCopy) {
    struct Row {
        std::uint32_t format;
        Flags flags;
        std::uint32_t size;
    };
    for (const Row& row : {Row{FMT_RGBA8888, {}, 20}, Row{FMT_RGBA8888, {.stride = 12, .red = 0xFF}, 20},
                           Row{FMT_RGBA8888, {.stride = 16}, 16}, Row{FMT_RGBA8888, {.red = 0x7F}, 12},
                           Row{FMT_BGRA8888, {}, 12}, Row{FMT_BGRA8888, {.red = 0xFF, .blue = 0xFF0000}, 12},
                           Row{FMT_RGB888, {.stride = 12}, 12}}) {
        TestImage destination(3, 1, row.format, Bytes(20, 0xEE), row.flags);
        Convert({3, 1, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8, 9}}, destination);
        EXPECT_EQ(destination.DataSize(), row.size);
    }
}

TEST(Plain, Strides) {
    const Bytes padded{1,  2,  3,  4,  5,  6,  7,  8,  9,  99, 99,  //
                       11, 12, 13, 14, 15, 16, 17, 18, 19, 99, 99};
    const TestImage packed(3, 2, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    std::vector<ConversionCase> cases{
        {"tails are neither read nor written",
         {3, 2, FMT_RGB888, padded, Flags{.stride = 11}},
         {3, 2, FMT_RGB888, {}, Flags{.stride = 12}},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 0xEE, 0xEE, 0xEE, 11, 12, 13, 14, 15, 16, 17, 18, 19, 0xEE, 0xEE, 0xEE}},
        // A stride below the row makes rows overlap; the room that the size rule asks for ends inside the
        // last.
        {"what lies beyond reads as 0",
         {3, 2, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8}, Flags{.stride = 4}},
         {3, 2, FMT_RGBA8888},
         {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 0, 255, 5, 6, 7, 255, 8, 0, 0, 255, 0, 0, 0, 255}},
        {"also where a mask reaches beyond the pixel",
         {3, 2, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8}, Flags{.stride = 4, .red = 0xFF000000}},
         {3, 2, FMT_RGBA8888},
         {4, 2, 3, 255, 7, 5, 6, 255, 0, 8, 0, 255, 8, 6, 7, 255, 0, 0, 0, 255, 0, 0, 0, 255}},
    };
    const Bytes written{1, 2, 3, 4, 11, 12, 13, 14, 15, 16, 17, 18, 19};
    for (const std::ptrdiff_t room : {8, 11, 13}) {
        cases.push_back({"nothing is written beyond the room",
                         packed,
                         {3, 2, FMT_RGB888, Bytes(static_cast<std::size_t>(room), 0xEE), Flags{.stride = 4}},
                         Bytes(written.begin(), written.begin() + room)});
    }
    ExpectConversions(cases);
}

TEST(Plain, SizesTooSmallAreReportedAndIgnored) {
    TestImage source(2, 1, FMT_L8, {7, 9});
    TestImage destination(2, 1, FMT_L8, {0, 0});
    TQonvertImage from = *source.Get();
    TQonvertImage to = *destination.Get();
    from.nDataSize = 0;
    to.nDataSize = 1;
    EXPECT_EQ(
        MessagesOf([&] { Qonvert(&from, &to); }),
        (Messages{"m_pDst->nDataSize is to small", "m_pSrc->nDataSize is smaller then the format suggests"}));
    EXPECT_EQ(destination.Data(), (Bytes{7, 9}));
    EXPECT_EQ(to.nDataSize, 2u);
}

TEST(Plain, UnsupportedFormats) {
    TestImage pixels(2, 2, FMT_RGBA8888, Random(3).Fill(16));
    TestImage unsupported(2, 2, 26, Bytes(8, 0xEE), Flags{.stride = 4, .green = 0xFF});
    MessagesOf([&] { Qonvert(pixels.Get(), unsupported.Get()); });
    // The last pixel of each row on its first byte.
    EXPECT_EQ(unsupported.Data(),
              (Bytes{pixels.Data()[5], 0xEE, 0xEE, 0xEE, pixels.Data()[13], 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(unsupported.DataSize(), 8u);
    // All pixels are the first four bytes.
    TestImage source(2, 1, 26, {0x11, 0x22}, Flags{.red = 0xFF, .green = 0xFF00});
    TestImage two(2, 1, FMT_RGBA8888);
    MessagesOf([&] { Qonvert(source.Get(), two.Allocate().Get()); });
    EXPECT_EQ(two.Data(), (Bytes{0x11, 0x22, 0, 255, 0x11, 0x22, 0, 255}));
}

TEST(Flip, MovesPixelsWhenOrientationsDisagree) {
    struct Row {
        Flags source, destination;
        Bytes result;
    };
    const Bytes image{1, 2, 3, 4, 5, 6};
    for (const Row& row :
         {Row{{.flipY = 1}, {.flipY = 1}, image}, Row{{.mirrorX = 3}, {.mirrorX = 5}, image},
          Row{{}, {.flipY = 5}, {4, 5, 6, 1, 2, 3}}, Row{{.mirrorX = 1}, {}, {3, 2, 1, 6, 5, 4}},
          Row{{.mirrorX = 1}, {.flipY = 2}, {6, 5, 4, 3, 2, 1}}}) {
        const auto floats = [](const Bytes& bytes) {
            return BytesOf(std::vector<float>(bytes.begin(), bytes.end()));
        };
        ExpectConversions(
            {{"bytes", {3, 2, FMT_L8, image, row.source}, {3, 2, FMT_L8, {}, row.destination}, row.result},
             {"floats",
              {3, 2, FMT_L32F, floats(image), row.source},
              {3, 2, FMT_L32F, {}, row.destination},
              floats(row.result)}});
    }
}

TEST(Qonvert, SharesOneBuffer) {
    const Bytes pixels{0x00, 0xF8, 0x1F, 0x00, 0xE0, 0x07, 0xFF, 0xFF};
    Bytes shared = pixels;
    shared.resize(16);
    TQonvertImage narrow{2, 2, FMT_RGB565, nullptr, 16, shared.data()};
    TQonvertImage wide{2, 2, FMT_RGBA8888, nullptr, 16, shared.data()};
    Qonvert(&narrow, &wide);
    EXPECT_EQ(shared, (Bytes{255, 0, 0, 255, 0, 0, 255, 255, 0, 255, 0, 255, 255, 255, 255, 255}));
    Qonvert(&wide, &narrow);
    EXPECT_EQ(Bytes(shared.begin(), shared.begin() + 8), pixels);
}

TEST(PaletteInput, TableAndIndices) {
    Bytes reds;    // entry i: 565 red i
    Bytes alphas;  // entry i: alpha i + 1
    for (std::uint8_t i = 0; i < 16; ++i) {
        reds.insert(reds.end(), {0, static_cast<std::uint8_t>(i << 3)});
        alphas.insert(alphas.end(), {0, 0, 0, static_cast<std::uint8_t>(i + 1)});
    }
    const auto with = [](Bytes table, const Bytes& indices) {
        table.insert(table.end(), indices.begin(), indices.end());
        return table;
    };
    ExpectConversions({
        {"nibbles start low", {2, 1, FMT_P4_RGB565, with(reds, {0x21})}, {2, 1, FMT_RGB565}, {0, 8, 0, 16}},
        {"bits start low",
         {10, 1, FMT_P1_RGBA8888, {1, 1, 1, 1, 9, 9, 9, 9, 0b00000101, 0b10}},
         {10, 1, FMT_A8},
         {9, 1, 9, 1, 1, 1, 1, 1, 1, 9}},
        // Three pixels take two bytes a row, though the size counts packed nibbles: the room of that size
        // ends before the last row, whose indices then read as 0.
        {"rows start at bytes",
         {3, 3, FMT_P4_RGBA8888, with(alphas, {0x21, 0x03, 0x54, 0x06, 0x87, 0x09})},
         {3, 3, FMT_A8},
         {2, 3, 4, 5, 6, 7, 8, 9, 10}},
        {"indices beyond the room read as 0",
         {3, 3, FMT_P4_RGBA8888, with(alphas, {0x21, 0x03, 0x54, 0x06, 0x87})},
         {3, 3, FMT_A8},
         {2, 3, 4, 5, 6, 7, 8, 9, 1}},
        {"the stride moves rows, masks are those of the table's entries",
         {2, 2, FMT_P4_RGBA8888, with(alphas, {0x21, 0xEE, 0xEE, 0x43}),
          Flags{.stride = 3, .red = 0xFF000000, .alpha = 0xFF}},
         {2, 2, FMT_L8},
         {2, 3, 4, 5}},
    });
}

}  // namespace
}  // namespace texconv_test
