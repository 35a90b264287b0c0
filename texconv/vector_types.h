// Vectors of the kernels that do not leave all of them to the compiler.
#pragma once

#include <cstddef>
#include <cstdint>

namespace QXTextureConverter {
namespace {

// One working pixel of four channels.
using Ints = std::int32_t __attribute__((vector_size(16)));
using Floats = float __attribute__((vector_size(16)));

// Results wait in parts for the next step, so that they stay in the nearest cache.
constexpr std::size_t kPartResults = 256;

}  // namespace
}  // namespace QXTextureConverter
