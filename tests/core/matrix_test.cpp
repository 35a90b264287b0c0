#include "core/matrix.h"

#include <gtest/gtest.h>

namespace zorvan {
namespace {

using Matrix = Matrix4T<RealFixed>;

Matrix Numbered(int32_t seed, bool affine) {
    Matrix matrix;
    for (int i = 0; i < 16; ++i) {
        matrix[i] = RealFixed{seed + i * 7919};
    }
    if (affine) {
        matrix[3] = matrix[7] = matrix[11] = RealFixed{};
        matrix[15] = kOne<RealFixed>;
    }
    return matrix;
}

// All four terms, in the stated order of operands.
Matrix Product(Matrix const& a, Matrix const& b) {
    Matrix out;
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 4; ++i) {
            RealFixed sum;
            for (int k = 0; k < 4; ++k) {
                sum += a[4 * j + k] * b[4 * k + i];
            }
            out[4 * j + i] = sum;
        }
    }
    return out;
}

TEST(Matrix, IdentityIsSetAtLoadTime) {
    EXPECT_TRUE(IsIdentity(Matrix::Identity));
    for (int i = 0; i < 16; ++i) {
        Matrix almost = Matrix::Identity;
        almost[i].raw ^= 1;
        EXPECT_FALSE(IsIdentity(almost)) << i;
    }
}

TEST(Matrix, MultipliesByTheIdentityBitForBit) {
    // The product would drop lowest bits of odd elements.
    const Matrix odd = Numbered(0x10001, false);
    EXPECT_EQ(odd * Matrix::Identity, odd);
    EXPECT_EQ(Matrix::Identity * odd, odd);
    EXPECT_NE(Product(odd, Matrix::Identity), odd);
}

TEST(Matrix, MultipliesInPlaceAsIntoAnother) {
    for (bool affineA : {false, true}) {
        for (bool affineB : {false, true}) {
            const Matrix a = Numbered(0x11111, affineA);
            const Matrix b = Numbered(-0x23457, affineB);
            Matrix separate;
            Multiply(separate, a, b);
            Matrix inA = a;
            Multiply(inA, inA, b);
            Matrix inB = b;
            Multiply(inB, a, inB);
            Matrix both = a;
            Multiply(both, both, both);
            EXPECT_EQ(inA, separate);
            EXPECT_EQ(inB, separate);
            EXPECT_EQ(both, a * a);
        }
    }
}

TEST(Matrix, MultipliesEveryElement) {
    const Matrix a = Numbered(0x11111, false);
    const Matrix b = Numbered(-0x23457, false);
    EXPECT_EQ(a * b, Product(a, b));
    EXPECT_EQ(a * Numbered(7, true), Product(a, Numbered(7, true)));
}

TEST(Matrix, AffineProductAddsTheSecondTranslationUnrounded) {
    const Matrix a = Numbered(0x11111, true);
    const Matrix b = Numbered(-0x23457, true);
    const Matrix product = a * b;
    EXPECT_EQ(product[3].raw, 0);
    EXPECT_EQ(product[15], kOne<RealFixed>);
    for (int row = 0; row < 3; ++row) {
        const RealFixed turned = a[12] * b[row] + a[13] * b[4 + row] + a[14] * b[8 + row];
        EXPECT_EQ(product[12 + row], turned + b[12 + row]);
        EXPECT_EQ(product[row], a[0] * b[row] + a[1] * b[4 + row] + a[2] * b[8 + row]);
    }
}

}  // namespace
}  // namespace zorvan
