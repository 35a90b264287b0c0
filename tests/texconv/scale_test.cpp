// Scaling filters and bump maps.
#include <cmath>
#include <limits>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

TEST(Scale, Filters) {
    struct Row {
        const char* what;
        std::uint32_t width, height;
        Bytes image;
        std::uint32_t newWidth, newHeight, filter;
        Bytes result;
    };
    Bytes ramp;
    for (std::uint8_t i = 0; i < 16; ++i) {
        ramp.push_back(static_cast<std::uint8_t>(10 * i));
    }
    const Bytes uneven{1, 2, 0, 0, 2, 2, 0, 1, 9, 9, 4, 4, 9, 8, 4, 255};
    const Bytes doubled{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4};
    const Row rows[] = {
        {"box halves with truncated means", 4, 4, uneven, 2, 2, 0, {1, 0, 8, 66}},
        {"explicit box", 4, 1, {1, 4, 9, 9}, 2, 1, 2, {2, 9}},
        {"box doubles by repetition", 2, 2, {1, 2, 3, 4}, 4, 4, 0, doubled},
        {"box of uneven parts", 5, 1, {10, 20, 30, 40, 50}, 3, 1, 0, {10, 25, 45}},
        {"point takes pixel centres", 4, 4, ramp, 2, 2, 1, {50, 70, 130, 150}},
        {"point enlarges", 2, 1, {7, 9}, 5, 1, 1, {7, 7, 9, 9, 9}},
        {"four samples", 4, 4, ramp, 2, 2, 3, {25, 45, 105, 125}},
        {"four samples truncate", 1, 2, {8, 21}, 1, 3, 3, {8, 14, 21}},
        {"cubic blurs the centre sample", 4, 1, {0, 0, 255, 0}, 2, 1, 4, {42, 42}},
        {"cubic down a column", 1, 4, {30, 0, 255, 90}, 1, 2, 4, {47, 117}},
        {"cubic repeats what it blurs", 3, 1, {0, 255, 0}, 4, 2, 4, {42, 170, 170, 42, 42, 170, 170, 42}},
        {"cubic keeps some flat values", 3, 1, {100, 100, 100}, 1, 1, 4, {100}},
        {"cubic loses one of others", 3, 1, {183, 183, 183}, 1, 1, 4, {182}},
        {"unknown filter clears", 2, 2, {1, 2, 3, 4}, 1, 3, 7, {0, 0, 0}},
        {"same size ignores the filter", 2, 2, {1, 2, 3, 4}, 2, 2, 7, {1, 2, 3, 4}},
    };
    for (const Row& row : rows) {
        ExpectConversions({{row.what,
                            {row.width, row.height, FMT_A8, row.image},
                            {row.newWidth, row.newHeight, FMT_A8, {}, Flags{.filter = row.filter}},
                            row.result}});
    }
}

TEST(Scale, UnimplementedFilterPrintsPerPixelAndBoxes) {
    TestImage source(2, 2, FMT_A8, {1, 2, 3, 4});
    TestImage destination(2, 1, FMT_A8, {0, 0}, Flags{.filter = 5});
    EXPECT_EQ(MessagesOf([&] { Qonvert(source.Get(), destination.Get()); }),
              Messages(2, "Unimplemented scalefiler"));
    EXPECT_EQ(destination.Data(), (Bytes{2, 3}));
}

TEST(Scale, FloatsFollowTheSameRules) {
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::bit_cast<float>(0x7FC00000u);
    struct Row {
        const char* what;
        std::uint32_t width, height, filter;
        std::vector<float> image;
        float result;
    };
    const std::vector<float> values{0.1f, 0.2f, -0.7f, 3e7f};
    const Row rows[] = {
        {"box sums in order", 4, 1, 0, values, (((0.1f + 0.2f) + -0.7f) + 3e7f) / 4.0f},
        {"box rows first", 2, 2, 0, {3e7f, 1.0f, 1.0f, -3e7f}, (((3e7f + 1.0f) + 1.0f) + -3e7f) / 4.0f},
        {"sums start at +0", 4, 1, 0, {-0.0f, -0.0f, -0.0f, -0.0f}, 0.0f},
        {"point", 4, 1, 1, values, -0.7f},
        {"columns first", 2, 2, 3, {3e7f, 1.0f, 1.0f, -3e7f}, (((3e7f + 1.0f) + 1.0f) + -3e7f) * 0.25f},
        {"lower left second", 2, 2, 3, {1.0f, -3e7f, 3e7f, 1.0f}, (((1.0f + 3e7f) + -3e7f) + 1.0f) * 0.25f},
        {"unknown", 4, 1, 6, values, 0.0f},
        {"infinities", 4, 1, 0, {inf, 0.0f, -inf, 0.0f}, nan},
        // Centre 3: every column meets rows of weight 0 as well.
        {"a weight of 0 counts", 6, 1, 4, {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, inf}, nan},
    };
    for (const Row& row : rows) {
        ExpectConversions({{row.what,
                            {row.width, row.height, FMT_L32F, BytesOf(row.image)},
                            {1, 1, FMT_L32F, {}, Flags{.filter = row.filter}},
                            BytesOf<float>({row.result})}});
    }
}

TEST(Scale, EmptyAndLargeImages) {
    for (std::uint32_t filter = 0; filter < 5; ++filter) {
        TestImage empty(0, 3, FMT_RGBA8888, {9});
        TestImage destination(3, 2, FMT_A8, Bytes(6, 0xEE), Flags{.filter = filter, .mode = 1});
        Qonvert(empty.Get(), destination.Get());
        EXPECT_EQ(destination.Data(), Bytes(6, 0)) << filter;
    }
    // A mean that floats would round up.
    Bytes almost(65536, 255);
    almost[7] = 254;
    ExpectConversions({{"large box", {256, 256, FMT_A8, almost}, {1, 1, FMT_A8}, {254}}});
    // Coordinates beyond 2^24 round; none may leave the source.
    const std::uint32_t wide = (1u << 24) + 3;
    TestImage destination(wide - 1, 1, FMT_A8);
    EXPECT_EQ(Convert({wide, 1, FMT_A8, Bytes(wide, 5)}, destination).back(), 5);
    // The cubic filter's centre may round to a neighbour's, and to one outside, whose taps are the last
    // pixel.
    TestImage many(9000000, 1, FMT_A8, {}, Flags{.filter = 4});
    EXPECT_EQ(Convert({9500000, 1, FMT_A8, Bytes(9500000, 128)}, many), Bytes(9000000, 128));
    TestImage outside(6556022, 1, FMT_A8, {}, Flags{.filter = 4});
    EXPECT_EQ(Convert({2, 1, FMT_A8, {0, 255}}, outside).back(), 255);
}

// A normal map of a luminance image.
Bytes Normals(std::uint32_t width, std::uint32_t height, const Bytes& heights, const Flags& flags) {
    TestImage destination(width, height, FMT_RGBA8888, {}, flags);
    return Convert({width, height, FMT_L8, heights}, destination);
}

TEST(Bumpmap, Components) {
    const std::pair<float, int> components[] = {
        {0.0f, 128},
        {1.0f, 255},
        {-1.0f, 1},
        {-0.5f, 64},
        {2.0f, 126},
        {-7.0f, 0},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const auto& [component, byte] : components) {
        EXPECT_EQ(Bumpmap_OffsetAndBias(component), byte) << component;
    }
}

TEST(Bumpmap, FlatFieldsGiveTheUpNormal) {
    struct Row {
        std::uint32_t kernel, strength;
        Bytes heights;
        Bytes normals;
    };
    const Bytes up{128, 128, 255, 0, 128, 128, 255, 0};
    for (const Row& row : {Row{1, 10, {77, 77}, up}, Row{2, 10, {77, 77}, up}, Row{2, 20, {77, 77}, up},
                           Row{3, 10, {77, 77}, up}, Row{9, 10, {0, 255}, up},     // no kernel
                           Row{2, 0, {77, 79}, {128, 128, 0, 0, 128, 128, 0, 0}},  // an infinite z
                           Row{2, UINT32_MAX - 9, {77, 77}, {128, 128, 1, 0, 128, 128, 1, 0}}}) {
        EXPECT_EQ(Normals(2, 1, row.heights, {.bumpmap = row.kernel, .bumpHeight = row.strength}),
                  row.normals)
            << row.kernel << ' ' << row.strength;
    }
}

TEST(Bumpmap, KernelsWeighTheirNeighbours) {
    // One height of 255 in a 5 x 5 field without wrap; the slope (dx, dy), in heights, that each
    // kernel gives the pixels around it.
    struct Row {
        std::uint32_t kernel;
        int x, y, dx, dy;
    };
    const Row rows[] = {
        {1, 2, 2, 1, 0},  {1, 1, 1, -1, 0}, {1, 1, 2, 0, 1},  {1, 2, 1, 0, -1},  {2, 1, 2, -2, 0},
        {2, 3, 2, 2, 0},  {2, 2, 1, 0, -2}, {2, 2, 3, 0, 2},  {2, 1, 1, -1, -1}, {2, 3, 3, 1, 1},
        {2, 1, 3, -1, 1}, {2, 3, 1, 1, -1}, {3, 1, 2, -1, 0}, {3, 2, 3, 0, 1},   {3, 1, 1, -1, -1},
        {3, 3, 3, 1, 1},  {3, 2, 2, 0, 0},
    };
    Bytes heights(25, 0);
    heights[12] = 255;
    for (const Row& row : rows) {
        for (const std::uint32_t strength : {10u, 25u}) {
            const double nz = 10.0 / strength;
            const double length = std::sqrt(row.dx * row.dx + row.dy * row.dy + nz * nz);
            const double expected[3] = {row.dx / length, row.dy / length, nz / length};
            WithEachKernelSet([&] {
                const Bytes normals = Normals(5, 5, heights, {.bumpmap = row.kernel, .bumpHeight = strength});
                for (std::size_t c = 0; c < 3; ++c) {
                    const int byte = normals[static_cast<std::size_t>(row.y * 5 + row.x) * 4 + c];
                    EXPECT_NEAR(byte, expected[c] * 127 + 127.5, 0.5001)
                        << row.kernel << " " << row.x << " " << row.y;
                }
            });
        }
    }
}

TEST(Bumpmap, WrapReachesTheOppositeEdge) {
    const Bytes up{128, 128, 255, 0};
    for (const std::ptrdiff_t corner : {0, 15}) {
        Bytes heights(16, 0);
        heights[static_cast<std::size_t>(corner)] = 255;
        for (const std::uint32_t kernel : {2u, 3u}) {
            for (const std::uint32_t wrap : {0u, 6u}) {
                const Flags flags{.bumpmap = kernel, .bumpHeight = 10, .bumpWrap = wrap};
                const Bytes normals = Normals(4, 4, heights, flags);
                const auto opposite = normals.begin() + 4 * (15 - corner);
                EXPECT_EQ(Bytes(opposite, opposite + 4) == up, wrap == 0);
                EXPECT_EQ(Normals(1, 1, {200}, flags), up);  // its own neighbour
            }
        }
    }
}

}  // namespace
}  // namespace texconv_test
