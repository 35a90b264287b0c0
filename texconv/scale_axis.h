// Where the pixels of a scaled image lie in its source, and the weights of its cubic filter.
#pragma once

#include <algorithm>
#include <cstdint>

#include "texconv/half_float.h"

namespace QXTextureConverter {

struct Interval {
    std::uint32_t first;
    std::uint32_t end;

    friend constexpr bool operator==(const Interval&, const Interval&) = default;
};

// One direction of the resampling. Coordinates are single precision, each operation rounded;
// what rounding would push past the source is kept inside unless a function says otherwise.
class Axis {
  public:
    // Neither size is 0.
    Axis(std::uint32_t sourceSize, std::uint32_t size)
        : m_sourceSize(sourceSize), m_ratio(static_cast<float>(sourceSize) / static_cast<float>(size)) {}

    // The source coordinate of destination coordinate `at` + `offset`.
    std::uint32_t Sample(std::uint32_t at, float offset) const {
        return std::min(Centre(at, offset), m_sourceSize - 1);
    }
    // The same, which rounding may have pushed past the source.
    std::uint32_t Centre(std::uint32_t at, float offset) const {
        return Scaled(static_cast<float>(at) + offset);
    }
    // The source coordinates that destination coordinate `at` covers, at least one.
    Interval Covered(std::uint32_t at) const {
        const std::uint32_t first = Sample(at, 0.0f);
        const std::uint32_t end = std::min(Scaled(static_cast<float>(at) + 1.0f), m_sourceSize);
        return {first, std::max(end, first + 1)};
    }
    // The coordinate `offset` beside `at`, kept inside the source.
    std::uint32_t Beside(std::uint32_t at, int offset) const {
        const std::int64_t moved = std::int64_t{at} + offset;
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(moved, 0, std::int64_t{m_sourceSize} - 1));
    }

  private:
    std::uint32_t Scaled(float position) const { return TruncateToUnsigned(position * m_ratio); }

    std::uint32_t m_sourceSize;
    float m_ratio;
};

namespace detail {

constexpr float PositiveCube(float u) {
    return u > 0.0f ? u * u * u : 0.0f;
}

// Cubic B-spline weight at distance t.
constexpr float SplineWeight(float t) {
    constexpr float kSixth = 1.0f / 6.0f;
    return (PositiveCube(t + 2.0f) - 4.0f * PositiveCube(t + 1.0f) + 6.0f * PositiveCube(t) -
            4.0f * PositiveCube(t - 1.0f)) *
           kSixth;
}

}  // namespace detail

// The weights of the pixels -1, 0, 1 and 2 beside the centre sample: distances are whole, so that they are
// the same everywhere, and the last is 0.
inline constexpr int kFirstTap = -1;
inline constexpr int kTaps = 4;
inline constexpr float kSplineWeights[kTaps] = {detail::SplineWeight(-1.0f), detail::SplineWeight(0.0f),
                                                detail::SplineWeight(1.0f), detail::SplineWeight(2.0f)};
static_assert(kSplineWeights[0] == kSplineWeights[2] && kSplineWeights[3] == 0.0f);
// Those that change a sum of bytes; of floats, the weight of 0 counts where it meets an infinity.
inline constexpr int kByteTaps = kTaps - 1;

}  // namespace QXTextureConverter
