// Trigonometry in fixed point, without floating-point arithmetic. Angles are radians in 16.16.
#pragma once

#include "core/api.h"
#include "core/fixed.h"

namespace zorvan {

// Factors between degrees and radians in 16.16: pi / 180 and 180 / pi.
inline constexpr RealFixed kDegreesToRadians{1143};
inline constexpr RealFixed kRadiansToDegrees{3754936};

// Tangent by 15 rounds of CORDIC rotation with 14 fraction bits; TanFixed(0) is 0.
ZORVAN_CORE_API RealFixed TanFixed(RealFixed angle);

// Arctangent by 11 rounds of CORDIC vectoring with 10 fraction bits. Beyond about +853 and -851 the
// result is +-pi/2 (raw 102944).
ZORVAN_CORE_API RealFixed AtanFixed(RealFixed tangent);

struct SinCos {
    RealFixed sin, cos;
};

// Sine and cosine of an angle in degrees, within two units in the last place; exact at multiples of 90.
ZORVAN_CORE_API SinCos SinCosDegrees(RealFixed degrees);

}  // namespace zorvan
