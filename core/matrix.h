// Column-major 4x4 matrices in fixed point.
#pragma once

#include "core/api.h"
#include "core/fixed.h"

namespace zorvan {

// Element 4c + r is row r of column c: 12, 13, 14 hold the translation, 3, 7, 11 the bottom row.
// This is the layout that OpenGL takes untransposed.
template <typename T>
class Matrix4T {
  public:
    T m[16];

    // Set up once per library at load time, by whichever source unit that uses it runs first.
    static const Matrix4T Identity;

    T& operator[](int index) { return m[index]; }
    T const& operator[](int index) const { return m[index]; }
    bool operator==(Matrix4T const&) const = default;

  private:
    static Matrix4T MakeIdentity();
};

template <typename T>
void SetIdentity(Matrix4T<T>& matrix) {
    for (T& element : matrix.m) {
        element = T{};
    }
    for (int i = 0; i < 16; i += 5) {
        matrix.m[i] = kOne<T>;
    }
}

template <typename T>
Matrix4T<T> Matrix4T<T>::MakeIdentity() {
    Matrix4T matrix;
    SetIdentity(matrix);
    return matrix;
}

template <typename T>
const Matrix4T<T> Matrix4T<T>::Identity = Matrix4T<T>::MakeIdentity();

// True only when all sixteen elements equal the identity's.
ZORVAN_CORE_API bool IsIdentity(Matrix4T<RealFixed> const& matrix);

// out[4j + i] = sum over k of a[4j + k] * b[4k + i]: a is applied first, b after. An identity operand
// returns the other one bit for bit; affine operands skip the products with their bottom rows. out may
// be a or b.
ZORVAN_CORE_API void Multiply(Matrix4T<RealFixed>& out, Matrix4T<RealFixed> const& a,
                              Matrix4T<RealFixed> const& b);

inline Matrix4T<RealFixed> operator*(Matrix4T<RealFixed> const& a, Matrix4T<RealFixed> const& b) {
    Matrix4T<RealFixed> out;
    Multiply(out, a, b);
    return out;
}

}  // namespace zorvan
