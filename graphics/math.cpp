#include "graphics/math.h"

namespace zorvan {
namespace {

using Matrix = Matrix4T<RealFixed>;

template <typename T>
Vector4T<T> Product(Matrix4T<T> const& m, Vector4T<T> const& v) {
    const auto row = [&](int r) { return m[r] * v.x + m[4 + r] * v.y + m[8 + r] * v.z + m[12 + r] * v.w; };
    return {row(0), row(1), row(2), row(3)};
}

// The three indices of 0 to 3 without one.
struct Others {
    int first, second, third;
};
constexpr Others kOthers[4] = {{1, 2, 3}, {0, 2, 3}, {0, 1, 3}, {0, 1, 2}};

// Determinant of the matrix without a row and a column, by the columns along the first row that is left;
// negated where row and column are an odd number apart. Six products are added and subtracted one by one;
// should the first be subtracted, its first factor is negated instead, which rounds otherwise.
RealFixed Cofactor(Matrix const& m, int withoutRow, int withoutColumn) {
    const Others row = kOthers[withoutRow];
    const Others column = kOthers[withoutColumn];
    // A product's factors stand in the order of their columns.
    const auto falling = [&](RealFixed first, int left, int right) {
        return first * m[4 * left + row.second] * m[4 * right + row.third];
    };
    const auto rising = [&](RealFixed first, int left, int right) {
        return first * m[4 * left + row.third] * m[4 * right + row.second];
    };
    const RealFixed a = m[4 * column.first + row.first];
    const RealFixed b = m[4 * column.second + row.first];
    const RealFixed c = m[4 * column.third + row.first];
    const RealFixed rest = rising(a, column.second, column.third) + falling(b, column.first, column.third) -
                           rising(b, column.first, column.third) - falling(c, column.first, column.second) +
                           rising(c, column.first, column.second);
    const bool odd = (withoutRow + withoutColumn) % 2 != 0;
    return odd ? falling(-a, column.second, column.third) + rest
               : falling(a, column.second, column.third) - rest;
}

}  // namespace

Vector4T<RealFixed> operator*(Matrix4T<RealFixed> const& matrix, Vector4T<RealFixed> const& vector) {
    return Product(matrix, vector);
}

Vector4T<DoubleRealFixed> operator*(Matrix4T<DoubleRealFixed> const& matrix,
                                    Vector4T<DoubleRealFixed> const& vector) {
    return Product(matrix, vector);
}

Matrix Inverse(Matrix const& matrix) {
    Matrix inverse;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            inverse[4 * column + row] = Cofactor(matrix, column, row);
        }
    }
    RealFixed determinant;
    for (int i = 0; i < 4; ++i) {
        determinant += matrix[i] * inverse[4 * i];
    }
    const RealFixed scale = RealFixed::FromRaw(static_cast<int32_t>(Reciprocal(determinant)));
    for (RealFixed& element : inverse.m) {
        element *= scale;
    }
    return inverse;
}

Matrix Frustum(RealFixed left, RealFixed right, RealFixed bottom, RealFixed top, RealFixed nearPlane,
               RealFixed farPlane) {
    constexpr RealFixed kTwo = RealFixed::FromInt(2);
    Matrix m = Matrix::Identity;
    m[0] = nearPlane * kTwo / (right - left);
    m[5] = nearPlane * kTwo / (top - bottom);
    m[8] = (right + left) / (right - left);
    m[9] = (top + bottom) / (top - bottom);
    m[10] = -(farPlane + nearPlane) / (farPlane - nearPlane);
    m[11] = -kOne<RealFixed>;
    m[14] = farPlane * -kTwo * nearPlane / (farPlane - nearPlane);
    m[15] = RealFixed{};
    return m;
}

Matrix Perspective(RealFixed fieldOfView, RealFixed aspect, RealFixed nearPlane, RealFixed farPlane) {
    constexpr RealFixed kHalf = RealFixed::FromRaw(0x8000);
    const RealFixed tangent = TanFixed(fieldOfView * kHalf * kDegreesToRadians);
    const RealFixed top = tangent * nearPlane;
    const RealFixed bottom = -top;
    return Frustum(aspect * bottom, aspect * top, bottom, top, nearPlane, farPlane);
}

Matrix Orthographic(RectangleT<RealFixed> const& view, RealFixed nearPlane, RealFixed farPlane) {
    constexpr RealFixed kTwo = RealFixed::FromInt(2);
    Matrix m = Matrix::Identity;
    m[0] = kTwo / (view.right - view.left);
    m[5] = kTwo / (view.top - view.bottom);
    m[10] = -kTwo / (farPlane - nearPlane);
    m[12] = -(view.right + view.left) / (view.right - view.left);
    m[13] = -(view.bottom + view.top) / (view.top - view.bottom);
    m[14] = -(nearPlane + farPlane) / (farPlane - nearPlane);
    return m;
}

}  // namespace zorvan
