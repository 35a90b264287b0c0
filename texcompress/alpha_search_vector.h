// The search for the end values of interpolated alpha blocks on vectors, one pair of ends per lane. Each
// lane performs the operations of EvaluateAlphaRamp in their order. See vector_types.h for how it is
// compiled.
//
// The plain search stops a sum once it exceeds the best one and then rejects the pair. Sums only grow, so
// complete sums are rejected just the same.
#pragma once

#include "texcompress/alpha_search.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// Distinct values in ascending order, each with its number of occurrences.
struct AlphaSet {
    float values[16], weights[16];
    int size;
    int lowest, highest;  // as bytes

    // Counts one more occurrence of a byte that is not below the last one.
    [[gnu::always_inline]] void Add(int byte) {
        if (size > 0 && highest == byte) {
            weights[size - 1] += 1.0f;
            return;
        }
        lowest = size == 0 ? byte : lowest;
        highest = byte;
        values[size] = static_cast<float>(byte) / 255.0f;
        weights[size] = 1.0f;
        ++size;
    }
};

// A set as wide as 48/256 of the range or less counts as exact: 47 bytes, as 48 are 0.6 bytes too many.
constexpr int kNarrowBytes = 47;

struct AlphaPair {
    float a, b, error;
};

// Errors of kLanes pairs. Values that lie beyond an end go there; for others the quotient is positive,
// so that truncation rounds it down. Once all lanes exceed best, the rest does not matter.
[[gnu::noinline]] inline F32 EvaluateRamps(const AlphaSet& set, const F32& a, const F32& b, int steps,
                                           float best) {
    const F32 step = (b - a) / static_cast<float>(steps - 1);
    const F32 half = step / 2.0f;
    F32 error{};
    for (int i = 0; i < set.size; ++i) {
        const F32 value = F32{} + set.values[i];
        const F32 inner = a + step * ToFloat(ToInt((value - a + half) / step));
        const F32 quantized = value <= a ? a : (value >= b ? b : inner);
        const F32 difference = value - quantized;
        error += difference * difference * set.weights[i];
        if (i % 4 == 3 && !AnyLane(error <= best)) {
            break;
        }
    }
    return error;
}

// Takes the first of the strictly best pairs among `count` lanes.
[[gnu::always_inline]] inline void OfferPairs(const AlphaSet& set, int steps, const F32& a, const F32& b,
                                              int count, AlphaPair& best) {
    const F32 errors = EvaluateRamps(set, a, b, steps, best.error);
    if (!AnyLane(errors < best.error)) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (errors[i] < best.error) {
            best = {a[i], b[i], errors[i]};
        }
    }
}

// All pairs of the coarse search, in its order.
inline AlphaPair SearchPairsCoarsely(const AlphaSet& set, int steps) {
    constexpr float kReach = 0.1f;
    constexpr float kStep = 0.018f;
    constexpr int kMostSteps = 16;  // more than twice the reach has
    const float lo = set.values[0];
    const float hi = set.values[set.size - 1];
    const float mid = (lo + hi) / 2.0f;
    const float aEnd = mid < lo + kReach ? mid : lo + kReach;
    const float bEnd = mid > hi - kReach ? mid : hi - kReach;
    float highEnds[kMostSteps];
    int columns = 0;
    // Running sums, not multiples of the step: their rounding is part of the search.
    for (float b = hi + kReach < 1.0f ? hi + kReach : 1.0f; b >= bEnd; b -= kStep) {
        highEnds[columns++] = b;
    }
    float a[kMostSteps * kMostSteps + kLanes] = {};
    float b[kMostSteps * kMostSteps + kLanes] = {};
    int count = 0;
    for (float low = lo - kReach > 0.0f ? lo - kReach : 0.0f; low < aEnd; low += kStep) {
        for (int i = 0; i < columns; ++i) {
            a[count + i] = low;
            b[count + i] = highEnds[i];
        }
        count += columns;
    }
    AlphaPair best{lo, hi, kNoAlphaCandidate};
    for (int i = 0; i < count; i += kLanes) {
        const int lanes = count - i < kLanes ? count - i : kLanes;
        OfferPairs(set, steps, LoadVector<F32>(a + i), LoadVector<F32>(b + i), lanes, best);
    }
    return best;
}

// Moves the ends by one step at a time, always to the best of the moves, while that improves. To stay in
// place is no improvement.
inline AlphaPair RefinePairs(const AlphaSet& set, int steps, AlphaPair best) {
    constexpr float kStep = 0.6f / 256.0f;
    constexpr float kMovesA[8] = {0, 0, -1, -1, -1, 1, 1, 1};
    constexpr float kMovesB[8] = {-1, 1, 0, -1, 1, 0, -1, 1};
    for (;;) {
        const AlphaPair center = best;
        for (int i = 0; i < 8; i += kLanes) {
            const F32 a = center.a + LoadVector<F32>(kMovesA + i) * kStep;
            const F32 b = center.b + LoadVector<F32>(kMovesB + i) * kStep;
            OfferPairs(set, steps, Max(a, F32{}), Min(b, F32{} + 1.0f), kLanes, best);
        }
        if (best.error == center.error) {
            return best;
        }
    }
}

// The best pair for a set that is not narrow.
inline AlphaPair SearchPairs(const AlphaSet& set, int steps) {
    return RefinePairs(set, steps, SearchPairsCoarsely(set, steps));
}

}  // namespace
}  // namespace zorvan::texcompress
