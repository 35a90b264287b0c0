#include "core/matrix.h"

#include <gtest/gtest.h>

namespace zorvan {
namespace {

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
