// Float formats on both working images, and the conversions of their channels over whole domains.
#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

const float kInfinity = std::numeric_limits<float>::infinity();
const float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(Half, KnownValues) {
    const std::pair<float, unsigned> narrowed[] = {
        {1.0f, 0x3C00},           {-2.0f, 0xC000},
        {-0.0f, 0x8000},          {1.0009765625f, 0x3C01},
        {1.00048828125f, 0x3C00}, {65536.0f, 0x7C00},
        {131072.0f, 0x0000},      {std::ldexp(1.0f, -16), 0x7C00},
        {kInfinity, 0x3C00},      {std::ldexp(1.5f, -127), 0x0300},
    };
    for (const auto& [value, half] : narrowed) {
        EXPECT_EQ(Float2HalfFloat(value), half) << value;
    }
    EXPECT_EQ(HalfFloat2UByte(0x3E00), 126);  // 1.5
    EXPECT_EQ(UByte2HalfFloat(128), 0x3804);
}

TEST(Half, EveryHalfWidensByItsBitsAndComesBack) {
    for (const std::uint16_t half : EveryWord()) {
        const float value = HalfFloat2Float(half);
        const int exponent = half >> 10 & 31;
        const float mantissa = static_cast<float>(half & 1023) / 1024.0f;
        // Exponent 0 lands among the float denormals, 31 stays finite.
        const float magnitude =
            exponent == 0 ? std::ldexp(mantissa, -126) : std::ldexp(1.0f + mantissa, exponent - 15);
        ASSERT_EQ(value, (half & 0x8000) != 0 ? -magnitude : magnitude) << half;
        ASSERT_EQ(Float2HalfFloat(value), half);
    }
}

TEST(UByte, FloatsWrapAndBytesComeBack) {
    const std::pair<float, unsigned> cut[] = {
        {1.0f, 255},  {-0.2f, 0},  {1.5f, 126},      {2.0f, 254}, {0.5f, 127},
        {1e20f, 255}, {-1e20f, 0}, {kInfinity, 255}, {kNan, 0},
    };
    for (const auto& [value, byte] : cut) {
        EXPECT_EQ(Float2UByte(value), byte) << value;
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
        ASSERT_EQ(UByte2Float(static_cast<unsigned char>(byte)), static_cast<float>(byte / 255.0));
    }
}

struct LayoutRow {
    std::uint32_t format;  // of 32 bits; that of 16 bits is kToHalf further
    std::vector<float> channels;
    std::vector<float> rgba;         // what they read as
    std::vector<std::size_t> taken;  // which of R, G, B, A they are written from
};
constexpr std::uint32_t kToHalf = FMT_RGBA16F - FMT_RGBA32F;

Bytes Halves(const std::vector<float>& values) {
    std::vector<std::uint16_t> halves(values.size());
    std::transform(values.begin(), values.end(), halves.begin(), Float2HalfFloat);
    return BytesOf(halves);
}

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
        Bytes read;
        std::transform(row.rgba.begin(), row.rgba.end(), std::back_inserter(read), Float2UByte);
        std::vector<float> fromFloat;
        std::vector<float> fromByte;
        for (const std::size_t channel : row.taken) {
            fromFloat.push_back(floats[channel]);
            fromByte.push_back(UByte2Float(bytes[channel]));
        }
        const char* name = FindFormat(row.format)->name;
        for (const bool half : {false, true}) {
            const std::uint32_t format = row.format + (half ? kToHalf : 0);
            const auto stored = [half](const std::vector<float>& values) {
                return half ? Halves(values) : BytesOf(values);
            };
            const TestImage pixel(1, 1, format, stored(row.channels));
            ExpectConversions({
                {name, pixel, {1, 1, FMT_RGBA32F}, BytesOf(row.rgba)},
                {name, pixel, {1, 1, FMT_RGBA8888}, read},
                {name, {1, 1, FMT_RGBA32F, BytesOf(floats)}, {1, 1, format}, stored(fromFloat)},
                {name, {1, 1, FMT_RGBA8888, bytes}, {1, 1, format}, stored(fromByte)},
            });
        }
    }
}

TEST(Float, BitsSurviveACopy) {
    const Bytes nans{1, 0, 0x80, 0x7F, 0, 0, 0xC0, 0xFF, 0, 0, 0x80, 0xFF, 1, 0, 0, 0};
    EXPECT_EQ(Convert({1, 1, FMT_RGBA32F, nans}, FMT_RGBA32F), nans);
    EXPECT_EQ(Convert({256, 256, FMT_L16F, BytesOf(EveryWord())}, FMT_L16F), BytesOf(EveryWord()));
}

TEST(Float, PixelsStayPackedAndTheSizeIsLeft) {
    // A stride of 12 asks for 24 bytes.
    const TestImage source(2, 2, FMT_L32F, BytesOf<float>({1, 2, 3, 4, 9, 9}), Flags{.stride = 12});
    Bytes packed = BytesOf<float>({1, 2, 3, 4});
    packed.resize(20, 0xEE);
    TestImage destination(2, 2, FMT_L32F, {}, Flags{.stride = 10});
    EXPECT_EQ(Convert(source, destination), packed);
    EXPECT_EQ(destination.DataSize(), 20u);
    // A stride below the row claims too little; nothing beyond is written.
    ExpectConversions(
        {{"floats", source, {2, 2, FMT_L32F, {}, Flags{.stride = 5}}, {packed.begin(), packed.begin() + 10}},
         {"bytes",
          {2, 2, FMT_L8, {0, 255, 255, 0}},
          {2, 2, FMT_L32F, {}, Flags{.stride = 5}},
          {0, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0}}});
}

}  // namespace
}  // namespace texconv_test
