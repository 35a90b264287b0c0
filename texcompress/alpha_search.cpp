#include "texcompress/alpha_search.h"

#include <algorithm>
#include <cmath>

// All arithmetic here is single precision with every operation rounded, so that each CPU and compiler
// finds the same end values.

namespace zorvan::texcompress {
namespace {

constexpr float kNarrowRange = 48.0f / 256.0f;
constexpr float kCoarseReach = 0.1f;
constexpr float kCoarseStep = 0.018f;
constexpr float kFineStep = 0.6f / 256.0f;

struct Ramp {
    float a, b, error;
};

Ramp SearchCoarsely(const WeightedValues& set, int steps) {
    const float lo = set.Lowest();
    const float hi = set.Highest();
    const float mid = (lo + hi) / 2.0f;
    const float aEnd = std::min(mid, lo + kCoarseReach);
    const float bBegin = std::min(1.0f, hi + kCoarseReach);
    const float bEnd = std::max(mid, hi - kCoarseReach);
    Ramp best{lo, hi, kNoAlphaCandidate};
    // a and b are running sums, not multiples of the step: their rounding is part of the search.
    for (float a = std::max(0.0f, lo - kCoarseReach); a < aEnd; a += kCoarseStep) {
        for (float b = bBegin; b >= bEnd; b -= kCoarseStep) {
            const float error = EvaluateAlphaRamp(set, a, b, steps, best.error);
            if (error < best.error) {
                best = {a, b, error};
            }
        }
    }
    return best;
}

// Moves the ends by one step at a time, always to the best of the nine moves, while that improves.
Ramp Refine(const WeightedValues& set, int steps, Ramp best, float step, float limit) {
    constexpr std::array<float, 3> kMoves{0.0f, -1.0f, 1.0f};
    for (;;) {
        const Ramp center = best;
        for (const float moveA : kMoves) {
            for (const float moveB : kMoves) {
                const float a = std::max(0.0f, center.a + moveA * step);
                const float b = std::min(limit, center.b + moveB * step);
                const float error = EvaluateAlphaRamp(set, a, b, steps, best.error);
                if (error < best.error) {
                    best = {a, b, error};
                }
            }
        }
        if (best.error == center.error) {
            return best;
        }
    }
}

}  // namespace

void WeightedValues::Add(float value) {
    if (size > 0 && values[size - 1] == value) {
        weights[size - 1] += 1.0f;
        return;
    }
    values[size] = value;
    weights[size] = 1.0f;
    ++size;
}

float EvaluateAlphaRamp(const WeightedValues& set, float a, float b, int steps, float best) {
    const float step = (b - a) / static_cast<float>(steps - 1);
    const float half = step / 2.0f;
    float error = 0.0f;
    for (size_t i = 0; i < set.size; ++i) {
        const float value = set.values[i];
        float quantized;
        if (value <= a) {
            quantized = a;
        } else if (value >= b) {
            quantized = b;
        } else {
            quantized = a + step * std::floor((value - a + half) / step);
        }
        const float difference = value - quantized;
        error += difference * difference * set.weights[i];
        if (error > best) {
            return best;
        }
    }
    return error;
}

AlphaCandidate SearchAlphaRamp(const WeightedValues& set, int steps) {
    const float lo = set.Lowest();
    const float hi = set.Highest();
    if (hi - lo <= kNarrowRange) {
        return {RoundAlpha(255.0f * lo), RoundAlpha(255.0f * hi), 0.0f};
    }
    // The ends of a wider set stay apart: a ramp between neighbouring whole values would leave both of
    // the set's ends half its width away, which is worse than any pair that the coarse search keeps.
    const Ramp best = Refine(set, steps, SearchCoarsely(set, steps), kFineStep, 1.0f);
    return {RoundAlpha(255.0f * best.a), RoundAlpha(255.0f * best.b), best.error};
}

int RoundAlpha(float value) {
    return static_cast<int>(std::floor(value + 0.5f));
}

}  // namespace zorvan::texcompress
