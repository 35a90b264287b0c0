#include "core/fixed.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/trig.h"

namespace zorvan {
namespace {

constexpr int32_t kMin = INT32_MIN;
constexpr int32_t kMax = INT32_MAX;

struct Binary {
    int32_t a, b, expected;
};

TEST(RealFixed, MultipliesWithTheLargerOperandHalved) {
    constexpr Binary kCases[] = {
        {0x10000, 0x10000, 0x10000},
        {0x10001, 0x10000, 0x10000},
        {0x10000, 0x10001, 0x10000},
        {3, 3, 0},
        {-0x10000, 0x10000, -0x10000},
        {-0x10001, 0x10000, -0x10001},  // the smaller one keeps its lowest bit
        {-3, -1, 0},
        {0x8000, 0x8000, 0x4000},
        {kMin, kMin, 0},
        {0x7FFF0000, 0x20000, -0x20000},
    };
    for (Binary const& c : kCases) {
        EXPECT_EQ((RealFixed{c.a} * RealFixed{c.b}).raw, c.expected) << c.a << " * " << c.b;
    }
}

TEST(RealFixed, DividesTowardZeroAndByZero) {
    constexpr Binary kCases[] = {
        {0x10000, 0x20000, 0x8000}, {-1, 0x20000, 0}, {-3, 0x20000, -1},   {5, 0, 0},
        {kMin, -0x10000, kMin},     {kMin, -1, 0},    {kMax, 1, -0x10000}, {0x20000, 0x30000, 0xAAAA}};
    for (Binary const& c : kCases) {
        EXPECT_EQ((RealFixed{c.a} / RealFixed{c.b}).raw, c.expected) << c.a << " / " << c.b;
    }
}

TEST(RealFixed, AddsAndNegatesWithWrapping) {
    EXPECT_EQ((RealFixed{kMax} + RealFixed{1}).raw, kMin);
    EXPECT_EQ((RealFixed{kMin} - RealFixed{1}).raw, kMax);
    EXPECT_EQ((-RealFixed{kMin}).raw, kMin);
    EXPECT_EQ(RealFixed::FromInt(0x18000).raw, static_cast<int32_t>(0x80000000u));
    EXPECT_EQ(RealFixed{1}.ToFloat(), 1.52587890625e-05f);
}

TEST(DoubleRealFixed, MultipliesWithBothOperandsCut) {
    const DoubleRealFixed two = DoubleRealFixed::FromInt(2);
    EXPECT_EQ((two * DoubleRealFixed::FromInt(-3)).raw, DoubleRealFixed::FromInt(-6).raw);
    EXPECT_EQ((DoubleRealFixed{0xFFFF} * two).raw, 0);
    EXPECT_EQ((DoubleRealFixed{-1} * two).raw, -0x20000);
    EXPECT_EQ(DoubleRealFixed::FromReal(RealFixed{-5}).ToReal().raw, -5);
    EXPECT_EQ(DoubleRealFixed{int64_t{0x123456789} << 16}.ToReal().raw, 0x23456789);
}

// FNV-1a over the results for every input of a range, negative ones first.
uint32_t Digest(RealFixed (*function)(RealFixed), int64_t first, int64_t last, int64_t step) {
    uint32_t digest = 0x811C9DC5u;
    for (int64_t raw = first; raw <= last; raw += step) {
        digest =
            (digest ^ static_cast<uint32_t>(function(RealFixed{static_cast<int32_t>(raw)}).raw)) * 16777619u;
    }
    return digest;
}

// The digests are those of a second writing of the rounds in wide integers.
TEST(TanFixed, IsExactForEveryReducedAngleAndCloseToTheTangent) {
    // Beyond the shift the result depends on the remainder and the sign alone: two periods hold all.
    EXPECT_EQ(Digest(&TanFixed, -2 * 4 * 51471, 2 * 4 * 51471, 1), 0xEE77969Fu);
    EXPECT_EQ(Digest(&TanFixed, kMin, kMax, 19937), 0x7FB11663u);
    for (int32_t raw = 400; raw < 90000; raw += 401) {  // up to about 78 degrees
        const double exact = std::tan(raw / 65536.0);
        EXPECT_NEAR(TanFixed(RealFixed{raw}).raw / 65536.0, exact, 0.003 * (1 + exact * exact)) << raw;
    }
}

TEST(AtanFixed, IsExactForEveryInputAndCloseToTheArctangent) {
    // All that survives the shift, and both ends of what one shifted value stands for.
    EXPECT_EQ(Digest(&AtanFixed, -55807872 - 128, 55917056 + 128, 64), 0x7875FA97u);
    EXPECT_EQ(Digest(&AtanFixed, -55807872 - 65, 55917056 + 191, 64), 0xF3CB67B7u);
    EXPECT_EQ(Digest(&AtanFixed, kMin, kMax, 19937), 0x214379D7u);
    for (int32_t raw = -0x80000; raw < 0x80000; raw += 401) {  // its units are of 1/1024
        EXPECT_NEAR(AtanFixed(RealFixed{raw}).raw / 65536.0, std::atan(raw / 65536.0), 6.0 / 1024) << raw;
    }
}

TEST(SinCosDegrees, IsExactAtRightAnglesAndCloseElsewhere) {
    constexpr int32_t kRight[][3] = {
        {0, 0, 0x10000}, {90, 0x10000, 0}, {180, 0, -0x10000}, {-90, -0x10000, 0}, {720, 0, 0x10000}};
    for (auto const& [degrees, sin, cos] : kRight) {
        EXPECT_EQ(SinCosDegrees(RealFixed::FromInt(degrees)).sin.raw, sin) << degrees;
        EXPECT_EQ(SinCosDegrees(RealFixed::FromInt(degrees)).cos.raw, cos) << degrees;
    }
    for (int64_t raw = kMin; raw <= kMax; raw += 99991) {
        const double radians = static_cast<double>(raw) / 65536.0 * 3.14159265358979323846 / 180.0;
        const SinCos turn = SinCosDegrees(RealFixed{static_cast<int32_t>(raw)});
        ASSERT_NEAR(turn.sin.raw, std::sin(radians) * 65536.0, 2.0) << raw;
        ASSERT_NEAR(turn.cos.raw, std::cos(radians) * 65536.0, 2.0) << raw;
    }
}

}  // namespace
}  // namespace zorvan
