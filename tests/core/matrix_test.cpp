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

// In the stated order of operands: all four terms, or those of two affine matrices.
Matrix Product(Matrix const& a, Matrix const& b, bool affine) {
    Matrix out;
    for (int i = 0; i < 16; ++i) {
        const int row = i & ~3;
        const int column = i & 3;
        RealFixed sum = a[row] * b[column] + a[row + 1] * b[4 + column] + a[row + 2] * b[8 + column];
        if (!affine) {
            sum += a[row + 3] * b[12 + column];
        } else if (row == 12) {
            sum += b[i];  // unrounded
        }
        out[i] = sum;
    }
    return out;
}

TEST(Matrix, IdentityIsSetAtLoadTimeAndChangesNothing) {
    EXPECT_TRUE(IsIdentity(Matrix::Identity));
    for (int i = 0; i < 16; ++i) {
        Matrix almost = Matrix::Identity;
        almost[i].raw ^= 1;
        EXPECT_FALSE(IsIdentity(almost)) << i;
    }
    // The product would drop lowest bits of odd elements.
    const Matrix odd = Numbered(0x10001, false);
    EXPECT_EQ(odd * Matrix::Identity, odd);
    EXPECT_EQ(Matrix::Identity * odd, odd);
}

TEST(Matrix, MultipliesEveryElementAlsoInPlace) {
    for (bool affineA : {false, true}) {
        for (bool affineB : {false, true}) {
            const Matrix a = Numbered(0x11111, affineA);
            const Matrix b = Numbered(-0x23457, affineB);
            const Matrix product = Product(a, b, affineA && affineB);
            EXPECT_EQ(a * b, product);
            Matrix inA = a;
            Multiply(inA, inA, b);
            EXPECT_EQ(inA, product);
            Matrix inB = b;
            Multiply(inB, a, inB);
            EXPECT_EQ(inB, product);
            Matrix both = a;
            Multiply(both, both, both);
            EXPECT_EQ(both, Product(a, a, affineA));
        }
    }
}

}  // namespace
}  // namespace zorvan
