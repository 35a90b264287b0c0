// Base colours of ETC1 blocks on vectors: all halves in both code sizes at once, with the operations of
// etc1_quantize.cpp in their order. See vector_types.h for how it is compiled.
#ifndef ZORVAN_TEXCOMPRESS_ETC1_QUANTIZE_VECTOR_H
#define ZORVAN_TEXCOMPRESS_ETC1_QUANTIZE_VECTOR_H

#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

/// The pixels of the left, right, top and bottom half, in the order in which errors are summed.
constexpr uint8_t kEtc1Halves[4][8] = {{0, 1, 4, 5, 8, 9, 12, 13},
                                       {2, 3, 6, 7, 10, 11, 14, 15},
                                       {0, 1, 2, 3, 4, 5, 6, 7},
                                       {8, 9, 10, 11, 12, 13, 14, 15}};

/// Entries 0..3 belong to the halves with codes of 5 bits, 4..7 to those with codes of 4 bits.
struct Etc1Averages {
    alignas(32) float channels[3][8];
};
struct Etc1Codes {
    alignas(32) int32_t channels[3][8];
};

constexpr float kEtc1Largest[8] = {31, 31, 31, 31, 15, 15, 15, 15};
constexpr float kEtc1Distance[8] = {8.225806f, 8.225806f, 8.225806f, 8.225806f, 17, 17, 17, 17};
/// An expanded code is this multiple of the code, rounded down: 8 code + code / 4, and 17 code.
constexpr float kEtc1Expansion[8] = {8.25f, 8.25f, 8.25f, 8.25f, 17, 17, 17, 17};

inline Etc1Averages AverageHalves(const Tile& tile) {
    // Sums of quarters of the tile, three to a word.
    uint64_t quarters[4] = {};
    for (int k = 0; k < 16; ++k) {
        const uint64_t word = tile.pixels[k];
        quarters[k / 8 * 2 + k % 4 / 2] += (word & 0xFF00FF) | (word & 0xFF00) << 24;
    }
    const uint64_t sums[4] = {quarters[0] + quarters[2], quarters[1] + quarters[3], quarters[0] + quarters[1],
                              quarters[2] + quarters[3]};
    Etc1Averages averages;
    for (int i = 0; i < 8; ++i) {
        const uint64_t sum = sums[i % 4];
        averages.channels[0][i] = static_cast<float>(static_cast<int32_t>(sum & 0xFFFF)) / 8.0f;
        averages.channels[1][i] = static_cast<float>(static_cast<int32_t>(sum >> 32)) / 8.0f;
        averages.channels[2][i] = static_cast<float>(static_cast<int32_t>(sum >> 16 & 0xFFFF)) / 8.0f;
    }
    return averages;
}

/// The nearest codes; see Quantize555Nearest and Quantize444Nearest.
inline Etc1Codes QuantizeNearest(const Etc1Averages& averages) {
    Etc1Codes codes;
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < 8; i += kLanes) {
            const auto value = LoadVector<F32>(averages.channels[c] + i);
            const F32 scaled = value * LoadVector<F32>(kEtc1Largest + i) / 255.0f + 0.5f;
            StoreVector(codes.channels[c] + i, ToInt(scaled));
        }
    }
    return codes;
}

/// The codes whose errors differ least; see quantize555ColorCombinedPerceptual and the form for 4 bits.
inline Etc1Codes QuantizeCombined(const Etc1Averages& averages) {
    // Which channels (red 1, green 2, blue 4) take the higher code, in the order of the candidates.
    constexpr int kCandidates[8] = {0, 1, 2, 4, 3, 5, 6, 7};
    Etc1Codes codes;
    for (int i = 0; i < 8; i += kLanes) {
        F32 lower[3];
        F32 higher[3];
        F32 errors[3][2];
        for (int c = 0; c < 3; ++c) {
            const auto average = LoadVector<F32>(averages.channels[c] + i);
            const auto expansion = LoadVector<F32>(kEtc1Expansion + i);
            lower[c] = ToFloat(ToInt(average / LoadVector<F32>(kEtc1Distance + i)));
            higher[c] = Min(lower[c] + 1.0f, LoadVector<F32>(kEtc1Largest + i));
            errors[c][0] = ToFloat(ToInt(lower[c] * expansion)) - average;
            errors[c][1] = ToFloat(ToInt(higher[c] * expansion)) - average;
        }
        F32 best{};
        I32 choice{};
        for (const int candidate : kCandidates) {
            const F32 red = errors[0][candidate & 1];
            const F32 green = errors[1][candidate >> 1 & 1];
            const F32 blue = errors[2][candidate >> 2];
            const F32 redGreen = red - green;
            const F32 redBlue = red - blue;
            const F32 greenBlue = green - blue;
            const F32 cost = 0.175513f * (redGreen * redGreen) + 0.034086f * (redBlue * redBlue) +
                             0.066918f * (greenBlue * greenBlue);
            if (candidate == 0) {
                best = cost;
                continue;
            }
            choice = Select(I32(cost < best), I32{} + candidate, choice);
            best = Min(cost, best);
        }
        for (int c = 0; c < 3; ++c) {
            const I32 takesHigher = (choice & 1 << c) != 0;
            StoreVector(codes.channels[c] + i, ToInt(takesHigher ? higher[c] : lower[c]));
        }
    }
    return codes;
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_ETC1_QUANTIZE_VECTOR_H
