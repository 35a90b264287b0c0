// Palette destinations and the quantizer behind them.
#include <unistd.h>

#include <algorithm>
#include <set>

#include "tests/texconv/support.h"
#include "texconv/palette_quantizer.h"

namespace texconv_test {
namespace {

struct Quantized {
    Bytes indices;
    Bytes palette;
    Bytes rgba;
    std::uint32_t result;
};

Quantized Quantize(Bytes rgba, int colors, unsigned long width, unsigned long height, bool floyd = false) {
    Quantized out{Bytes(width * height, 0xEE), Bytes(static_cast<std::size_t>(colors) * 4, 0xEE),
                  std::move(rgba), 0};
    out.result = pngquant(out.rgba.data(), out.indices.data(), out.palette.data(), colors, width, height,
                          floyd, false);
    return out;
}

Bytes Entry(const Bytes& palette, std::size_t i) {
    return Bytes(palette.begin() + static_cast<std::ptrdiff_t>(4 * i),
                 palette.begin() + static_cast<std::ptrdiff_t>(4 * i + 4));
}

TEST(Quantizer, FewColoursKeepTheirValues) {
    // Three colours, one translucent: it comes first, the opaque ones follow.
    const Bytes a{10, 20, 30, 255}, b{200, 100, 50, 255}, c{1, 2, 3, 128};
    Bytes image;
    for (const Bytes* pixel : {&a, &b, &a, &c, &a, &b}) {
        image.insert(image.end(), pixel->begin(), pixel->end());
    }
    const Quantized q = Quantize(image, 16, 3, 2);
    EXPECT_EQ(q.result, 1u);
    EXPECT_EQ(Entry(q.palette, 0), c);
    EXPECT_EQ(Bytes(q.palette.begin() + 12, q.palette.end()), Bytes(52, 0xEE));
    for (std::size_t i = 0; i < 6; ++i) {
        ASSERT_LE(q.indices[i], 2);
        EXPECT_EQ(Entry(q.palette, q.indices[i]), Entry(image, i));
    }
    // Boxes go by descending count, opaque entries are numbered from the top: a is the larger.
    EXPECT_EQ(Entry(q.palette, 2), a);
    EXPECT_EQ(q.rgba, image);
    EXPECT_EQ(Quantize(image, 16, 0, 2).result, 1u);
    EXPECT_EQ(Quantize(image, 0, 3, 2).result, 0u);
}

TEST(Quantizer, MedianCutByHand) {
    // Red spread is the widest; half of 10 pixels is reached by the second colour.
    ColorItem histogram[] = {
        {{90, 0, 0, 255}, 1}, {{10, 0, 5, 255}, 4}, {{20, 9, 0, 255}, 2}, {{80, 0, 0, 255}, 3}};
    ColorItem* map = mediancut(histogram, 4, 10, 255, 2);
    EXPECT_EQ(map[0].color, (Color{(10 * 4 + 20 * 2) / 6, 18 / 6, 20 / 6, 255}));
    EXPECT_EQ(map[1].color, (Color{(80 * 3 + 90) / 4, 0, 0, 255}));
    pam_freeacolorhist(map);

    // The widest channel, ties included: alpha, then red, green, blue.
    struct Row {
        Color far;
        Color low;  // the lighter box after the cut of {far, near, origin}
    };
    const Color origin{100, 100, 100, 100};
    for (const Row& row :
         {Row{{150, 150, 150, 150}, {100, 100, 100, 100}}, Row{{150, 50, 50, 100}, {100, 100, 100, 100}},
          Row{{100, 50, 150, 100}, {100, 50, 150, 100}}, Row{{100, 100, 50, 100}, {100, 100, 50, 100}},
          Row{{50, 100, 160, 100}, {100, 100, 100, 100}}}) {
        ColorItem pair[] = {{row.far, 1}, {origin, 1}};
        ColorItem* boxes = mediancut(pair, 2, 2, 255, 2);
        EXPECT_EQ(boxes[0].color, row.low);
        pam_freeacolorhist(boxes);
    }
    // The cap at maxval, and fewer colours than boxes.
    ColorItem bright[] = {{{200, 1, 2, 3}, 7}};
    map = mediancut(bright, 1, 7, 127, 4);
    EXPECT_EQ(map[0].color, (Color{127, 1, 2, 3}));
    EXPECT_EQ(map[1].color, (Color{0, 0, 0, 0}));
    pam_freeacolorhist(map);
}

TEST(Quantizer, TiesGoToTheFirstEntry) {
    // 20 pixels of 0, one of 10, ten of 21: the lighter box's mean is (10 + 210) / 11 = 20, so 10
    // is as near to it as to 0, and joins the first box of the map, the heavier one.
    Bytes image;
    for (int i = 0; i < 31; ++i) {
        const std::uint8_t red = i < 20 ? 0 : (i == 20 ? 10 : 21);
        image.insert(image.end(), {red, 0, 0, 255});
    }
    const Quantized q = Quantize(image, 2, 31, 1);
    EXPECT_EQ(q.palette, (Bytes{20, 0, 0, 255, 0, 0, 0, 255}));
    EXPECT_EQ(q.indices[20], 1);
    EXPECT_EQ(q.indices[30], 0);
}

TEST(Quantizer, ManyColoursAreHalvedFirst) {
    // 40,000 distinct colours with 0, 1 and 255 among the channels; halving leaves fewer.
    Bytes image;
    for (std::uint32_t i = 0; i < 40000; ++i) {
        image.insert(image.end(),
                     {static_cast<std::uint8_t>(i % 200), static_cast<std::uint8_t>(i / 200), 129, 255});
    }
    const Quantized q = Quantize(image, 256, 200, 200);
    EXPECT_EQ(q.result, 1u);
    for (std::size_t i = 0; i < 40000; ++i) {
        for (std::size_t c = 0; c < 4; ++c) {
            ASSERT_EQ(q.rgba[4 * i + c], (image[4 * i + c] * 127 + 127) / 255);
        }
    }
    std::set<std::uint8_t> used(q.indices.begin(), q.indices.end());
    EXPECT_EQ(used.size(), 256u);
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(q.palette[4 * i + 2], 129);  // from 64 of 127, rounded
        EXPECT_EQ(q.palette[4 * i + 3], 255);
    }
}

TEST(Quantizer, HistogramFollowsBucketsAndChains) {
    Bytes bytes = Random(4).Fill(4 * 3000);
    const auto* pixels = reinterpret_cast<const Color*>(bytes.data());
    const Color* rows[] = {pixels, pixels + 1500};
    int colors = 0;
    ColorItem* histogram = pam_computeacolorhist(rows, 1500, 2, 32767, &colors);
    ASSERT_GT(colors, 2900);
    // Colours of one bucket come newest first.
    const auto bucket = [](const Color& c) {
        return (c.r * 33023u + c.g * 30013u + c.b * 27011u + c.a * 24007u) % 20023u;
    };
    const auto age = [&](const Color& color) { return std::find(pixels, pixels + 3000, color) - pixels; };
    int total = histogram[0].value;
    for (int i = 1; i < colors; ++i) {
        total += histogram[i].value;
        const Color& before = histogram[i - 1].color;
        const Color& here = histogram[i].color;
        ASSERT_TRUE(bucket(before) < bucket(here) ||
                    (bucket(before) == bucket(here) && age(before) > age(here)));
    }
    EXPECT_EQ(total, 3000);
    pam_freeacolorhist(histogram);
    EXPECT_EQ(pam_computeacolorhist(rows, 1500, 2, 100, &colors), nullptr);
}

TEST(Quantizer, DiffusionIsReproducible) {
    const Quantized q = Quantize(Random(6).Fill(std::size_t{50} * 31 * 4), 16, 50, 31, true);
    std::uint64_t digest = 0;
    for (const std::uint8_t index : q.indices) {
        digest = digest * 31 + index;
    }
    EXPECT_EQ(digest, 15865225725635019970u);
}

TEST(QuantizerDeathTest, MemoryExhaustionEndsTheProcess) {
    // The lines go to standard output; a death test looks at standard error.
    const auto toStderr = [] { dup2(2, 1); };
    EXPECT_EXIT((toStderr(), pm_allocrow(SIZE_MAX / 2, 8)), testing::ExitedWithCode(255),
                "  out of memory allocating a row");
    EXPECT_EXIT((toStderr(), pm_allocarray(SIZE_MAX / 8, 9, 8)), testing::ExitedWithCode(255),
                "  out of memory allocating an array");
}

TEST(PaletteOutput, TableThenPackedIndices) {
    // Two colours, five pixels a row in three rows: indices run on across rows.
    Bytes image;
    Bytes wanted;
    for (int i = 0; i < 15; ++i) {
        const bool red = i % 3 == 0;
        image.insert(image.end(),
                     {static_cast<std::uint8_t>(red ? 255 : 0), 0, static_cast<std::uint8_t>(red ? 0 : 255)});
        wanted.push_back(red ? 0 : 1);
    }
    // Ten blue pixels outweigh five red ones: blue gets the top entry.
    struct Row {
        std::uint32_t format, bits;
        Bytes table;
    };
    for (const Row& row :
         {Row{FMT_P8_RGBA8888, 8, {255, 0, 0, 255, 0, 0, 255, 255}},
          Row{FMT_P8_RGB888, 8, {255, 0, 0, 0, 0, 255}}, Row{FMT_P8_RGBA5551, 8, {0x01, 0xF8, 0x3F, 0x00}},
          Row{FMT_P4_RGBA4444, 4, {0x0F, 0xF0, 0xFF, 0x00}}, Row{FMT_P4_RGB565, 4, {0x00, 0xF8, 0x1F, 0x00}},
          Row{FMT_P1_RGBA8888, 1, {255, 0, 0, 255, 0, 0, 255, 255}}}) {
        SCOPED_TRACE(FindFormat(row.format)->name);
        TestImage source(5, 3, FMT_RGB888, image);
        TestImage destination(5, 3, row.format);
        // A stride and masks mean nothing here.
        destination.With(&TFormatFlags::nStride, 7).With(&TFormatFlags::nMaskRed, 0xF0).Allocate(0xEE);
        const Bytes out = Convert(source, destination);
        EXPECT_EQ(destination.DataSize(), out.size());
        Bytes table((std::size_t{1} << row.bits) * FindFormat(row.format)->paletteBits / 8, 0);
        std::copy(row.table.begin(), row.table.end(), table.begin());
        Bytes packed((15 * row.bits + 7) / 8, 0);
        for (std::size_t i = 0; i < 15; ++i) {
            packed[i * row.bits / 8] |= static_cast<std::uint8_t>(wanted[i] << (i * row.bits % 8));
        }
        table.insert(table.end(), packed.begin(), packed.end());
        EXPECT_EQ(out, table);
    }
}

}  // namespace
}  // namespace texconv_test
