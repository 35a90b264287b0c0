// Conversions of channels in loops that compilers turn into vectors: comparisons on the bits of floats, as
// positive floats order like integers.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"

namespace QXTextureConverter {
namespace {

constexpr std::int32_t kFloat2To31 = 0x4F000000;
constexpr std::int32_t kFloat2To32 = 0x4F800000;
constexpr std::int32_t kFloatInfinity = 0x7F800000;
// Between the exponents of floats and halves.
constexpr std::uint32_t kExponentOffset = 112;

[[gnu::always_inline]] inline constexpr std::int32_t BitsOf(float value) {
    return __builtin_bit_cast(std::int32_t, value);
}
[[gnu::always_inline]] inline constexpr float FloatOf(std::int32_t bits) {
    return __builtin_bit_cast(float, bits);
}

template <typename From, typename To, typename Convert>
[[gnu::always_inline]] inline void EachChannel(const std::uint8_t* __restrict from, std::size_t count,
                                               std::uint8_t* __restrict to, const Convert& convert) {
    for (std::size_t i = 0; i < count; ++i) {
        From in;
        std::memcpy(&in, from + i * sizeof(in), sizeof(in));
        const To out = convert(in);
        std::memcpy(to + i * sizeof(out), &out, sizeof(out));
    }
}

// value / 255, of whole numbers of up to 10 bits and a sign: the first product is exact, and the sum rounds
// to what the division gives, which the tests try for every number.
[[gnu::always_inline]] inline float DividedBy255(std::int32_t value) {
    constexpr float kMost = 257.0f / 65536.0f;
    constexpr float kRest = 1.0f / (255.0f * 65536.0f);
    const auto number = static_cast<float>(value);
    return number * kMost + number * kRest;
}

[[gnu::always_inline]] inline std::uint16_t HalfOf(std::uint32_t bits) {
    // The exponent less 112, modulo 32, differs in its highest bit only.
    const std::uint32_t exponent = (bits & 0x7F800000) != 0 ? (kExponentOffset & 31) << 10 : 0;
    return static_cast<std::uint16_t>((bits >> 16 & 0x8000) | ((bits >> 13 & 0x7FFF) ^ exponent));
}

void FloatsToBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    EachChannel<float, std::uint8_t>(
        from, count, to, [](float in) __attribute__((always_inline)) {
            const float value = in * 255.0f;
            const std::int32_t bits = BitsOf(value);
            // From 2^31 on the low byte of a whole number is 0; from 2^32 on all bits count as set.
            const std::int32_t inRange = -static_cast<std::int32_t>((bits > 0) & (bits < kFloat2To31));
            const std::int32_t above =
                -static_cast<std::int32_t>((bits >= kFloat2To32) & (bits <= kFloatInfinity));
            return static_cast<std::uint8_t>(static_cast<std::int32_t>(FloatOf(bits & inRange)) | above);
        });
}

void HalvesToBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    EachChannel<std::int16_t, std::uint8_t>(
        from, count, to, [](std::int16_t in) __attribute__((always_inline)) {
            // Negative values give 0. So do those of exponent 0, whichever exponent they get here.
            const std::int32_t half = in > 0 ? in : 0;
            const float value = FloatOf((half << 13) + static_cast<std::int32_t>(kExponentOffset << 23));
            return static_cast<std::uint8_t>(static_cast<std::int32_t>(value * 255.0f));
        });
}

void BytesToFloats(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    EachChannel<std::uint8_t, float>(
        from, count, to, [](std::uint8_t in) __attribute__((always_inline)) { return DividedBy255(in); });
}

// The factor brings in the offset of the exponents, so that the float's bits are the half's. That the product
// has the same 10 bits as the quotient by 255, the tests try for every byte.
void BytesToHalves(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    constexpr float kTo2PowerMinus112 = FloatOf((127 - kExponentOffset) << 23);
    constexpr float kFactor = (1.0f / 255.0f) * kTo2PowerMinus112;
    EachChannel<std::uint8_t, std::uint16_t>(
        from, count, to, [](std::uint8_t in) __attribute__((always_inline)) {
            return static_cast<std::uint16_t>(BitsOf(static_cast<float>(in) * kFactor) >> 13);
        });
}

void FloatsToHalves(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    EachChannel<std::uint32_t, std::uint16_t>(from, count, to, HalfOf);
}

void HalvesToFloats(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    EachChannel<std::uint16_t, std::uint32_t>(
        from, count, to, [](std::uint16_t in) __attribute__((always_inline)) {
            const std::uint32_t bits = in;
            const std::uint32_t offset = (bits & 0x7C00) != 0 ? kExponentOffset << 23 : 0;
            return (bits & 0x8000) << 16 | (((bits & 0x7FFF) << 13) + offset);
        });
}

}  // namespace
}  // namespace QXTextureConverter
