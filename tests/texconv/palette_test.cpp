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

TEST(Quantizer, FewColoursKeepTheirValues) {
    // Boxes go by descending count. The translucent colour comes first, the opaque ones from the top down.
    const Bytes often{10, 20, 30, 255}, seldom{200, 100, 50, 255}, translucent{1, 2, 3, 128};
    Bytes image;
    for (const Bytes* pixel : {&often, &seldom, &often, &translucent, &often, &seldom}) {
        image.insert(image.end(), pixel->begin(), pixel->end());
    }
    Bytes palette(64, 0xEE);  // beyond the colours used, nothing is written
    std::copy(translucent.begin(), translucent.end(), palette.begin());
    std::copy(seldom.begin(), seldom.end(), palette.begin() + 4);
    std::copy(often.begin(), often.end(), palette.begin() + 8);
    const Quantized q = Quantize(image, 16, 3, 2);
    EXPECT_EQ(q.result, 1u);
    EXPECT_EQ(q.palette, palette);
    EXPECT_EQ(q.indices, (Bytes{2, 1, 2, 0, 2, 1}));
    EXPECT_EQ(q.rgba, image);
    EXPECT_EQ(Quantize(image, 16, 0, 2).result, 1u);
    EXPECT_EQ(Quantize(image, 0, 3, 2).result, 0u);
}

TEST(Quantizer, MedianCutByHand) {
    // Red spread is the widest; half of 10 pixels is reached by the second colour.
    ColorItem histogram[] = {
        {{90, 0, 0, 255}, 1}, {{10, 0, 5, 255}, 3}, {{20, 9, 0, 255}, 2}, {{80, 0, 0, 255}, 4}};
    ColorItem* map = mediancut(histogram, 4, 10, 255, 2);
    EXPECT_EQ(map[0].color, (Color{(10 * 3 + 20 * 2) / 5, 18 / 5, 15 / 5, 255}));
    EXPECT_EQ(map[1].color, (Color{(80 * 4 + 90) / 5, 0, 0, 255}));
    pam_freeacolorhist(map);

    // The widest channel, ties included: alpha, then red, green, blue. Its lower colour is the first box.
    const Color origin{100, 100, 100, 100};
    const std::pair<Color, bool> lower[] = {
        {{50, 150, 150, 150}, false}, {{150, 50, 50, 100}, false},  {{100, 50, 150, 100}, true},
        {{100, 100, 50, 100}, true},  {{50, 100, 160, 100}, false},
    };
    for (const auto& [other, isLower] : lower) {
        ColorItem pair[] = {{other, 1}, {origin, 1}};
        ColorItem* boxes = mediancut(pair, 2, 2, 255, 2);
        EXPECT_EQ(boxes[0].color, isLower ? other : origin);
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
    WithEachKernelSet([&] {
        const Quantized q = Quantize(image, 2, 31, 1);
        EXPECT_EQ(q.palette, (Bytes{20, 0, 0, 255, 0, 0, 0, 255}));
        EXPECT_EQ(q.indices[20], 1);
        EXPECT_EQ(q.indices[30], 0);
    });
}

TEST(Quantizer, ManyColoursAreHalvedFirst) {
    // 40,000 distinct colours with 0, 1 and 255 among the channels; halving leaves fewer. One is translucent
    // and makes the first entry so.
    Bytes image;
    Bytes halved;
    for (std::uint32_t i = 0; i < 40000; ++i) {
        for (const std::uint32_t channel : {i % 200, i / 200, 129u, i != 0 ? 255u : 0u}) {
            image.push_back(static_cast<std::uint8_t>(channel));
            halved.push_back(static_cast<std::uint8_t>((channel * 127 + 127) / 255));
        }
    }
    const Quantized q = Quantize(image, 256, 200, 200);
    EXPECT_EQ(q.result, 1u);
    EXPECT_EQ(q.rgba, halved);
    EXPECT_EQ(std::set(q.indices.begin(), q.indices.end()).size(), 256u);
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(q.palette[4 * i + 2], 129);  // from 64 of 127, rounded
        EXPECT_EQ(q.palette[4 * i + 3] != 255, i == 0);
    }
}

TEST(Quantizer, HistogramFollowsBucketsAndChains) {
    // More colours than the table of the first slots holds; the first 100 come twice.
    constexpr int kColors = 70000;
    std::vector<Color> pixels;
    for (std::uint32_t i = 0; i < kColors + 100; ++i) {
        pixels.push_back(std::bit_cast<Color>(i % kColors * 2654435769u));
    }
    // In every bucket, the newest colour comes first.
    std::vector<Color> expected(pixels.rbegin() + 100, pixels.rend());
    std::stable_sort(expected.begin(), expected.end(), [](const Color& a, const Color& b) {
        const auto bucket = [](const Color& c) {
            return (c.r * 33023u + c.g * 30013u + c.b * 27011u + c.a * 24007u) % 20023u;
        };
        return bucket(a) < bucket(b);
    });
    const Color* rows[] = {pixels.data(), pixels.data() + kColors / 2 + 50};
    int colors = 0;
    ColorItem* histogram = pam_computeacolorhist(rows, kColors / 2 + 50, 2, kColors, &colors);
    ASSERT_EQ(colors, kColors);
    for (std::size_t i = 0; i < kColors; ++i) {
        ASSERT_EQ(histogram[i].color, expected[i]);
        ASSERT_EQ(histogram[i].value, 1 + std::count(pixels.end() - 100, pixels.end(), expected[i]));
    }
    pam_freeacolorhist(histogram);
    EXPECT_EQ(pam_computeacolorhist(rows, kColors / 2 + 50, 2, kColors - 1, &colors), nullptr);
    EXPECT_EQ(colors, kColors);
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
    // Five pixels a row in three rows: indices run on across rows. Ten blue pixels outweigh five red ones, so
    // that blue gets the top entry.
    Bytes image;
    for (int i = 0; i < 5; ++i) {
        image.insert(image.end(), {255, 0, 0, 0, 0, 255, 0, 0, 255});
    }
    struct Row {
        std::uint32_t format, tableBytes;
        Bytes table;
        Bytes indices;
    };
    const Bytes words{255, 0, 0, 255, 0, 0, 255, 255};
    const Bytes bytes{0, 1, 1, 0, 1, 1, 0, 1, 1, 0, 1, 1, 0, 1, 1};
    const Bytes nibbles{0x10, 0x01, 0x11, 0x10, 0x01, 0x11, 0x10, 0x01};
    for (const Row& row :
         {Row{FMT_P8_RGBA8888, 1024, words, bytes}, Row{FMT_P8_RGB888, 768, {255, 0, 0, 0, 0, 255}, bytes},
          Row{FMT_P8_RGBA5551, 512, {0x01, 0xF8, 0x3F, 0x00}, bytes},
          Row{FMT_P4_RGBA4444, 32, {0x0F, 0xF0, 0xFF, 0x00}, nibbles},
          Row{FMT_P4_RGB565, 32, {0x00, 0xF8, 0x1F, 0x00}, nibbles},
          Row{FMT_P1_RGBA8888, 8, words, {0b10110110, 0b01101101}}}) {
        Bytes result = row.table;
        result.resize(row.tableBytes);
        result.insert(result.end(), row.indices.begin(), row.indices.end());
        // A stride and masks mean nothing here.
        TestImage destination(5, 3, row.format, {}, Flags{.stride = 7, .red = 0xF0});
        EXPECT_EQ(Convert({5, 3, FMT_RGB888, image}, destination), result) << FindFormat(row.format)->name;
        EXPECT_EQ(destination.DataSize(), result.size());
    }
}

}  // namespace
}  // namespace texconv_test
