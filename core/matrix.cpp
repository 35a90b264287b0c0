#include "core/matrix.h"

namespace zorvan {
namespace {

using Matrix = Matrix4T<RealFixed>;

bool IsAffine(Matrix const& a) {
    return a[3].raw == 0 && a[7].raw == 0 && a[11].raw == 0 && a[15] == kOne<RealFixed>;
}

Matrix AffineProduct(Matrix const& a, Matrix const& b) {
    Matrix out;
    for (int column = 0; column < 16; column += 4) {
        for (int row = 0; row < 3; ++row) {
            out[column + row] = a[column] * b[row] + a[column + 1] * b[4 + row] + a[column + 2] * b[8 + row];
        }
        out[column + 3] = RealFixed{};
    }
    for (int row = 0; row < 3; ++row) {
        out[12 + row] += b[12 + row];
    }
    out[15] = kOne<RealFixed>;
    return out;
}

Matrix FullProduct(Matrix const& a, Matrix const& b) {
    Matrix out;
    for (int column = 0; column < 16; column += 4) {
        for (int row = 0; row < 4; ++row) {
            out[column + row] = a[column] * b[row] + a[column + 1] * b[4 + row] + a[column + 2] * b[8 + row] +
                                a[column + 3] * b[12 + row];
        }
    }
    return out;
}

}  // namespace

bool IsIdentity(Matrix const& matrix) {
    for (int i = 0; i < 16; ++i) {
        if (matrix[i] != (i % 5 == 0 ? kOne<RealFixed> : RealFixed{})) {
            return false;
        }
    }
    return true;
}

void Multiply(Matrix& out, Matrix const& a, Matrix const& b) {
    if (IsIdentity(a)) {
        out = b;
    } else if (IsIdentity(b)) {
        out = a;
    } else if (IsAffine(a) && IsAffine(b)) {
        out = AffineProduct(a, b);
    } else {
        out = FullProduct(a, b);
    }
}

}  // namespace zorvan
