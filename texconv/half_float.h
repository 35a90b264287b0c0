// Conversions between bytes, single floats, half floats and normals. All are bit rules without rounding
// and without special cases for infinities and NaNs.
#pragma once

#include <bit>
#include <cstdint>

namespace QXTextureConverter {

// Truncates the mantissa to 10 bits and lets the exponent wrap modulo 32: 65536.0 gives 0x7C00,
// 131072.0 gives 0. Denormals keep their top mantissa bits.
constexpr unsigned short Float2HalfFloat(float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t sign = bits >> 31;
    const std::uint32_t exponent = (bits >> 23) & 0xFF;
    const std::uint32_t mantissa = (bits & 0x7FFFFF) >> 13;
    const std::uint32_t halfExponent = exponent == 0 ? 0 : (exponent - 112) & 31;
    return static_cast<unsigned short>(sign << 15 | halfExponent << 10 | mantissa);
}

// Exponent 31 gives finite values of 65536 and above; half denormals give float denormals of the
// same mantissa bits, far too small.
constexpr float HalfFloat2Float(unsigned short half) {
    const std::uint32_t sign = half >> 15;
    const std::uint32_t exponent = (half >> 10) & 31u;
    const std::uint32_t mantissa = half & 0x3FFu;
    const std::uint32_t floatExponent = exponent == 0 ? 0 : exponent + 112;
    return std::bit_cast<float>(sign << 31 | floatExponent << 23 | mantissa << 13);
}

// Truncates toward zero; negative values and NaN give 0, values of 2^32 and more 0xFFFFFFFF.
constexpr std::uint32_t TruncateToUnsigned(float value) {
    if (!(value > 0.0f)) {
        return 0;
    }
    return value >= 4294967296.0f ? 0xFFFFFFFFu : static_cast<std::uint32_t>(value);
}

// 255 times the value, truncated and kept to its low 8 bits: values above 1.0 wrap (1.5 gives
// 126), negative ones give 0.
constexpr unsigned char Float2UByte(float value) {
    return static_cast<unsigned char>(TruncateToUnsigned(value * 255.0f));
}

constexpr float UByte2Float(unsigned char value) {
    return static_cast<float>(value) / 255.0f;
}

constexpr unsigned char HalfFloat2UByte(unsigned short half) {
    return Float2UByte(HalfFloat2Float(half));
}

constexpr unsigned short UByte2HalfFloat(unsigned char value) {
    return Float2HalfFloat(UByte2Float(value));
}

// The byte that encodes a normal's component, -1 to 1, as 1 to 255 (0 as 128).
constexpr unsigned char Bumpmap_OffsetAndBias(float v) {
    return static_cast<unsigned char>(TruncateToUnsigned(v * 127.0f + 128.0f));
}

}  // namespace QXTextureConverter
