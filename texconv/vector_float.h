// Conversions of channels, on vectors and in loops that compilers turn into such.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/vector_types.h"

namespace QXTextureConverter {
namespace {

// Between the exponents of floats and halves.
constexpr std::uint32_t kExponentOffset = 112;

[[gnu::always_inline]] inline constexpr std::int32_t BitsOf(float value) {
    return __builtin_bit_cast(std::int32_t, value);
}
[[gnu::always_inline]] inline constexpr float FloatOf(std::int32_t bits) {
    return __builtin_bit_cast(float, bits);
}

// Asks for what a step two pages on will touch. Processors seldom look beyond a page by themselves, and
// floats are so many bytes that their way through the caches and page tables would take longer than the
// arithmetic. Asking for addresses of nothing does nothing.
template <std::size_t kCount>
[[gnu::always_inline]] inline void Prefetch(const std::uint8_t* bytes) {
    constexpr std::size_t kAhead = 8192;
    constexpr std::size_t kLine = 64;
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(bytes) + kAhead;
    for (std::size_t at = 0; at < kCount; at += kLine) {
        __builtin_prefetch(reinterpret_cast<const void*>(first + at));
    }
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

// 255 times the values, truncated, in the lowest bytes. From 2^31 on the lowest byte of a whole number is 0;
// from 2^32 on all bits count as set.
[[gnu::always_inline]] inline I32 ByteValues(const F32& in) {
    const F32 value = in * 255.0f;
    const auto bits = reinterpret_cast<I32>(value);
    const I32 inRange = bits & (bits > 0) & (value < 0x1p31f);
    return __builtin_convertvector(reinterpret_cast<F32>(inRange), I32) | (value >= 0x1p32f);
}

// Whether all values are from 0 on and below 2: the two highest bits tell.
template <std::size_t kVectors>
[[gnu::always_inline]] inline bool AreBelow2(const F32 (&values)[kVectors]) {
    I32 all{};
    for (const F32& some : values) {
        all |= reinterpret_cast<I32>(some);
    }
    return !AnyLane(all & static_cast<std::int32_t>(0xC0000000));
}

void FloatsToBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    std::size_t i = 0;
    for (; i + kVectorBytes <= count; i += kVectorBytes) {
        const std::uint8_t* floats = from + i * sizeof(float);
        Prefetch<kVectorBytes * sizeof(float)>(floats);
        F32 values[4];
        for (std::size_t part = 0; part < 4; ++part) {
            values[part] = LoadVector<F32>(floats + part * kVectorBytes);
        }
        const bool simple = AreBelow2(values);
        U16 bytes[4];
        for (std::size_t part = 0; part < 4; ++part) {
            bytes[part] = reinterpret_cast<U16>(simple ? __builtin_convertvector(values[part] * 255.0f, I32)
                                                       : ByteValues(values[part]));
        }
        const auto low = reinterpret_cast<U8>(EvenLanes(bytes[0], bytes[1]));
        const auto high = reinterpret_cast<U8>(EvenLanes(bytes[2], bytes[3]));
        StoreVector(to + i, EvenLanes(low, high));
    }
    kScalarRowKernels.floatsToBytes(from + i * sizeof(float), count - i, to + i);
}

// The factor brings in the offset of the exponents. Negative values give 0, and so do those of exponent 0,
// which stay below 1.
void HalvesToBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    constexpr float kFactor = 255.0f * FloatOf((127 + kExponentOffset) << 23);
    EachChannel<std::int16_t, std::uint8_t>(
        from, count, to, [](std::int16_t in) __attribute__((always_inline)) {
            const std::int32_t half = in > 0 ? in : 0;
            return static_cast<std::uint8_t>(static_cast<std::int32_t>(FloatOf(half << 13) * kFactor));
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

// In halves of the floats' words: the lower one has the lowest 3 of the result's bits.
void FloatsToHalves(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    if constexpr (!kVectorRegisters) {
        return kScalarRowKernels.floatsToHalves(from, count, to);
    }
    constexpr std::uint16_t kExponentFlip = (kExponentOffset & 31) << 10;
    std::size_t i = 0;
    for (; i + kVectorBytes <= count; i += kVectorBytes) {
        Prefetch<kVectorBytes * sizeof(float)>(from + i * sizeof(float));
        for (std::size_t at = i; at < i + kVectorBytes; at += kShortLanes) {
            const auto first = LoadVector<U16>(from + at * sizeof(float));
            const auto second = LoadVector<U16>(from + at * sizeof(float) + kVectorBytes);
            const U16 lower = EvenLanes(first, second);
            const U16 upper = OddLanes(first, second);
            // The exponent less 112, modulo 32, differs in its highest bit only.
            const auto isZero = reinterpret_cast<U16>((upper & 0x7F80) == 0);
            const U16 magnitude = ((upper << 3 | lower >> 13) & 0x7FFF) ^ (~isZero & kExponentFlip);
            StoreVector(to + at * 2, (upper & 0x8000) | magnitude);
        }
    }
    kScalarRowKernels.floatsToHalves(from + i * sizeof(float), count - i, to + i * 2);
}

void HalvesToFloats(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    if constexpr (!kVectorRegisters) {
        return kScalarRowKernels.halvesToFloats(from, count, to);
    }
    constexpr std::uint16_t kUpperOffset = kExponentOffset << 7;
    std::size_t i = 0;
    for (; i + kVectorBytes <= count; i += kVectorBytes) {
        Prefetch<kVectorBytes * 2>(from + i * 2);
        Prefetch<kVectorBytes * sizeof(float)>(to + i * sizeof(float));
        for (std::size_t at = i; at < i + kVectorBytes; at += kShortLanes) {
            const auto half = LoadVector<U16>(from + at * 2);
            const auto isZero = reinterpret_cast<U16>((half & 0x7C00) == 0);
            const U16 magnitude = ((half & 0x7FFF) >> 3) + (~isZero & kUpperOffset);
            Interleave(half << 13, (half & 0x8000) | magnitude, to + at * sizeof(float));
        }
    }
    kScalarRowKernels.halvesToFloats(from + i * 2, count - i, to + i * sizeof(float));
}

}  // namespace
}  // namespace QXTextureConverter
