// Bit counting, channel widening and the float conversions, over their whole domains.
#include <cmath>
#include <limits>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

TEST(Masks, CountAndFirstBit) {
    EXPECT_EQ(NumBitsSet(0), 0u);
    EXPECT_EQ(FirstBitSet(0), 0u);
    EXPECT_EQ(NumBitsSet(0xFFFFFFFF), 32u);
    EXPECT_EQ(NumBitsSet(0x8001F00Ful), 10u);
    for (unsigned bit = 0; bit < 32; ++bit) {
        EXPECT_EQ(FirstBitSet(1ul << bit), bit);
        EXPECT_EQ(FirstBitSet(0xFFFFFFFFul << bit), bit);
        EXPECT_EQ(NumBitsSet(0xFFFFFFFFul >> bit), 32 - bit);
    }
}

TEST(Half, KnownValues) {
    const std::pair<float, unsigned> narrowed[] = {
        {1.0f, 0x3C00},
        {-2.0f, 0xC000},
        {0.0f, 0},
        {-0.0f, 0x8000},
        {0.5f, 0x3800},
        {1.0009765625f, 0x3C01},
        {1.00048828125f, 0x3C00},
        {65536.0f, 0x7C00},
        {131072.0f, 0x0000},
        {std::ldexp(1.0f, -16), 0x7C00},
        {std::numeric_limits<float>::infinity(), 0x3C00},
        {std::ldexp(1.5f, -127), 0x0300},
    };
    for (const auto& [value, half] : narrowed) {
        EXPECT_EQ(Float2HalfFloat(value), half) << value;
    }
    EXPECT_EQ(Float2HalfFloat(std::numeric_limits<float>::quiet_NaN()) & 0x7C00, 0x3C00);
    EXPECT_EQ(HalfFloat2Float(0x7C00), 65536.0f);
    EXPECT_EQ(HalfFloat2Float(0x3555), 0.333251953125f);
    EXPECT_EQ(UByte2HalfFloat(255), 0x3C00);
    EXPECT_EQ(UByte2HalfFloat(128), 0x3804);
}

TEST(Half, EveryHalfWidensByItsBitsAndComesBack) {
    for (unsigned half = 0; half < 0x10000; ++half) {
        const auto h = static_cast<unsigned short>(half);
        const float value = HalfFloat2Float(h);
        const int exponent = static_cast<int>(half >> 10 & 31);
        const float mantissa = static_cast<float>(half & 1023) / 1024.0f;
        // Exponent 0 lands among the float denormals, 31 stays finite.
        const float magnitude =
            exponent == 0 ? std::ldexp(mantissa, -126) : std::ldexp(1.0f + mantissa, exponent - 15);
        ASSERT_EQ(value, (half & 0x8000) != 0 ? -magnitude : magnitude) << half;
        ASSERT_EQ(Float2HalfFloat(value), h);
        ASSERT_EQ(HalfFloat2UByte(h), Float2UByte(value));
    }
}

TEST(UByte, FloatsWrapAndBytesComeBack) {
    const std::pair<float, unsigned> cut[] = {
        {1.0f, 255},
        {-0.2f, 0},
        {1.5f, 126},
        {2.0f, 254},
        {0.5f, 127},
        {1e20f, 255},
        {-1e20f, 0},
        {std::numeric_limits<float>::infinity(), 255},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const auto& [value, byte] : cut) {
        EXPECT_EQ(Float2UByte(value), byte) << value;
    }
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto b = static_cast<unsigned char>(byte);
        const float value = UByte2Float(b);
        ASSERT_EQ(value, static_cast<float>(byte / 255.0));
        // Truncation loses at most one step.
        ASSERT_LE(byte - Float2UByte(value), 1u) << byte;
        ASSERT_EQ(UByte2HalfFloat(b), Float2HalfFloat(value));
    }
}

TEST(Bias, EncodesNormalComponents) {
    EXPECT_EQ(Bumpmap_OffsetAndBias(0.0f), 128);
    EXPECT_EQ(Bumpmap_OffsetAndBias(1.0f), 255);
    EXPECT_EQ(Bumpmap_OffsetAndBias(-1.0f), 1);
    EXPECT_EQ(Bumpmap_OffsetAndBias(-0.5f), 64);
    EXPECT_EQ(Bumpmap_OffsetAndBias(2.0f), 126);
    EXPECT_EQ(Bumpmap_OffsetAndBias(-7.0f), 0);
    EXPECT_EQ(Bumpmap_OffsetAndBias(std::numeric_limits<float>::quiet_NaN()), 0);
}

}  // namespace
}  // namespace texconv_test
