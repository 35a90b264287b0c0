// Fixed-point scalars, angles and matrices.
#include <gtest/gtest.h>

#include <cmath>

#include "core/matrix.h"
#include "core/trig.h"

namespace zorvan {
namespace {

constexpr int32_t kMin = INT32_MIN;
constexpr int32_t kMax = INT32_MAX;
constexpr double kRadians = 3.14159265358979323846 / 180;  // of a degree

TEST(RealFixed, RoundsAndWraps) {
    // The larger factor loses its lowest bit.
    constexpr int32_t kProducts[][3] = {{0x10000, 0x10000, 0x10000},
                                        {0x10001, 0x10000, 0x10000},
                                        {0x10000, 0x10001, 0x10000},
                                        {-0x10000, 0x10000, -0x10000},
                                        {-0x10001, 0x10000, -0x10001},
                                        {0x7FFF0000, 0x20000, -0x20000},
                                        {-3, 3, -1},
                                        {kMin, kMin, 0}};
    for (auto const& [a, b, product] : kProducts) {
        EXPECT_EQ((RealFixed{a} * RealFixed{b}).raw, product) << a << " * " << b;
    }
    constexpr int32_t kQuotients[][3] = {
        {0x20000, 0x30000, 0xAAAA}, {-3, 0x20000, -1}, {kMin, -0x10000, kMin}, {kMin, -1, 0}, {5, 0, 0}};
    for (auto const& [a, b, quotient] : kQuotients) {
        EXPECT_EQ((RealFixed{a} / RealFixed{b}).raw, quotient) << a << " / " << b;
    }
    EXPECT_EQ((RealFixed{kMax} + RealFixed{1}).raw, kMin);
    EXPECT_EQ((RealFixed{kMin} - RealFixed{1}).raw, kMax);
    EXPECT_EQ((-RealFixed{kMin}).raw, kMin);
    EXPECT_EQ(RealFixed::FromInt(0x18000).raw, kMin);
    EXPECT_EQ(RealFixed{1}.ToFloat(), 0x1p-16f);
}

TEST(DoubleRealFixed, MultipliesWithBothOperandsCut) {
    const DoubleRealFixed two = DoubleRealFixed::FromInt(2);
    EXPECT_EQ((two * DoubleRealFixed::FromInt(-3)).raw, DoubleRealFixed::FromInt(-6).raw);
    EXPECT_EQ((DoubleRealFixed{0xFFFF} * two).raw, 0);
    EXPECT_EQ((DoubleRealFixed{-1} * two).raw, -0x20000);
    EXPECT_EQ(DoubleRealFixed::FromReal(RealFixed{-5}).raw, -5 * 65536);
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

using Matrix = Matrix4T<RealFixed>;

Matrix Numbered(int32_t seed, bool affine) {
    Matrix matrix;
    for (int i = 0; i < 16; ++i) {
        matrix[i] = affine && i % 4 == 3 ? RealFixed::FromInt(i == 15) : RealFixed{seed + i * 7919};
    }
    return matrix;
}

// In the stated order of operands: all four terms, or those of two affine matrices.
Matrix Product(Matrix const& a, Matrix const& b, bool affine) {
    Matrix out;
    for (int i = 0; i < 16; ++i) {
        const int row = i & ~3;
        const int column = i & 3;
        out[i] = a[row] * b[column] + a[row + 1] * b[4 + column] + a[row + 2] * b[8 + column];
        // An affine matrix's last row adds the other one's place unrounded.
        out[i] += !affine ? a[row + 3] * b[12 + column] : row == 12 ? b[i] : RealFixed{};
    }
    return out;
}

TEST(Matrix, IdentityIsSetAtLoadTimeAndChangesNothing) {
    EXPECT_TRUE(IsIdentity(Matrix::Identity));
    // The product would drop lowest bits of odd elements.
    const Matrix odd = Numbered(0x10001, false), affine = Numbered(0x10001, true);
    EXPECT_EQ(odd * Matrix::Identity, odd);
    EXPECT_EQ(Matrix::Identity * odd, odd);
    for (int i = 0; i < 16; ++i) {
        Matrix almost = Matrix::Identity;
        almost[i].raw ^= 1;
        EXPECT_FALSE(IsIdentity(almost)) << i;
        EXPECT_EQ(almost * affine, Product(almost, affine, i % 4 != 3)) << i;
    }
}

TEST(Matrix, MultipliesEveryElementAlsoInPlace) {
    for (int affine = 0; affine < 4; ++affine) {
        const Matrix a = Numbered(0x11111, affine % 2 == 1);
        const Matrix b = Numbered(-0x23457, affine >= 2);
        Matrix out = a;
        Multiply(out, out, b);
        EXPECT_EQ(out, Product(a, b, affine == 3));
        out = b;
        Multiply(out, a, out);
        EXPECT_EQ(out, Product(a, b, affine == 3));
    }
}

}  // namespace
}  // namespace zorvan
