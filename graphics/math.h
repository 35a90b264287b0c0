// Fixed-point products and projections of the GL back end. A zero divisor yields 0 everywhere.
#pragma once

#include "core/fixed.h"
#include "core/geometry.h"
#include "core/matrix.h"
#include "core/trig.h"
#include "graphics/api.h"

namespace zorvan {

// result[r] = m[r] x + m[4 + r] y + m[8 + r] z + m[12 + r] w, each product rounded like the scalar's.
ZORVAN_GL_API Vector4T<RealFixed> operator*(Matrix4T<RealFixed> const& matrix,
                                            Vector4T<RealFixed> const& vector);
ZORVAN_GL_API Vector4T<DoubleRealFixed> operator*(Matrix4T<DoubleRealFixed> const& matrix,
                                                  Vector4T<DoubleRealFixed> const& vector);

// 1 / value in 16.16: 2^32 / raw, truncated toward zero, in 64 bits.
constexpr int64_t Reciprocal(RealFixed value) {
    return DivideOrZero(int64_t{1} << 32, value.raw);
}

// value times a reciprocal in 16.16, as 32.32.
constexpr DoubleRealFixed TimesReciprocal(RealFixed value, int64_t reciprocal) {
    return DoubleRealFixed::FromRaw(
        static_cast<int64_t>(static_cast<uint64_t>(int64_t{value.raw}) * static_cast<uint64_t>(reciprocal)));
}

// Inverse by cofactors; a singular matrix gives zeros.
Matrix4T<RealFixed> Inverse(Matrix4T<RealFixed> const& matrix);

// Perspective projection inside a frustum whose near rectangle is given.
Matrix4T<RealFixed> Frustum(RealFixed left, RealFixed right, RealFixed bottom, RealFixed top,
                            RealFixed nearPlane, RealFixed farPlane);

// Perspective projection; fieldOfView is the vertical angle in degrees, aspect width over height.
Matrix4T<RealFixed> Perspective(RealFixed fieldOfView, RealFixed aspect, RealFixed nearPlane,
                                RealFixed farPlane);

// Parallel projection of a rectangle.
Matrix4T<RealFixed> Orthographic(RectangleT<RealFixed> const& view, RealFixed nearPlane, RealFixed farPlane);

}  // namespace zorvan
