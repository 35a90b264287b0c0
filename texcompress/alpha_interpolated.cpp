#include "texcompress/alpha_interpolated.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "texcompress/alpha_search.h"

namespace zorvan::texcompress {
namespace {

// The palette that end values stand for.
AlphaRamp RampOf(uint32_t a0, uint32_t a1) {
    AlphaRamp ramp{static_cast<uint8_t>(a0), static_cast<uint8_t>(a1)};
    if (a0 > a1) {
        for (uint32_t i = 2; i < 8; ++i) {
            ramp[i] = static_cast<uint8_t>(((8 - i) * a0 + (i - 1) * a1 + 3) / 7);
        }
        return ramp;
    }
    for (uint32_t i = 2; i < 6; ++i) {
        ramp[i] = static_cast<uint8_t>(((6 - i) * a0 + (i - 1) * a1 + 2) / 5);
    }
    ramp[6] = 0;
    ramp[7] = 255;
    return ramp;
}

// The best pair for the six-value mode, whose set leaves out what 0 and 255 stand for.
AlphaCandidate FindSixValueCandidate(const WeightedValues& set) {
    switch (set.size) {
        case 0:
            return {128, 129, 0.0f};
        case 1: {
            const int value = RoundAlpha(255.0f * set.Lowest());
            return {value, value + 1, 0.0f};
        }
        case 2:
            return {RoundAlpha(255.0f * set.Lowest()), RoundAlpha(255.0f * set.Highest()), 0.0f};
        default:
            return SearchAlphaRamp(set, 6);
    }
}

}  // namespace

AlphaEndpoints FindAlphaEndpoints(const ChannelTile& alpha) {
    ChannelTile sorted = alpha;
    std::sort(sorted.begin(), sorted.end());
    WeightedValues all;
    WeightedValues inner;
    for (const uint8_t byte : sorted) {
        const float value = static_cast<float>(byte) / 255.0f;
        all.Add(value);
        if (value > 1.5f / 255.0f && value < 253.5f / 255.0f) {
            inner.Add(value);
        }
    }
    if (all.size < 3) {
        return {RoundAlpha(255.0f * all.Lowest()), RoundAlpha(255.0f * all.Highest()),
                AlphaMode::kEightValues};
    }
    const AlphaCandidate six = FindSixValueCandidate(inner);
    const AlphaCandidate eight = inner.size > 2 ? SearchAlphaRamp(all, 8) : AlphaCandidate{};
    if (six.error <= eight.error) {
        return {six.low, six.high, AlphaMode::kSixValues};
    }
    return {eight.low, eight.high, AlphaMode::kEightValues};
}

AlphaRamp BuildAlphaRamp(AlphaEndpoints& ends) {
    const bool swapped = ends.mode == AlphaMode::kEightValues ? ends.a0 < ends.a1 : ends.a0 > ends.a1;
    if (swapped) {
        std::swap(ends.a0, ends.a1);
    }
    return RampOf(static_cast<uint32_t>(ends.a0), static_cast<uint32_t>(ends.a1));
}

AlphaIndices AssignAlphaIndices(const ChannelTile& alpha, const AlphaRamp& ramp) {
    AlphaIndices indices{};
    if (ramp[0] == ramp[1]) {
        return indices;
    }
    for (size_t k = 0; k < alpha.size(); ++k) {
        const auto nearer = [value = alpha[k]](uint8_t left, uint8_t right) {
            return std::abs(value - left) < std::abs(value - right);
        };
        indices[k] = static_cast<uint8_t>(std::min_element(ramp.begin(), ramp.end(), nearer) - ramp.begin());
    }
    return indices;
}

void atiEncodeAlphaBlockInterp(const ChannelTile& alpha, uint8_t* block) {
    AlphaEndpoints ends = FindAlphaEndpoints(alpha);
    const AlphaRamp ramp = BuildAlphaRamp(ends);
    const AlphaIndices indices = AssignAlphaIndices(alpha, ramp);
    uint64_t bits = ramp[0] | static_cast<uint64_t>(ramp[1]) << 8;
    for (size_t k = 0; k < indices.size(); ++k) {
        bits |= static_cast<uint64_t>(indices[k]) << (16 + 3 * k);
    }
    StoreWord(block, static_cast<uint32_t>(bits));
    StoreWord(block + 4, static_cast<uint32_t>(bits >> 32));
}

void atiDecodeAlphaBlockInterp(ChannelTile& alpha, const uint8_t* block) {
    const uint64_t bits = LoadWord(block) | static_cast<uint64_t>(LoadWord(block + 4)) << 32;
    const AlphaRamp ramp = RampOf(block[0], block[1]);
    if (ramp[0] == ramp[1]) {
        alpha.fill(ramp[0]);
        return;
    }
    for (size_t k = 0; k < alpha.size(); ++k) {
        alpha[k] = ramp[bits >> (16 + 3 * k) & 7];
    }
}

}  // namespace zorvan::texcompress
