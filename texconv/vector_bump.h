// Heights and normals in loops that compilers turn into vectors.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"
#include "texconv/vector_float.h"

namespace QXTextureConverter {
namespace {

// A third of the sum of three bytes: the tests try all sums.
void Heights(const std::uint8_t* __restrict rgba, std::size_t count, std::int16_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, rgba + i * 4, sizeof(pixel));
        const std::uint32_t sum = (pixel & 0xFF) + (pixel >> 8 & 0xFF) + (pixel >> 16 & 0xFF);
        to[i] = static_cast<std::int16_t>(sum * 21846 >> 16);
    }
}

// A component of a normal of length 1 as a byte.
[[gnu::always_inline]] inline std::uint32_t ComponentByte(float v) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(v * 127.0f + 128.0f));
}

[[gnu::always_inline]] inline std::uint32_t NormalOf(std::int16_t dx, std::int16_t dy, float nz) {
    const float nx = DividedBy255(dx);
    const float ny = DividedBy255(dy);
    const float scale = 1.0f / __builtin_sqrtf(nx * nx + ny * ny + nz * nz);
    return ComponentByte(nx * scale) | ComponentByte(ny * scale) << 8 | ComponentByte(nz * scale) << 16;
}

// kBeside weighs the neighbours beside the pixel against those at its corners.
template <int kBeside>
[[gnu::always_inline]] inline void GradientNormals(const std::int16_t* const* lines, std::size_t count,
                                                   float nz, std::uint8_t* __restrict to) {
    const std::int16_t* __restrict upper = lines[0] - 1;
    const std::int16_t* __restrict middle = lines[1] - 1;
    const std::int16_t* __restrict lower = lines[2] - 1;
    for (std::size_t i = 0; i < count; ++i) {
        const int falling = upper[i] - lower[i + 2];
        const int rising = lower[i] - upper[i + 2];
        const auto dx = static_cast<std::int16_t>(falling + rising + kBeside * (middle[i] - middle[i + 2]));
        const auto dy = static_cast<std::int16_t>(falling - rising + kBeside * (upper[i + 1] - lower[i + 1]));
        const std::uint32_t normal = NormalOf(dx, dy, nz);
        std::memcpy(to + i * 4, &normal, sizeof(normal));
    }
}

void DiagonalNormals(const std::int16_t* const* lines, std::size_t count, float nz,
                     std::uint8_t* __restrict to) {
    const std::int16_t* __restrict middle = lines[1];
    const std::int16_t* __restrict lower = lines[2];
    for (std::size_t i = 0; i < count; ++i) {
        const auto dx = static_cast<std::int16_t>(middle[i] - lower[i + 1]);
        const auto dy = static_cast<std::int16_t>(middle[i + 1] - lower[i]);
        const std::uint32_t normal = NormalOf(dx, dy, nz);
        std::memcpy(to + i * 4, &normal, sizeof(normal));
    }
}

void Normals(std::uint32_t kernel, const std::int16_t* const* lines, std::size_t count, float nz,
             std::uint8_t* to) {
    constexpr std::int32_t kInfinity = 0x7F800000;
    const bool infinite = (BitsOf(nz) & kInfinity) == kInfinity;
    switch (infinite ? kNoBumpmap : kernel) {
        case kDiagonalBumpmap:
            return DiagonalNormals(lines, count, nz, to);
        case kSobelBumpmap:
            return GradientNormals<2>(lines, count, nz, to);
        case kPrewittBumpmap:
            return GradientNormals<1>(lines, count, nz, to);
        default:
            break;
    }
    // An infinite z leaves no number: its byte is 0.
    const std::uint32_t flat = infinite ? 0x008080 : NormalOf(0, 0, nz);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(to + i * 4, &flat, sizeof(flat));
    }
}

}  // namespace
}  // namespace QXTextureConverter
