// Float formats on both working images.
#include <algorithm>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

Bytes Halves(const std::vector<float>& values) {
    std::vector<std::uint16_t> halves;
    for (const float value : values) {
        halves.push_back(Float2HalfFloat(value));
    }
    return HalfBytes(halves);
}

Bytes Converted(std::uint32_t from, const Bytes& pixel, std::uint32_t to) {
    return Convert(TestImage(1, 1, from, pixel), to);
}

struct LayoutRow {
    std::uint32_t format;  // of 32 bits; that of 16 bits is kToHalf further
    std::vector<float> channels;
    std::vector<float> rgba;         // what they read as
    std::vector<std::size_t> taken;  // which of R, G, B, A they are written from
};
constexpr std::uint32_t kToHalf = FMT_RGBA16F - FMT_RGBA32F;

TEST(Float, EveryLayoutReadsAndWrites) {
    const LayoutRow rows[] = {
        {FMT_RGBA32F, {0.25f, -7.5f, 300.0f, 0.5f}, {0.25f, -7.5f, 300.0f, 0.5f}, {0, 1, 2, 3}},
        {FMT_RGB32F, {0.25f, -7.5f, 300.0f}, {0.25f, -7.5f, 300.0f, 0.0f}, {0, 1, 2}},
        {FMT_LA32F, {0.25f, 2.0f}, {0.25f, 0.25f, 0.25f, 2.0f}, {0, 3}},
        {FMT_L32F, {0.25f}, {0.25f, 0.25f, 0.25f, 0.0f}, {0}},
        {FMT_A32F, {0.25f}, {0.0f, 0.0f, 0.0f, 0.25f}, {3}},
    };
    const std::vector<float> floats{1.5f, 2.5f, 3.5f, 4.5f};
    const Bytes bytes{10, 200, 30, 255};
    for (const LayoutRow& row : rows) {
        SCOPED_TRACE(FindFormat(row.format)->name);
        Bytes read;
        for (const float value : row.rgba) {
            read.push_back(Float2UByte(value));
        }
        EXPECT_EQ(Converted(row.format, FloatBytes(row.channels), FMT_RGBA32F), FloatBytes(row.rgba));
        EXPECT_EQ(Converted(row.format + kToHalf, Halves(row.channels), FMT_RGBA32F), FloatBytes(row.rgba));
        EXPECT_EQ(Converted(row.format, FloatBytes(row.channels), FMT_RGBA8888), read);
        EXPECT_EQ(Converted(row.format + kToHalf, Halves(row.channels), FMT_RGBA8888), read);

        std::vector<float> fromFloat;
        std::vector<float> fromByte;
        for (const std::size_t channel : row.taken) {
            fromFloat.push_back(floats[channel]);
            fromByte.push_back(UByte2Float(bytes[channel]));
        }
        EXPECT_EQ(Converted(FMT_RGBA32F, FloatBytes(floats), row.format), FloatBytes(fromFloat));
        EXPECT_EQ(Converted(FMT_RGBA32F, FloatBytes(floats), row.format + kToHalf), Halves(fromFloat));
        EXPECT_EQ(Converted(FMT_RGBA8888, bytes, row.format), FloatBytes(fromByte));
        EXPECT_EQ(Converted(FMT_RGBA8888, bytes, row.format + kToHalf), Halves(fromByte));
    }
    EXPECT_EQ(Converted(FMT_L32F, FloatBytes({0.5f}), FMT_LA88), (Bytes{0, 127}));
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
