// Float formats on both working images.
#include <algorithm>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

struct FloatRow {
    const char* what;
    std::uint32_t format;
    std::vector<float> channels;  // of one pixel, in memory order
    std::vector<float> rgba;      // what the working image holds
};

const std::vector<FloatRow>& FloatRows() {
    static const std::vector<FloatRow> rows{
        {"RGBA", FMT_RGBA32F, {0.25f, -7.5f, 300.0f, 0.5f}, {0.25f, -7.5f, 300.0f, 0.5f}},
        {"RGB", FMT_RGB32F, {0.25f, -7.5f, 300.0f}, {0.25f, -7.5f, 300.0f, 0.0f}},
        {"LA", FMT_LA32F, {0.25f, 2.0f}, {0.25f, 0.25f, 0.25f, 2.0f}},
        {"L", FMT_L32F, {0.25f}, {0.25f, 0.25f, 0.25f, 0.0f}},
        {"A", FMT_A32F, {0.25f}, {0.0f, 0.0f, 0.0f, 0.25f}},
    };
    return rows;
}

Bytes Halves(const std::vector<float>& values) {
    std::vector<std::uint16_t> halves;
    for (const float value : values) {
        halves.push_back(Float2HalfFloat(value));
    }
    return HalfBytes(halves);
}

TEST(Float, EveryLayoutReadsIntoTheWorkingImage) {
    for (const FloatRow& row : FloatRows()) {
        SCOPED_TRACE(row.what);
        const std::uint32_t half = row.format + (FMT_RGBA16F - FMT_RGBA32F);
        EXPECT_EQ(Convert(TestImage(1, 1, row.format, FloatBytes(row.channels)), FMT_RGBA32F),
                  FloatBytes(row.rgba));
        EXPECT_EQ(Convert(TestImage(1, 1, half, Halves(row.channels)), FMT_RGBA32F), FloatBytes(row.rgba));
        Bytes bytes;
        for (const float value : row.rgba) {
            bytes.push_back(Float2UByte(value));
        }
        EXPECT_EQ(Convert(TestImage(1, 1, row.format, FloatBytes(row.channels)), FMT_RGBA8888), bytes);
        EXPECT_EQ(Convert(TestImage(1, 1, half, Halves(row.channels)), FMT_RGBA8888), bytes);
    }
}

TEST(Float, EveryLayoutWritesItsChannels) {
    const std::vector<float> rgba{1.5f, 2.5f, 3.5f, 4.5f};
    const Bytes bytes{10, 200, 30, 255};
    const std::vector<std::vector<std::size_t>> taken{{0, 1, 2, 3}, {0, 1, 2}, {0, 3}, {0}, {3}};
    for (std::uint32_t i = 0; i < taken.size(); ++i) {
        std::vector<float> fromFloat;
        std::vector<float> fromByte;
        for (const std::size_t channel : taken[i]) {
            fromFloat.push_back(rgba[channel]);
            fromByte.push_back(UByte2Float(bytes[channel]));
        }
        EXPECT_EQ(Convert(TestImage(1, 1, FMT_RGBA32F, FloatBytes(rgba)), FMT_RGBA32F + i),
                  FloatBytes(fromFloat));
        EXPECT_EQ(Convert(TestImage(1, 1, FMT_RGBA32F, FloatBytes(rgba)), FMT_RGBA16F + i),
                  Halves(fromFloat));
        EXPECT_EQ(Convert(TestImage(1, 1, FMT_RGBA8888, bytes), FMT_RGBA32F + i), FloatBytes(fromByte));
        EXPECT_EQ(Convert(TestImage(1, 1, FMT_RGBA8888, bytes), FMT_RGBA16F + i), Halves(fromByte));
    }
    EXPECT_EQ(Convert(TestImage(1, 1, FMT_L32F, FloatBytes({0.5f})), FMT_LA88), (Bytes{0, 127}));
}

TEST(Float, BitsSurviveACopy) {
    const Bytes bits = Random(9).Fill(64);  // denormals, infinities and NaNs among them
    EXPECT_EQ(Convert(TestImage(2, 2, FMT_RGBA32F, bits), FMT_RGBA32F), bits);
    Bytes nans{1, 0, 0x80, 0x7F, 0, 0, 0xC0, 0xFF, 0, 0, 0x80, 0xFF, 1, 0, 0, 0};
    EXPECT_EQ(Convert(TestImage(1, 1, FMT_RGBA32F, nans), FMT_RGBA32F), nans);
    // All halves.
    std::vector<std::uint16_t> all(65536);
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = static_cast<std::uint16_t>(i);
    }
    EXPECT_EQ(Convert(TestImage(256, 256, FMT_L16F, HalfBytes(all)), FMT_L16F), HalfBytes(all));
}

TEST(Float, PixelsStayPackedAndTheSizeIsLeft) {
    const std::vector<float> values{1, 2, 3, 4};
    TestImage source(2, 2, FMT_L32F, FloatBytes({1, 2, 3, 4, 9, 9}));  // a stride of 12 asks for 24 bytes
    source.With(&TFormatFlags::nStride, 12);
    TestImage destination(2, 2, FMT_L32F);
    destination.With(&TFormatFlags::nStride, 10);
    const Bytes packed = FloatBytes(values);
    Bytes expected(20, 0xEE);
    std::copy(packed.begin(), packed.end(), expected.begin());
    EXPECT_EQ(Convert(source, destination.Allocate(0xEE)), expected);
    EXPECT_EQ(destination.DataSize(), 20u);
    // A stride below the row claims too little; nothing beyond is written.
    TestImage small(2, 2, FMT_L32F);
    small.With(&TFormatFlags::nStride, 5);
    EXPECT_EQ(Convert(source, small.Allocate(0xEE)), Bytes(expected.begin(), expected.begin() + 10));
    TestImage bytes(2, 2, FMT_L8, {0, 255, 255, 0});
    EXPECT_EQ(Convert(bytes, small.Allocate(0xEE)), (Bytes{0, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0}));
}

}  // namespace
}  // namespace texconv_test
