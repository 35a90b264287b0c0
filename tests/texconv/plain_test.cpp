// Plain and palette pixels through the 8-bit pipeline, rows and orientation.
#include <functional>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

struct PixelRow {
    const char* what;
    std::uint32_t from;
    Bytes pixel;
    std::uint32_t to;
    Bytes result;
};

TEST(Plain, OnePixel) {
    const PixelRow rows[] = {
        {"565 red comes back", FMT_RGB565, {0x00, 0xF8}, FMT_RGB565, {0x00, 0xF8}},
        {"A8 is black", FMT_A8, {0x80}, FMT_RGBA8888, {0, 0, 0, 0x80}},
        {"A8 to L8", FMT_A8, {0x80}, FMT_L8, {0}},
        {"L16 reads 0", FMT_L16, {0xFF, 0xFF}, FMT_RGBA8888, {0, 0, 0, 255}},
        {"L24 reads 0", FMT_L24, {0xFF, 0xFF, 0xFF}, FMT_RGBA8888, {0, 0, 0, 255}},
        {"L24A8 keeps alpha", FMT_L24A8, {0xFF, 0xFF, 0xFF, 0x7E}, FMT_RGBA8888, {0, 0, 0, 0x7E}},
        {"L24A8 writes alpha", FMT_RGBA8888, {9, 8, 7, 6}, FMT_L24A8, {0, 0, 0, 6}},
        {"L16 writes 0", FMT_RGBA8888, {9, 8, 7, 6}, FMT_L16, {0, 0}},
        {"luminance by OR", FMT_RGBA8888, {0x10, 0x20, 0x40, 0xFF}, FMT_L8, {0x70}},
        {"luminance and alpha by OR", FMT_RGBA8888, {0x10, 0x20, 0x40, 0xFF}, FMT_LA88, {0xFF, 0x70}},
        {"packing truncates", FMT_RGBA8888, {0x7F, 0xFF, 0x07, 0xFF}, FMT_RGB565, {0xE0, 0x7F}},
        {"BGRA swaps", FMT_BGRA8888, {1, 2, 3, 4}, FMT_RGBA8888, {3, 2, 1, 4}},
        {"to BGRA", FMT_RGB888, {1, 2, 3}, FMT_BGRA8888, {3, 2, 1, 255}},
        {"unsupported source is opaque black", 26, {1}, FMT_RGBA8888, {0, 0, 0, 255}},
    };
    for (const PixelRow& row : rows) {
        SCOPED_TRACE(row.what);
        TestImage source(1, 1, row.from, row.pixel);
        TestImage destination(1, 1, row.to);
        destination.Allocate(0xEE);
        MessagesOf([&] { Qonvert(source.Get(), destination.Get()); });
        EXPECT_EQ(destination.Data(), row.result);
    }
}

// 8-bit value of an n-bit channel, by exact repetition.
std::uint8_t Widen(std::uint32_t value, std::uint32_t bits) {
    switch (bits) {
        case 1:
            return static_cast<std::uint8_t>(value * 255);
        case 4:
            return static_cast<std::uint8_t>(value * 17);
        default:
            return static_cast<std::uint8_t>(value << (8 - bits) | value >> (2 * bits - 8));
    }
}

TEST(Plain, Every16BitPixelReadsAndComesBack) {
    struct Layout {
        std::uint32_t format, bits[4], shifts[4];
    };
    const Layout layouts[] = {{FMT_RGB565, {5, 6, 5, 0}, {11, 5, 0, 0}},
                              {FMT_RGBA5551, {5, 5, 5, 1}, {11, 6, 1, 0}},
                              {FMT_RGBA4444, {4, 4, 4, 4}, {12, 8, 4, 0}},
                              {FMT_LA88, {8, 8, 8, 8}, {8, 8, 8, 0}}};
    Bytes all(2 * 65536);
    for (std::size_t i = 0; i < 65536; ++i) {
        all[2 * i] = static_cast<std::uint8_t>(i);
        all[2 * i + 1] = static_cast<std::uint8_t>(i >> 8);
    }
    for (const Layout& layout : layouts) {
        const Bytes rgba = Convert(TestImage(256, 256, layout.format, all), FMT_RGBA8888);
        for (std::uint32_t word = 0; word < 65536; ++word) {
            for (std::size_t c = 0; c < 4; ++c) {
                const std::uint32_t bits = layout.bits[c];
                const std::uint32_t value = word >> layout.shifts[c] & ((1u << bits) - 1);
                ASSERT_EQ(rgba[word * 4 + c], bits == 0 ? 255 : Widen(value, bits)) << word << " " << c;
            }
        }
        EXPECT_EQ(Convert(TestImage(256, 256, FMT_RGBA8888, rgba), layout.format), all);
    }
}

TEST(Plain, MasksOverrideTheFormat) {
    // Two bits of red are not widened, three of green neither, alpha is opaque without a mask.
    TestImage source(1, 1, FMT_L8, {0b11101001});
    source.With(&TFormatFlags::nMaskRed, 0x03)
        .With(&TFormatFlags::nMaskGreen, 0x1C)
        .With(&TFormatFlags::nMaskBlue, 0xE0);
    TestImage rgba(1, 1, FMT_RGBA8888);
    EXPECT_EQ(Convert(source, rgba.Allocate()), (Bytes{0x40, 0x40, 0xE0, 255}));

    // Writing: 12 bits of green give 0, an 8-bit red at bit 4 is kept, and the size is set.
    TestImage pixel(1, 1, FMT_RGBA8888, {0xAB, 0xFF, 0xFF, 0x00});
    TestImage wide(1, 1, FMT_RGB888);
    wide.With(&TFormatFlags::nMaskRed, 0xFF0)
        .With(&TFormatFlags::nMaskGreen, 0xFFF000)
        .With(&TFormatFlags::nMaskBlue, 0x1);
    EXPECT_EQ(Convert(pixel, wide.Allocate(0xEE)), (Bytes{0xB1, 0x0A, 0}));
    EXPECT_EQ(wide.DataSize(), 3u);
}

// A word is the four bytes from the pixel's first on; those beyond the image read as 0.
TEST(Plain, MasksBeyondThePixelReadTheBytesBehindIt) {
    struct Row {
        const char* what;
        std::uint32_t format, red, green;
        Bytes data, rgba;
    };
    const Row rows[] = {
        {"L8", FMT_L8, 0xFF00, 0xFF0000, {0x11, 0x22}, {0x22, 0, 0x11, 255, 0, 0, 0x22, 255}},
        {"RGB888", FMT_RGB888, 0xFF000000, 0, {1, 2, 3, 4, 5, 6}, {4, 2, 3, 255, 0, 5, 6, 255}},
        {"unsupported", 26, 0xFF, 0xFF00, {0x11, 0x22}, {0x11, 0x22, 0, 255, 0x11, 0x22, 0, 255}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        WithEachKernelSet([&] {
            TestImage source(2, 1, row.format, row.data);
            source.With(&TFormatFlags::nMaskRed, row.red).With(&TFormatFlags::nMaskGreen, row.green);
            TestImage destination(2, 1, FMT_RGBA8888);
            destination.Allocate(0xEE);
            MessagesOf([&] { Qonvert(source.Get(), destination.Get()); });
            EXPECT_EQ(destination.Data(), row.rgba);
        });
    }
    Bytes palette(2 * 256 + 1);
    palette = {0, 0, 0, 0, 0x33};
    palette.resize(2 * 256 + 1);
    palette[2 * 256] = 1;
    TestImage source(1, 1, FMT_P8_RGB565, palette);
    source.With(&TFormatFlags::nMaskRed, 0xFF0000);
    EXPECT_EQ(Convert(source, FMT_RGBA8888)[0], 0x33);
}

TEST(Plain, DataSizeIsWrittenExceptByThePackedCopy) {
    const Bytes rgb{1, 2, 3, 4, 5, 6, 7, 8, 9};
    struct Row {
        std::uint32_t format, stride, masks, room, size;
    };
    for (const Row& row : {Row{FMT_RGBA8888, 0, 0, 20, 20}, Row{FMT_RGBA8888, 12, 0xFF, 20, 20},
                           Row{FMT_RGBA8888, 16, 0, 20, 16}, Row{FMT_RGBA8888, 0, 0x7F, 20, 12},
                           Row{FMT_BGRA8888, 0, 0, 20, 12}, Row{FMT_BGRA8888, 0, 0xFF, 20, 12},
                           Row{FMT_RGB888, 12, 0, 20, 12}}) {
        TestImage source(3, 1, FMT_RGB888, rgb);
        TestImage destination(3, 1, row.format, Bytes(row.room, 0xEE));
        destination.With(&TFormatFlags::nStride, row.stride).With(&TFormatFlags::nMaskRed, row.masks);
        destination.With(&TFormatFlags::nMaskBlue, row.masks << 16);
        Convert(source, destination);
        EXPECT_EQ(destination.DataSize(), row.size);
    }
}

TEST(Plain, StrideTailsAreNeitherReadNorWritten) {
    TestImage source(3, 2, FMT_RGB888,
                     {1, 2, 3, 4, 5, 6, 7, 8, 9, 99, 99, 11, 12, 13, 14, 15, 16, 17, 18, 19, 99, 99});
    source.With(&TFormatFlags::nStride, 11);
    TestImage destination(3, 2, FMT_RGB888);
    destination.With(&TFormatFlags::nStride, 12);
    EXPECT_EQ(Convert(source, destination.Allocate(0xEE)),
              (Bytes{1,  2,  3,  4,  5,  6,  7,  8,  9,  0xEE, 0xEE, 0xEE,
                     11, 12, 13, 14, 15, 16, 17, 18, 19, 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(destination.DataSize(), 24u);
}

// A stride below the row makes rows overlap; the buffer that the size rule asks for ends inside
// the last row. Nothing beyond it is touched, what lies inside is.
TEST(Plain, RowsThatEndBeyondTheBufferAreClipped) {
    TestImage source(3, 2, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8});
    source.With(&TFormatFlags::nStride, 4);
    TestImage destination(3, 2, FMT_RGBA8888);
    EXPECT_EQ(Convert(source, destination.Allocate()), (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 0, 255,  //
                                                              5, 6, 7, 255, 8, 0, 0, 255, 0, 0, 0, 255}));
    // A larger nDataSize opens the rest of the last row.
    TestImage pixels(3, 2, FMT_RGB888, {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19});
    const Bytes written{1, 2, 3, 4, 11, 12, 13, 14, 15, 16, 17, 18, 19};
    for (const std::size_t room : {8u, 11u, 13u}) {
        TestImage overlapping(3, 2, FMT_RGB888, Bytes(room, 0xEE));
        overlapping.With(&TFormatFlags::nStride, 4);
        EXPECT_EQ(Convert(pixels, overlapping),
                  Bytes(written.begin(), written.begin() + static_cast<long>(room)));
    }
    // A size that is too small is reported, and the pixels are read and written all the same.
    TestImage two(2, 1, FMT_L8, {7, 9});
    TestImage alpha(2, 1, FMT_L8, {0, 0});
    TQonvertImage from = *two.Get();
    TQonvertImage to = *alpha.Get();
    from.nDataSize = 0;
    to.nDataSize = 1;
    EXPECT_EQ(MessagesOf([&] { Qonvert(&from, &to); }),
              (std::vector<std::string>{"m_pDst->nDataSize is to small",
                                        "m_pSrc->nDataSize is smaller then the format suggests"}));
    EXPECT_EQ(alpha.Data(), (Bytes{7, 9}));
    EXPECT_EQ(to.nDataSize, 2u);
}

TEST(Plain, UnsupportedDestinationGetsTheFirstByteOfEachRow) {
    TestImage source(2, 2, FMT_RGBA8888, Random(3).Fill(16));
    TestImage destination(2, 2, 26, Bytes(8, 0xEE));
    destination.With(&TFormatFlags::nStride, 4).With(&TFormatFlags::nMaskGreen, 0xFF);
    MessagesOf([&] { Qonvert(source.Get(), destination.Get()); });
    EXPECT_EQ(destination.Data(),
              (Bytes{source.Data()[5], 0xEE, 0xEE, 0xEE, source.Data()[13], 0xEE, 0xEE, 0xEE}));
    EXPECT_EQ(destination.DataSize(), 8u);
}

TEST(Flip, MovesPixelsWhenOrientationsDisagree) {
    struct Row {
        std::uint32_t sourceX, sourceY, destinationX, destinationY;
        Bytes result;
    };
    const Bytes image{1, 2, 3, 4, 5, 6};
    for (const Row& row : {Row{0, 0, 0, 0, {1, 2, 3, 4, 5, 6}}, Row{0, 1, 0, 1, {1, 2, 3, 4, 5, 6}},
                           Row{3, 0, 5, 0, {1, 2, 3, 4, 5, 6}}, Row{0, 0, 0, 5, {4, 5, 6, 1, 2, 3}},
                           Row{1, 0, 0, 0, {3, 2, 1, 6, 5, 4}}, Row{1, 0, 0, 2, {6, 5, 4, 3, 2, 1}}}) {
        for (const bool floats : {false, true}) {
            const std::vector<float> values(image.begin(), image.end());
            TestImage source(3, 2, floats ? FMT_L32F : FMT_L8, floats ? FloatBytes(values) : image);
            source.With(&TFormatFlags::nMirrorX, row.sourceX).With(&TFormatFlags::nFlipY, row.sourceY);
            TestImage destination(3, 2, floats ? FMT_L32F : FMT_L8);
            destination.With(&TFormatFlags::nMirrorX, row.destinationX)
                .With(&TFormatFlags::nFlipY, row.destinationY);
            const std::vector<float> moved(row.result.begin(), row.result.end());
            EXPECT_EQ(Convert(source, destination.Allocate()), floats ? FloatBytes(moved) : row.result);
        }
    }
}

TEST(Qonvert, SharesOneBuffer) {
    Bytes shared(16, 0);
    const Bytes pixels{0x00, 0xF8, 0x1F, 0x00, 0xE0, 0x07, 0xFF, 0xFF};
    std::copy(pixels.begin(), pixels.end(), shared.begin());
    TQonvertImage source{2, 2, FMT_RGB565, nullptr, 8, shared.data()};
    TQonvertImage destination{2, 2, FMT_RGBA8888, nullptr, 16, shared.data()};
    Qonvert(&source, &destination);
    EXPECT_EQ(shared, (Bytes{255, 0, 0, 255, 0, 0, 255, 255, 0, 255, 0, 255, 255, 255, 255, 255}));
    TQonvertImage back{2, 2, FMT_RGB565, nullptr, 16, shared.data()};
    Qonvert(&destination, &back);
    EXPECT_EQ(Bytes(shared.begin(), shared.begin() + 8), pixels);
}

TEST(PaletteInput, IndicesStartInTheLowBits) {
    // Entries i: 565 red i.
    Bytes nibbles(32, 0);
    for (std::size_t i = 0; i < 16; ++i) {
        nibbles[2 * i + 1] = static_cast<std::uint8_t>(i << 3);
    }
    nibbles.push_back(0x21);
    EXPECT_EQ(Convert(TestImage(2, 1, FMT_P4_RGB565, nibbles), FMT_RGB565), (Bytes{0, 1 << 3, 0, 2 << 3}));

    TestImage bits(10, 1, FMT_P1_RGBA8888, {1, 1, 1, 1, 9, 9, 9, 9, 0b00000101, 0b10});
    EXPECT_EQ(Convert(bits, FMT_A8), (Bytes{9, 1, 9, 1, 1, 1, 1, 1, 1, 9}));
}

TEST(PaletteInput, RowsStartAtTheStride) {
    // Three pixels take two bytes a row, though the size counts packed nibbles: the buffer of
    // that size ends before the last row, whose indices then read as 0.
    Bytes table(64, 0);
    for (std::size_t i = 0; i < 16; ++i) {
        table[4 * i + 3] = static_cast<std::uint8_t>(i + 1);
    }
    Bytes padded = table;
    padded.insert(padded.end(), {0x21, 0x03, 0x54, 0x06, 0x87, 0x09});
    const Bytes expected{2, 3, 4, 5, 6, 7, 8, 9, 10};
    EXPECT_EQ(Convert(TestImage(3, 3, FMT_P4_RGBA8888, padded), FMT_A8), expected);
    Bytes packed(padded.begin(), padded.begin() + 64 + 5);
    EXPECT_EQ(Convert(TestImage(3, 3, FMT_P4_RGBA8888, packed), FMT_A8), (Bytes{2, 3, 4, 5, 6, 7, 8, 9, 1}));
    // nStride moves rows; masks are those of the table's entries.
    Bytes spread = table;
    spread.insert(spread.end(), {0x21, 0xEE, 0xEE, 0x43});
    TestImage source(2, 2, FMT_P4_RGBA8888, spread);
    source.With(&TFormatFlags::nStride, 3)
        .With(&TFormatFlags::nMaskAlpha, 0xFF)
        .With(&TFormatFlags::nMaskRed, 0xFF000000);
    TestImage destination(2, 2, FMT_L8);
    EXPECT_EQ(Convert(source, destination.Allocate()), (Bytes{2, 3, 4, 5}));
}

}  // namespace
}  // namespace texconv_test
