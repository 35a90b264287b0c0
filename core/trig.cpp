#include "core/trig.h"

#include <cstdlib>

namespace zorvan {
namespace {

// atan(2^-i) in 16.16 radians.
constexpr uint16_t kAngles[17] = {0xC910, 0x76B2, 0x3EB7, 0x1FD6, 0x0FFB, 0x07FF, 0x0400, 0x0200, 0x0100,
                                  0x0080, 0x0040, 0x0020, 0x0010, 0x0008, 0x0004, 0x0002, 0x0001};

// Sine on [0, 90] degrees by its Taylor series with 30 fraction bits; degrees in 16.16.
int64_t QuarterSine(int64_t degrees) {
    constexpr int64_t kRadiansPerDegree30 = 18740271;  // pi / 180 * 2^30
    const int64_t x = (degrees * kRadiansPerDegree30) >> 16;
    const int64_t square = (x * x) >> 30;
    int64_t term = x;
    int64_t sum = x;
    for (int64_t n = 2; n <= 14; n += 2) {
        term = -((term * square) >> 30) / (n * (n + 1));
        sum += term;
    }
    return sum;
}

RealFixed Round30To16(int64_t value) {
    return RealFixed::FromRaw(static_cast<int32_t>((value + (1 << 13)) >> 14));
}

}  // namespace

RealFixed TanFixed(RealFixed angle) {
    constexpr int32_t kPi = 51471;      // 2.14
    constexpr int32_t kHalfPi = 25736;  // 2.14
    constexpr int32_t kGain = 9949;     // 0.60725 in 2.14
    if (angle.raw == 0) {
        return angle;  // the rounds below would leave a residue
    }
    int32_t magnitude = angle.raw >> 2;
    int32_t sign = 1;
    if (magnitude < 0) {
        magnitude = -magnitude;
        sign = -1;
    }
    int32_t rest = magnitude % kPi;
    if (rest > kHalfPi) {
        rest = kPi + 1 - rest;
        sign = -sign;
    }
    int32_t x = kGain;
    int32_t y = 0;
    for (int i = 0; i < 15; ++i) {
        const int32_t direction = rest >= 0 ? 1 : -1;
        const int32_t turn = direction * (1 << (14 - i));
        const int32_t newX = x - ((y * turn) >> 14);
        y = y + ((x * turn) >> 14);
        x = newX;
        rest -= direction * (kAngles[i] >> 2);
    }
    const int64_t quotient = DivideOrZero(sign * (y * 16384), x);
    return RealFixed::FromRaw(static_cast<int32_t>(quotient * 4));
}

RealFixed AtanFixed(RealFixed tangent) {
    constexpr int32_t kHalfPi = 102944;
    if (tangent.raw > 55917056) {
        return RealFixed::FromRaw(kHalfPi);
    }
    if (tangent.raw < -55807872) {
        return RealFixed::FromRaw(-kHalfPi);
    }
    int32_t y = tangent.raw >> 6;
    int32_t x = 1024;
    int32_t z = 0;
    for (int k = 10;; --k) {
        const int32_t scaled = (x * (1 << k)) >> 10;
        const int32_t plus = y + scaled;
        const int32_t minus = y - scaled;
        const int32_t before = y;
        const int32_t direction = std::abs(minus) < std::abs(plus) ? -1 : 1;
        y = direction < 0 ? minus : plus;
        z -= direction * (kAngles[10 - k] >> 6);
        if (k == 0) {
            break;
        }
        x -= (before * (direction * (1 << k))) >> 10;
    }
    return RealFixed::FromRaw(z * 64);
}

SinCos SinCosDegrees(RealFixed degrees) {
    constexpr int64_t kQuarter = int64_t{90} << 16;
    int64_t angle = degrees.raw % (4 * kQuarter);
    if (angle < 0) {
        angle += 4 * kQuarter;
    }
    const int64_t quadrant = angle / kQuarter;
    const int64_t rest = angle % kQuarter;
    // At a multiple of 90 the series would be off by its last bit.
    const RealFixed rising = rest == 0 ? RealFixed{} : Round30To16(QuarterSine(rest));
    const RealFixed falling = rest == 0 ? kOne<RealFixed> : Round30To16(QuarterSine(kQuarter - rest));
    switch (quadrant) {
        case 0:
            return {rising, falling};
        case 1:
            return {falling, -rising};
        case 2:
            return {-rising, -falling};
        default:
            return {-falling, rising};
    }
}

}  // namespace zorvan
