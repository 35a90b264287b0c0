// The search for the end values of an interpolated alpha block, over a set of distinct values.
#pragma once

#include <array>
#include <cstddef>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Distinct values in ascending order, each with its number of occurrences.
struct WeightedValues {
    std::array<float, kTilePixels> values;
    std::array<float, kTilePixels> weights;
    size_t size = 0;

    // Counts one more occurrence of a value that is not below the last one.
    void Add(float value);
    float Lowest() const { return values[0]; }
    float Highest() const { return values[size - 1]; }
};

// The error of an encoder's candidate before any is found.
inline constexpr float kNoAlphaCandidate = 128000.0f;

// Rounded end values, 0..255 and ascending, and the error in units of (value / 255) squared.
struct AlphaCandidate {
    int low = 0;
    int high = 0;
    float error = kNoAlphaCandidate;
};

// Weighted squared error of a ramp of `steps` values from a to b; best as soon as it exceeds best.
float EvaluateAlphaRamp(const WeightedValues& set, float a, float b, int steps, float best);

// The best ramp for a set of at least one value 0..1: coarse search around the set's ends, then
// refinement by small steps. A set no wider than 48/256 is coded by its ends and counts as exact.
AlphaCandidate SearchAlphaRamp(const WeightedValues& set, int steps);

// Rounds an end value given in 0..255 to the nearest whole one.
int RoundAlpha(float value);

}  // namespace zorvan::texcompress
