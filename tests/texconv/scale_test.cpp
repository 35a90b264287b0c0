// Scaling filters and bump maps.
#include <cmath>
#include <limits>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

struct ScaleRow {
    const char* what;
    std::uint32_t width, height;
    Bytes image;
    std::uint32_t newWidth, newHeight, filter;
    Bytes result;
};

Bytes Ramp4x4() {
    Bytes image(16);
    for (std::size_t i = 0; i < 16; ++i) {
        image[i] = static_cast<std::uint8_t>(10 * i);
    }
    return image;
}

TEST(Scale, Filters) {
    const ScaleRow rows[] = {
        {"box halves with truncated means",
         4,
         4,
         {1, 2, 0, 0, 2, 2, 0, 1, 9, 9, 4, 4, 9, 8, 4, 255},
         2,
         2,
         0,
         {1, 0, 8, 66}},
        {"explicit box", 4, 1, {1, 4, 9, 9}, 2, 1, 2, {2, 9}},
        {"box doubles by repetition",
         2,
         2,
         {1, 2, 3, 4},
         4,
         4,
         0,
         {1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4}},
        {"box of uneven parts", 5, 1, {10, 20, 30, 40, 50}, 3, 1, 0, {10, 25, 45}},
        {"point takes pixel centres", 4, 4, Ramp4x4(), 2, 2, 1, {50, 70, 130, 150}},
        {"point enlarges", 2, 1, {7, 9}, 5, 1, 1, {7, 7, 9, 9, 9}},
        {"four samples", 4, 4, Ramp4x4(), 2, 2, 3, {25, 45, 105, 125}},
        {"cubic blurs the centre sample", 4, 1, {0, 0, 255, 0}, 2, 1, 4, {42, 42}},
        {"cubic keeps some flat values", 3, 1, {100, 100, 100}, 1, 1, 4, {100}},
        {"cubic loses one of others", 3, 1, {183, 183, 183}, 1, 1, 4, {182}},
        {"unknown filter clears", 2, 2, {1, 2, 3, 4}, 1, 3, 7, {0, 0, 0}},
        {"same size ignores the filter", 2, 2, {1, 2, 3, 4}, 2, 2, 7, {1, 2, 3, 4}},
    };
    for (const ScaleRow& row : rows) {
        SCOPED_TRACE(row.what);
        TestImage source(row.width, row.height, FMT_A8, row.image);
        TestImage destination(row.newWidth, row.newHeight, FMT_A8);
        destination.With(&TFormatFlags::nScaleFilter, row.filter);
        EXPECT_EQ(Convert(source, destination.Allocate(0xEE)), row.result);
    }
}

TEST(Scale, UnimplementedFilterPrintsPerPixelAndBoxes) {
    TestImage source(2, 2, FMT_A8, {1, 2, 3, 4});
    TestImage destination(2, 1, FMT_A8);
    destination.With(&TFormatFlags::nScaleFilter, 5).Allocate();
    EXPECT_EQ(MessagesOf([&] { Qonvert(source.Get(), destination.Get()); }),
              std::vector<std::string>(2, "Unimplemented scalefiler"));
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
        {"four samples, columns first",
         2,
         2,
         3,
         {3e7f, 1.0f, 1.0f, -3e7f},
         (((3e7f + 1.0f) + 1.0f) + -3e7f) * 0.25f},
        {"four samples, lower left second",
         2,
         2,
         3,
         {1.0f, -3e7f, 3e7f, 1.0f},
         (((1.0f + 3e7f) + -3e7f) + 1.0f) * 0.25f},
        {"unknown", 4, 1, 6, values, 0.0f},
        {"infinities", 4, 1, 0, {inf, 0.0f, -inf, 0.0f}, nan},
        // Centre 3: every column meets rows of weight 0 as well.
        {"a weight of 0 counts", 6, 1, 4, {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, inf}, nan},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        TestImage source(row.width, row.height, FMT_L32F, FloatBytes(row.image));
        TestImage destination(1, 1, FMT_L32F);
        destination.With(&TFormatFlags::nScaleFilter, row.filter);
        EXPECT_EQ(Convert(source, destination.Allocate()), FloatBytes({row.result}));
    }
}

TEST(Scale, EmptyAndWideImages) {
    for (std::uint32_t filter = 0; filter < 5; ++filter) {
        TFormatFlags flags{};
        flags.nScaleFilter = filter;
        flags.nMode = 1;
        std::uint8_t pixel = 9;
        Bytes out(6, 0xEE);
        TQonvertImage empty{0, 3, FMT_RGBA8888, nullptr, 0, &pixel};
        TQonvertImage destination{3, 2, FMT_A8, &flags, 6, out.data()};
        Qonvert(&empty, &destination);
        EXPECT_EQ(out, Bytes(6, 0)) << filter;
    }
    // Coordinates beyond 2^24 round; none may leave the source.
    const std::uint32_t wide = (1u << 24) + 3;
    TestImage source(wide, 1, FMT_A8, Bytes(wide, 5));
    TestImage destination(wide - 1, 1, FMT_A8);
    EXPECT_EQ(Convert(source, destination.Allocate()).back(), 5);
}

// A normal map of a luminance image.
Bytes Normals(std::uint32_t width, std::uint32_t height, const Bytes& heights, const TFormatFlags& flags) {
    TestImage source(width, height, FMT_L8, heights);
    TestImage destination(width, height, FMT_RGBA8888);
    destination.Flags() = flags;
    return Convert(source, destination.Allocate(0xEE));
}

TEST(Bumpmap, FlatFieldsGiveTheUpNormal) {
    struct Row {
        std::uint32_t kernel, strength;
        Bytes normal;
    };
    for (const Row& row :
         {Row{1, 10, {128, 128, 255, 0}}, Row{2, 10, {128, 128, 255, 0}}, Row{2, 20, {128, 128, 255, 0}},
          Row{3, 10, {128, 128, 255, 0}}, Row{2, 0, {128, 128, 0, 0}},  // an infinite z
          Row{2, static_cast<std::uint32_t>(-10), {128, 128, 1, 0}}}) {
        TFormatFlags flags{};
        flags.nBumpmap = row.kernel;
        flags.nBumpmapHeight = row.strength;
        Bytes expected = row.normal;
        expected.insert(expected.end(), row.normal.begin(), row.normal.end());
        EXPECT_EQ(Normals(2, 1, {77, 77}, flags), expected);
    }
    TFormatFlags unknown{};
    unknown.nBumpmap = 9;
    unknown.nBumpmapHeight = 10;
    EXPECT_EQ(Normals(2, 1, {0, 255}, unknown), (Bytes{128, 128, 255, 0, 128, 128, 255, 0}));
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
            TFormatFlags flags{};
            flags.nBumpmap = row.kernel;
            flags.nBumpmapHeight = strength;
            const Bytes normals = Normals(5, 5, heights, flags);
            const double nz = 10.0 / strength;
            const double length = std::sqrt(row.dx * row.dx + row.dy * row.dy + nz * nz);
            const double expected[3] = {row.dx / length, row.dy / length, nz / length};
            for (std::size_t c = 0; c < 3; ++c) {
                const int byte = normals[static_cast<std::size_t>(row.y * 5 + row.x) * 4 + c];
                EXPECT_NEAR(byte, expected[c] * 127 + 127.5, 0.5001)
                    << row.kernel << " " << row.x << " " << row.y;
            }
        }
    }
}

TEST(Bumpmap, WrapReachesTheOppositeEdge) {
    Bytes heights(16, 0);
    heights[0] = 255;
    for (const std::uint32_t kernel : {2u, 3u}) {
        TFormatFlags flags{};
        flags.nBumpmap = kernel;
        flags.nBumpmapHeight = 10;
        const Bytes up{128, 128, 255, 0};
        const Bytes clamped = Normals(4, 4, heights, flags);
        flags.nBumpmapWrap = 6;
        const Bytes wrapped = Normals(4, 4, heights, flags);
        EXPECT_EQ(Bytes(clamped.end() - 4, clamped.end()), up);
        EXPECT_NE(Bytes(wrapped.end() - 4, wrapped.end()), up);
        // One pixel wraps onto itself.
        EXPECT_EQ(Normals(1, 1, {200}, flags), up);
    }
}

}  // namespace
}  // namespace texconv_test
