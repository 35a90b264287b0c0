// Base colours of ETC1 blocks on vectors, one tile per lane, with the operations of etc1_quantize.cpp in
// their order. See vector_types.h for how it is compiled.
#pragma once

#include "texcompress/tile_group_vector.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

constexpr int32_t kEtc1Weights[3] = {299, 587, 114};

// What base colours depend on: average, lowest and highest red, green and blue of the left, right, top and
// bottom halves.
struct Etc1HalfColors {
    F32 averages[4][3];
    I32 lowest[4][3], highest[4][3];
};

// Base colours of the halves, in the same order, and the bits of the first word for either orientation,
// without tables.
struct Etc1Bases {
    alignas(32) int32_t values[4][3][kLanes];
    alignas(32) uint32_t bits[2][kLanes];
};

// One code size. An expanded code is the code times the expansion, rounded down: 8 code + code / 4 for
// five bits, 17 code for four.
struct Etc1CodeSize {
    float largest, distance, expansion;

    [[gnu::always_inline]] F32 Expand(const F32& codes) const { return ToFloat(ToInt(codes * expansion)); }
};

constexpr Etc1CodeSize kEtc1FiveBits{31.0f, 8.225806f, 8.25f};
constexpr Etc1CodeSize kEtc1FourBits{15.0f, 17.0f, 17.0f};

// Red and blue share a word, 16 bits each.
inline Etc1HalfColors MeasureHalves(const I32 (&words)[16]) {
    I32 sums[4][2] = {};
    I16 lowest[4][2];
    I16 highest[4][2] = {};
    for (auto& quarter : lowest) {
        quarter[0] = quarter[1] = I16{} + static_cast<int16_t>(255);
    }
    for (int k = 0; k < 16; ++k) {
        const int quarter = k / 8 * 2 + k % 4 / 2;
        const I32 parts[2] = {words[k] & 0xFF00FF, words[k] >> 8 & 255};
        for (int i = 0; i < 2; ++i) {
            sums[quarter][i] += parts[i];
            lowest[quarter][i] = Min(lowest[quarter][i], I16(parts[i]));
            highest[quarter][i] = Max(highest[quarter][i], I16(parts[i]));
        }
    }
    constexpr int kQuarters[4][2] = {{0, 2}, {1, 3}, {0, 1}, {2, 3}};
    Etc1HalfColors colors;
    for (int half = 0; half < 4; ++half) {
        const auto& [first, second] = kQuarters[half];
        for (int c = 0; c < 3; ++c) {
            const int i = c % 2;
            const auto part = [c](const I32& value) { return c == 2 ? value >> 16 : value & 0xFFFF; };
            colors.averages[half][c] = ToFloat(part(sums[first][i] + sums[second][i])) / 8.0f;
            colors.lowest[half][c] = part(I32(Min(lowest[first][i], lowest[second][i])));
            colors.highest[half][c] = part(I32(Max(highest[first][i], highest[second][i])));
        }
    }
    return colors;
}

// The nearest codes; see Quantize555Nearest and Quantize444Nearest.
struct NearestCodes {
    [[gnu::always_inline]] static void Quantize(const F32 (&average)[3], const Etc1CodeSize& size,
                                                I32 (&codes)[3]) {
        for (int c = 0; c < 3; ++c) {
            codes[c] = ToInt(average[c] * size.largest / 255.0f + 0.5f);
        }
    }
};

// The codes whose errors differ least; see quantize555ColorCombinedPerceptual and the form for 4 bits.
struct CombinedCodes {
    static void Quantize(const F32 (&average)[3], const Etc1CodeSize& size, I32 (&codes)[3]) {
        // Which channels (red 1, green 2, blue 4) take the higher code, in the order of the candidates.
        constexpr int kCandidates[8] = {0, 1, 2, 4, 3, 5, 6, 7};
        F32 options[3][2];
        F32 errors[3][2];
        for (int c = 0; c < 3; ++c) {
            options[c][0] = ToFloat(ToInt(average[c] / size.distance));
            options[c][1] = Min(options[c][0] + 1.0f, F32{} + size.largest);
            errors[c][0] = size.Expand(options[c][0]) - average[c];
            errors[c][1] = size.Expand(options[c][1]) - average[c];
        }
        F32 best = F32{} + 1e9f;
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
            choice = Select(I32(cost < best), I32{} + candidate, choice);
            best = Min(cost, best);
        }
        for (int c = 0; c < 3; ++c) {
            const I32 takesHigher = (choice & 1 << c) != 0;
            codes[c] = ToInt(takesHigher ? options[c][1] : options[c][0]);
        }
    }
};

// Base colours and bits of one orientation, in differential mode where the codes allow it.
template <typename Codes>
inline void ChooseBases(const Etc1HalfColors& colors, int orientation, Etc1Bases& bases) {
    const F32(&first)[3] = colors.averages[2 * orientation];
    const F32(&second)[3] = colors.averages[2 * orientation + 1];
    I32 fives[2][3];
    Codes::Quantize(first, kEtc1FiveBits, fives[0]);
    Codes::Quantize(second, kEtc1FiveBits, fives[1]);
    I32 fits = I32{} - 1;
    for (int c = 0; c < 3; ++c) {
        const I32 difference = fives[1][c] - fives[0][c];
        fits &= (difference >= -4) & (difference <= 3);
    }
    I32 fours[2][3] = {};
    if (AnyLane(~fits)) {
        Codes::Quantize(first, kEtc1FourBits, fours[0]);
        Codes::Quantize(second, kEtc1FourBits, fours[1]);
    }
    I32 bits = (fits & 2) + orientation;
    for (int c = 0; c < 3; ++c) {
        const I32 differential = fives[0][c] << 3 | ((fives[1][c] - fives[0][c]) & 7);
        const I32 individual = fours[0][c] << 4 | fours[1][c];
        bits |= Select(fits, differential, individual) << (24 - 8 * c);
        for (int i = 0; i < 2; ++i) {
            const I32 expanded = fives[i][c] << 3 | fives[i][c] >> 2;
            StoreVector(bases.values[2 * orientation + i][c], Select(fits, expanded, fours[i][c] * 17));
        }
    }
    StoreVector(bases.bits[orientation], bits);
}

template <typename Codes>
[[gnu::noinline]] inline void ChooseBases(const Etc1HalfColors& colors, Etc1Bases& bases) {
    ChooseBases<Codes>(colors, 0, bases);
    ChooseBases<Codes>(colors, 1, bases);
}

}  // namespace
}  // namespace zorvan::texcompress
