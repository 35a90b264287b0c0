// Plain value types over a scalar. They are trivially copyable, so lists may move them with realloc.
#pragma once

#include "core/fixed.h"

namespace zorvan {

template <typename T>
struct Vector2T {
    T x{}, y{};
    bool operator==(Vector2T const&) const = default;
};

template <typename T>
struct Vector3T {
    T x{}, y{}, z{};
    bool operator==(Vector3T const&) const = default;
};

template <typename T>
struct Vector4T {
    T x{}, y{}, z{}, w{};
    bool operator==(Vector4T const&) const = default;
};

template <typename T>
struct ColorT {
    T red{}, green{}, blue{}, alpha{};
    bool operator==(ColorT const&) const = default;
};

template <typename T>
struct SizeT {
    T width{}, height{};
    bool operator==(SizeT const&) const = default;
};

// Corners, not origin plus size: the width is right minus left.
template <typename T>
struct RectangleT {
    T left{}, top{}, right{}, bottom{};
    bool operator==(RectangleT const&) const = default;
};

// Size of a rectangle in whole pixels; wraps where 32 bits do not hold it.
constexpr SizeT<int> SizeOf(RectangleT<int> const& rectangle) {
    return {WrappingSubtract(rectangle.right, rectangle.left),
            WrappingSubtract(rectangle.bottom, rectangle.top)};
}

}  // namespace zorvan
