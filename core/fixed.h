// 16.16 and 32.32 fixed-point scalars. All arithmetic wraps; nothing saturates or traps.
#pragma once

#include <compare>
#include <cstdint>

namespace zorvan {

// Signed quotient truncated toward zero; a zero divisor yields 0.
constexpr int64_t DivideOrZero(int64_t numerator, int64_t divisor) {
    return divisor == 0 ? 0 : numerator / divisor;
}

// Sum and difference modulo 2^32.
constexpr int32_t WrappingAdd(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
constexpr int32_t WrappingSubtract(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

// Signed 16.16 value; raw 0x10000 is 1.0.
struct RealFixed {
    int32_t raw = 0;

    static constexpr RealFixed FromRaw(int32_t raw) { return RealFixed{raw}; }
    // Whole number to 16.16; bits above 16 are lost.
    static constexpr RealFixed FromInt(int32_t value) {
        return RealFixed{static_cast<int32_t>(static_cast<uint32_t>(value) << 16)};
    }

    constexpr float ToFloat() const { return static_cast<float>(raw) * (1.0f / 65536.0f); }

    friend constexpr auto operator<=>(RealFixed, RealFixed) = default;

    constexpr RealFixed operator-() const { return RealFixed{WrappingSubtract(0, raw)}; }
    friend constexpr RealFixed operator+(RealFixed a, RealFixed b) {
        return RealFixed{WrappingAdd(a.raw, b.raw)};
    }
    friend constexpr RealFixed operator-(RealFixed a, RealFixed b) {
        return RealFixed{WrappingSubtract(a.raw, b.raw)};
    }
    // Gives up the lowest bit of the larger operand (of b when equal) for headroom.
    friend constexpr RealFixed operator*(RealFixed a, RealFixed b) {
        const int64_t product = a.raw > b.raw ? static_cast<int64_t>(a.raw >> 1) * b.raw
                                              : static_cast<int64_t>(a.raw) * (b.raw >> 1);
        return RealFixed{static_cast<int32_t>(product >> 15)};
    }
    // Truncates toward zero; division by zero yields 0.
    friend constexpr RealFixed operator/(RealFixed a, RealFixed b) {
        return RealFixed{static_cast<int32_t>(DivideOrZero(static_cast<int64_t>(a.raw) * 65536, b.raw))};
    }
    constexpr RealFixed& operator+=(RealFixed b) { return *this = *this + b; }
    constexpr RealFixed& operator-=(RealFixed b) { return *this = *this - b; }
    constexpr RealFixed& operator*=(RealFixed b) { return *this = *this * b; }
};

// Signed 32.32 value; raw 0x1_0000_0000 is 1.0.
struct DoubleRealFixed {
    int64_t raw = 0;

    static constexpr DoubleRealFixed FromRaw(int64_t raw) { return DoubleRealFixed{raw}; }
    static constexpr DoubleRealFixed FromReal(RealFixed value) {
        return DoubleRealFixed{static_cast<int64_t>(value.raw) * 65536};
    }
    static constexpr DoubleRealFixed FromInt(int32_t value) {
        return DoubleRealFixed{static_cast<int64_t>(value) * (int64_t{1} << 32)};
    }
    // Keeps the low 32 bits of raw >> 16.
    constexpr RealFixed ToReal() const { return RealFixed{static_cast<int32_t>(raw >> 16)}; }

    friend constexpr auto operator<=>(DoubleRealFixed, DoubleRealFixed) = default;

    constexpr DoubleRealFixed operator-() const {
        return DoubleRealFixed{static_cast<int64_t>(0u - static_cast<uint64_t>(raw))};
    }
    friend constexpr DoubleRealFixed operator+(DoubleRealFixed a, DoubleRealFixed b) {
        return DoubleRealFixed{
            static_cast<int64_t>(static_cast<uint64_t>(a.raw) + static_cast<uint64_t>(b.raw))};
    }
    // Drops 16 bits of each operand; the low 64 bits of the product are kept.
    friend constexpr DoubleRealFixed operator*(DoubleRealFixed a, DoubleRealFixed b) {
        return DoubleRealFixed{
            static_cast<int64_t>(static_cast<uint64_t>(a.raw >> 16) * static_cast<uint64_t>(b.raw >> 16))};
    }
    constexpr DoubleRealFixed& operator+=(DoubleRealFixed b) { return *this = *this + b; }
};

// The value 1.0 of each scalar.
template <typename T>
inline constexpr T kOne = T{};
template <>
inline constexpr RealFixed kOne<RealFixed> = RealFixed{0x10000};
template <>
inline constexpr DoubleRealFixed kOne<DoubleRealFixed> = DoubleRealFixed{int64_t{1} << 32};

}  // namespace zorvan
