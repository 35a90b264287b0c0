#include "core/fixed.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/trig.h"

namespace zorvan {
namespace {

constexpr int32_t kMin = INT32_MIN;
constexpr int32_t kMax = INT32_MAX;
constexpr double kRadians = 3.14159265358979323846 / 180;  // of a degree

TEST(RealFixed, RoundsAndWraps) {
    constexpr struct {
        char operation;
        int32_t a, b, expected;
    } kCases[] = {{'*', 0x10000, 0x10000, 0x10000},
                  {'*', 0x10001, 0x10000, 0x10000},
                  {'*', 0x10000, 0x10001, 0x10000},
                  {'*', -0x10000, 0x10000, -0x10000},
                  {'*', -0x10001, 0x10000, -0x10001},  // the smaller one keeps its lowest bit
                  {'*', -3, -1, 0},
                  {'*', kMin, kMin, 0},
                  {'*', 0x7FFF0000, 0x20000, -0x20000},
                  {'/', -3, 0x20000, -1},
                  {'/', 5, 0, 0},
                  {'/', kMin, -0x10000, kMin},
                  {'/', kMin, -1, 0},
                  {'/', 0x20000, 0x30000, 0xAAAA},
                  {'+', kMax, 1, kMin},
                  {'-', kMin, 1, kMax},
                  {'-', 0, kMin, kMin}};
    for (auto const& row : kCases) {
        const RealFixed a{row.a}, b{row.b};
        const RealFixed result = row.operation == '*'   ? a * b
                                 : row.operation == '/' ? a / b
                                 : row.operation == '+' ? a + b
                                                        : a - b;
        EXPECT_EQ(result.raw, row.expected) << row.a << ' ' << row.operation << ' ' << row.b;
    }
    EXPECT_EQ((-RealFixed{kMin}).raw, kMin);
    EXPECT_EQ(RealFixed::FromInt(0x18000).raw, kMin);
    EXPECT_EQ(RealFixed{1}.ToFloat(), 0x1p-16f);
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
        const RealFixed result = function(RealFixed{static_cast<int32_t>(raw)});
        digest = (digest ^ static_cast<uint32_t>(result.raw)) * 16777619u;
    }
    return digest;
}

// The digests are those of a second writing of the rounds in wide integers.
TEST(TanFixed, IsExactForEveryReducedAngle) {
    // Beyond the shift the result depends on the remainder and the sign alone: two periods hold all.
    EXPECT_EQ(Digest(&TanFixed, -2 * 4 * 51471, 2 * 4 * 51471, 1), 0xEE77969Fu);
    EXPECT_EQ(Digest(&TanFixed, kMin, kMax, 19937), 0x7FB11663u);
}

TEST(AtanFixed, IsExactForEveryInput) {
    // All that survives the shift, and both ends of what one shifted value stands for.
    EXPECT_EQ(Digest(&AtanFixed, -55807872 - 128, 55917056 + 128, 64), 0x7875FA97u);
    EXPECT_EQ(Digest(&AtanFixed, -55807872 - 65, 55917056 + 191, 64), 0xF3CB67B7u);
    EXPECT_EQ(Digest(&AtanFixed, kMin, kMax, 19937), 0x214379D7u);
}

TEST(SinCosDegrees, IsExactAtRightAnglesAndCloseElsewhere) {
    for (int32_t degrees = -360; degrees <= 720; degrees += 90) {
        const SinCos turn = SinCosDegrees(RealFixed::FromInt(degrees));
        EXPECT_EQ(turn.sin.raw, std::lround(std::sin(degrees * kRadians)) * 65536) << degrees;
        EXPECT_EQ(turn.cos.raw, std::lround(std::cos(degrees * kRadians)) * 65536) << degrees;
    }
    for (int64_t raw = kMin; raw <= kMax; raw += 99991) {
        const double radians = static_cast<double>(raw) / 65536.0 * kRadians;
        const SinCos turn = SinCosDegrees(RealFixed{static_cast<int32_t>(raw)});
        ASSERT_NEAR(turn.sin.raw, std::sin(radians) * 65536.0, 2.0) << raw;
        ASSERT_NEAR(turn.cos.raw, std::cos(radians) * 65536.0, 2.0) << raw;
    }
}

}  // namespace
}  // namespace zorvan
