// Vectors of the kernels that do not leave all of them to the compiler, on top of the codecs'.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "texcompress/vector_types.h"

namespace QXTextureConverter {
namespace {

using zorvan::texcompress::AnyLane;
using zorvan::texcompress::Bytes16;
using zorvan::texcompress::F32;
using zorvan::texcompress::I32;
using zorvan::texcompress::Interleave;
using zorvan::texcompress::kLanes;
using zorvan::texcompress::kShortLanes;
using zorvan::texcompress::kVectorBytes;
using zorvan::texcompress::LoadVector;
using zorvan::texcompress::StoreVector;
using zorvan::texcompress::U32;

// Without such registers compilers take vectors apart, and loops are faster.
#if defined(__SSE2__) || defined(__ARM_NEON)
constexpr bool kVectorRegisters = true;
#else
constexpr bool kVectorRegisters = false;
#endif

using U8 = std::uint8_t __attribute__((vector_size(kVectorBytes)));
using U16 = std::uint16_t __attribute__((vector_size(kVectorBytes)));

// One working pixel of four channels.
using Ints = std::int32_t __attribute__((vector_size(16)));
using Floats = float __attribute__((vector_size(16)));

// Results wait in parts for the next step, so that they stay in the nearest cache.
constexpr std::size_t kPartResults = 256;

template <typename Vector>
using LaneOf = std::remove_cvref_t<decltype(std::declval<Vector>()[0])>;
template <typename Vector>
constexpr std::size_t kLanesOf = sizeof(Vector) / sizeof(LaneOf<Vector>);
template <typename Vector>
using LaneNumbersOf = std::make_index_sequence<kLanesOf<Vector>>;

// Every second lane of two vectors, from lane kFirst on.
template <std::size_t kFirst, typename Vector, std::size_t... kLane>
[[gnu::always_inline]] inline Vector EverySecond(const Vector& a, const Vector& b,
                                                 std::index_sequence<kLane...>) {
    return __builtin_shufflevector(a, b, (2 * kLane + kFirst)...);
}
template <typename Vector>
[[gnu::always_inline]] inline Vector EvenLanes(const Vector& a, const Vector& b) {
    return EverySecond<0>(a, b, LaneNumbersOf<Vector>{});
}
template <typename Vector>
[[gnu::always_inline]] inline Vector OddLanes(const Vector& a, const Vector& b) {
    return EverySecond<1>(a, b, LaneNumbersOf<Vector>{});
}

}  // namespace
}  // namespace QXTextureConverter
