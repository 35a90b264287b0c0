// Portable vectors for the block kernels. Files that include this are compiled once per instruction set,
// so everything here and in them has internal linkage: the linker must never mix the sets.
#ifndef ZORVAN_TEXCOMPRESS_VECTOR_TYPES_H
#define ZORVAN_TEXCOMPRESS_VECTOR_TYPES_H

#include <cstdint>
#include <cstring>

namespace zorvan::texcompress {
namespace {

/// As wide as the instruction set's registers: wider ones would be split badly.
#ifdef __AVX2__
constexpr int kVectorBytes = 32;
#else
constexpr int kVectorBytes = 16;
#endif
constexpr int kLanes = kVectorBytes / 4;       ///< of 32 bits
constexpr int kShortLanes = kVectorBytes / 2;  ///< of 16 bits

using I32 = int32_t __attribute__((vector_size(kVectorBytes)));
using F32 = float __attribute__((vector_size(kVectorBytes)));
using I16 = int16_t __attribute__((vector_size(kVectorBytes)));

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

/// Whole numbers below 2^24 convert exactly; the way back truncates.
[[gnu::always_inline]] inline F32 ToFloat(const I32& vector) {
    return __builtin_convertvector(vector, F32);
}
[[gnu::always_inline]] inline I32 ToInt(const F32& vector) {
    return __builtin_convertvector(vector, I32);
}

/// 0, 1, 2, ...
[[gnu::always_inline]] inline I32 LaneNumbers() {
    I32 numbers{};
    for (int i = 0; i < kLanes; ++i) {
        numbers[i] = i;
    }
    return numbers;
}

/// Lane by lane: mask lanes are all ones or all zeros.
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

[[gnu::always_inline]] inline bool AnyLane(const I32& mask) {
    uint64_t parts[kVectorBytes / 8];
    std::memcpy(parts, &mask, sizeof(parts));
    uint64_t any = 0;
    for (const uint64_t part : parts) {
        any |= part;
    }
    return any != 0;
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_VECTOR_TYPES_H
