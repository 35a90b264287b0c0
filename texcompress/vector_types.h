// Portable vectors for the block kernels. Files that include this are compiled once per instruction set,
// so everything here and in them has internal linkage: the linker must never mix the sets.
#pragma once

#include <cstdint>
#include <cstring>

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#endif

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "whole vectors of pixels are stored as bytes");

namespace zorvan::texcompress {
namespace {

// As wide as the instruction set's registers: wider ones would be split badly.
#ifdef __AVX2__
constexpr int kVectorBytes = 32;
#else
constexpr int kVectorBytes = 16;
#endif
constexpr int kLanes = kVectorBytes / 4;       // of 32 bits
constexpr int kShortLanes = kVectorBytes / 2;  // of 16 bits

using I32 = int32_t __attribute__((vector_size(kVectorBytes)));
using U32 = uint32_t __attribute__((vector_size(kVectorBytes)));
using F32 = float __attribute__((vector_size(kVectorBytes)));
using I16 = int16_t __attribute__((vector_size(kVectorBytes)));
using F64 = double __attribute__((vector_size(kVectorBytes)));
using HalfI32 = int32_t __attribute__((vector_size(kVectorBytes / 2)));  // as many lanes as F64

template <typename Vector, typename Element>
[[gnu::always_inline]] inline Vector LoadVector(const Element* elements) {
    Vector vector;
    std::memcpy(&vector, elements, sizeof(vector));
    return vector;
}

template <typename Vector, typename Element>
[[gnu::always_inline]] inline void StoreVector(Element* elements, const Vector& vector) {
    std::memcpy(elements, &vector, sizeof(vector));
}

// Whole numbers below 2^24 convert exactly; the way back truncates.
[[gnu::always_inline]] inline F32 ToFloat(const I32& vector) {
    return __builtin_convertvector(vector, F32);
}
[[gnu::always_inline]] inline I32 ToInt(const F32& vector) {
    return __builtin_convertvector(vector, I32);
}

// 0, 1, 2, ...
[[gnu::always_inline]] inline I32 LaneNumbers() {
    I32 numbers{};
    for (int i = 0; i < kLanes; ++i) {
        numbers[i] = i;
    }
    return numbers;
}

// Lane by lane: mask lanes are all ones or all zeros.
template <typename Vector>
[[gnu::always_inline]] inline Vector Select(const Vector& mask, const Vector& yes, const Vector& no) {
    return (mask & yes) | (~mask & no);
}

template <typename Vector>
[[gnu::always_inline]] inline Vector Min(const Vector& a, const Vector& b) {
    return a < b ? a : b;
}

template <typename Vector>
[[gnu::always_inline]] inline Vector Max(const Vector& a, const Vector& b) {
    return a > b ? a : b;
}

[[gnu::always_inline]] inline I32 Absolute(const I32& vector) {
    const I32 negative = vector >> 31;
    return (vector ^ negative) - negative;
}

// Products of whole numbers 0..2^21 - 1, prepared by SplitFactor, and 0..255, prepared by ByteFactor. SSE2
// has no product of 32-bit lanes, but sums of products of 16-bit ones: of n % 128 and n / 128 here.
#ifdef __SSE2__
[[gnu::always_inline]] inline I32 SplitFactor(const I32& factors) {
    return (factors & 127) | factors >> 7 << 16;
}
template <typename T>
[[gnu::always_inline]] inline T ByteFactor(const T& factor) {
    return factor | factor << 23;
}
[[gnu::always_inline]] inline I32 Product(const I32& splitFactors, const I32& byteFactors) {
    I32 products;
#ifdef __AVX2__
    StoreVector(&products,
                _mm256_madd_epi16(LoadVector<__m256i>(&splitFactors), LoadVector<__m256i>(&byteFactors)));
#else
    StoreVector(&products,
                _mm_madd_epi16(LoadVector<__m128i>(&splitFactors), LoadVector<__m128i>(&byteFactors)));
#endif
    return products;
}
#else
[[gnu::always_inline]] inline I32 SplitFactor(const I32& factors) {
    return factors;
}
template <typename T>
[[gnu::always_inline]] inline T ByteFactor(const T& factor) {
    return factor;
}
[[gnu::always_inline]] inline I32 Product(const I32& splitFactors, const I32& byteFactors) {
    return splitFactors * byteFactors;
}
#endif

// Stores pairs of 16-bit lanes, those of low first.
template <typename Lanes, typename Element>
[[gnu::always_inline]] inline void Interleave(const Lanes& low, const Lanes& high, Element* pairs) {
#ifdef __AVX2__
    const Lanes first =
        __builtin_shufflevector(low, high, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const Lanes second =
        __builtin_shufflevector(low, high, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
#else
    const Lanes first = __builtin_shufflevector(low, high, 0, 8, 1, 9, 2, 10, 3, 11);
    const Lanes second = __builtin_shufflevector(low, high, 4, 12, 5, 13, 6, 14, 7, 15);
#endif
    StoreVector(pairs, first);
    StoreVector(pairs + sizeof(first) / sizeof(Element), second);
}

// Stores the entries that eight 3-bit indices choose; the first index is in the lowest bits.
[[gnu::always_inline]] inline void LookUpEight(const uint32_t (&entries)[8], uint32_t indices,
                                               uint32_t* found) {
#ifdef __AVX2__
    // The permutation looks at the lowest three bits only.
    const U32 shifted = (U32{} + indices) >> U32{0, 3, 6, 9, 12, 15, 18, 21};
    const auto order = LoadVector<__m256i>(&shifted);
    StoreVector(found, _mm256_permutevar8x32_epi32(LoadVector<__m256i>(entries), order));
#else
    for (int i = 0; i < 8; ++i) {
        found[i] = entries[indices >> (3 * i) & 7];
    }
#endif
}

// 16 bytes, whatever the instruction set.
using Pair = uint64_t __attribute__((vector_size(16)));
using Bytes16 = uint8_t __attribute__((vector_size(16)));

// Four rows of four become four columns.
using Quad = int32_t __attribute__((vector_size(16)));
[[gnu::always_inline]] inline void Transpose(Quad (&rows)[4]) {
    const Quad low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const Quad low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const Quad high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const Quad high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    rows[0] = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    rows[1] = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    rows[2] = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    rows[3] = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
}

// The bits that any lane has.
[[gnu::always_inline]] inline uint32_t JoinLanes(const I32& vector) {
    uint64_t parts[kVectorBytes / 8];
    std::memcpy(parts, &vector, sizeof(parts));
    uint64_t joined = 0;
    for (const uint64_t part : parts) {
        joined |= part;
    }
    return static_cast<uint32_t>(joined | joined >> 32);
}

[[gnu::always_inline]] inline bool AnyLane(const I32& mask) {
    return JoinLanes(mask) != 0;
}

}  // namespace
}  // namespace zorvan::texcompress
