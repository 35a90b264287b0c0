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

constexpr int64_t kAngleTable[] = {0xC910, 0x76B2, 0x3EB7, 0x1FD6, 0x0FFB, 0x07FF, 0x0400, 0x0200,
                                   0x0100, 0x0080, 0x0040, 0x0020, 0x0010, 0x0008, 0x0004};

// The tangent's rounds written down a second time, in wide integers.
int32_t TangentByTheRounds(int32_t input) {
    int64_t a = input >> 2;
    int64_t s = 1;
    if (a < 0) {
        a = -a;
        s = -1;
    }
    int64_t z = a % 51471;
    if (z > 25736) {
        z = 51472 - z;
        s = -s;
    }
    int64_t x = 9949;
    int64_t y = 0;
    for (int i = 0; i < 15; ++i) {
        const int64_t d = z >= 0 ? 1 : -1;
        const int64_t t = d * (int64_t{1} << (14 - i));
        const int64_t oldX = x;
        x -= (y * t) >> 14;
        y += (oldX * t) >> 14;
        z -= d * (kAngleTable[i] >> 2);
    }
    return static_cast<int32_t>((x == 0 ? 0 : s * (y << 14) / x) * 4);
}

int32_t ArctangentByTheRounds(int32_t t) {
    if (t > 55917056 || t < -55807872) {
        return t > 0 ? 102944 : -102944;
    }
    int64_t y = t >> 6;
    int64_t x = 1024;
    int64_t z = 0;
    for (int i = 0; i <= 10; ++i) {
        const int64_t s = (x << (10 - i)) >> 10;
        const int64_t p = y + s;
        const int64_t m = y - s;
        const int64_t d = std::llabs(m) < std::llabs(p) ? -1 : 1;
        const int64_t oldY = y;
        y = d < 0 ? m : p;
        z -= d * (kAngleTable[i] >> 6);
        x -= (oldY * d * (int64_t{1} << (10 - i))) >> 10;
    }
    return static_cast<int32_t>(z * 64);
}

TEST(TanFixed, FollowsTheRoundsForEveryReducedAngle) {
    // Beyond the shift the result depends on the remainder and the sign alone: two periods hold all.
    for (int32_t raw = -2 * 4 * 51471; raw <= 2 * 4 * 51471; ++raw) {
        ASSERT_EQ(TanFixed(RealFixed{raw}).raw, raw == 0 ? 0 : TangentByTheRounds(raw)) << raw;
    }
    for (int64_t raw = kMin; raw <= kMax; raw += 19937) {
        const auto angle = static_cast<int32_t>(raw);
        ASSERT_EQ(TanFixed(RealFixed{angle}).raw, angle == 0 ? 0 : TangentByTheRounds(angle)) << angle;
    }
    EXPECT_EQ(TanFixed(RealFixed{kMin}).raw, TangentByTheRounds(kMin));
}

TEST(TanFixed, IsCloseToTheTangent) {
    EXPECT_NEAR(TanFixed(RealFixed{0xC90F}).raw, 0x10000, 64);
    for (int32_t raw = 400; raw < 90000; raw += 401) {  // up to about 78 degrees
        const double exact = std::tan(raw / 65536.0);
        EXPECT_NEAR(TanFixed(RealFixed{raw}).raw / 65536.0, exact, 0.003 * (1 + exact * exact)) << raw;
        EXPECT_EQ(TanFixed(RealFixed{-(raw & ~3)}).raw, -TanFixed(RealFixed{raw & ~3}).raw) << raw;
    }
}

TEST(AtanFixed, FollowsTheRoundsForEveryInput) {
    // All that survives the shift, and both ends of what one shifted value stands for.
    for (int64_t shifted = -55807872 / 64 - 2; shifted <= 55917056 / 64 + 2; ++shifted) {
        for (int64_t low : {0, 63}) {
            const auto raw = static_cast<int32_t>(shifted * 64 + low);
            ASSERT_EQ(AtanFixed(RealFixed{raw}).raw, ArctangentByTheRounds(raw)) << raw;
        }
    }
    EXPECT_EQ(AtanFixed(RealFixed{0x3E80000}).raw, 102944);
    EXPECT_EQ(AtanFixed(RealFixed{55917057}).raw, 102944);
    EXPECT_EQ(AtanFixed(RealFixed{-55807873}).raw, -102944);
    EXPECT_EQ(AtanFixed(RealFixed{kMin}).raw, -102944);
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
