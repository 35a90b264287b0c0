#include "texcompress/etc1_quantize.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "texcompress/etc1_tables.h"

// All arithmetic here is single precision with every operation rounded.

namespace zorvan::texcompress {
namespace {

AverageColor Average(const Rgb* image, int width, int x, int y, int columns, int rows) {
    std::array<int, 3> sums{};
    for (int row = y; row < y + rows; ++row) {
        for (int column = x; column < x + columns; ++column) {
            const Rgb& pixel = image[row * width + column];
            sums[0] += pixel.r;
            sums[1] += pixel.g;
            sums[2] += pixel.b;
        }
    }
    AverageColor average;
    std::transform(sums.begin(), sums.end(), average.begin(),
                   [](int sum) { return static_cast<float>(sum) / 8.0f; });
    return average;
}

constexpr int Expand4(int code) {
    return code << 4 | code;
}

// One code size: its largest code, the distance of codes in 8 bits, and the expansion to 8 bits.
struct CodeSize {
    int largest;
    float distance;
    int (*expand)(int code);
};

constexpr CodeSize kFiveBits{31, 8.225806f, Expand5};
constexpr CodeSize kFourBits{15, 17.0f, Expand4};

BaseColor MakeBaseColor(const std::array<int, 3>& codes, const CodeSize& size) {
    return {codes,
            {static_cast<uint8_t>(size.expand(codes[0])), static_cast<uint8_t>(size.expand(codes[1])),
             static_cast<uint8_t>(size.expand(codes[2]))}};
}

BaseColor QuantizeCombined(const AverageColor& average, const CodeSize& size) {
    // Weights of the differences red - green, red - blue and green - blue: the products of the
    // channels' own weights.
    constexpr float kRedGreen = 0.175513f;
    constexpr float kRedBlue = 0.034086f;
    constexpr float kGreenBlue = 0.066918f;
    // Which channels (red 1, green 2, blue 4) take the higher code, in the order of the candidates.
    constexpr std::array<int, 8> kCandidates{0, 1, 2, 4, 3, 5, 6, 7};

    std::array<std::array<int, 2>, 3> codes;
    std::array<std::array<float, 2>, 3> errors;
    for (size_t c = 0; c < 3; ++c) {
        const int lower = static_cast<int>(average[c] / size.distance);
        codes[c] = {lower, std::min(lower + 1, size.largest)};
        for (size_t i = 0; i < 2; ++i) {
            errors[c][i] = static_cast<float>(size.expand(codes[c][i])) - average[c];
        }
    }

    std::array<int, 3> best{};
    float bestCost = std::numeric_limits<float>::max();
    for (const int candidate : kCandidates) {
        const int red = candidate & 1;
        const int green = candidate >> 1 & 1;
        const int blue = candidate >> 2;
        const float redGreen = errors[0][red] - errors[1][green];
        const float redBlue = errors[0][red] - errors[2][blue];
        const float greenBlue = errors[1][green] - errors[2][blue];
        const float cost = kRedGreen * (redGreen * redGreen) + kRedBlue * (redBlue * redBlue) +
                           kGreenBlue * (greenBlue * greenBlue);
        if (cost < bestCost) {
            bestCost = cost;
            best = {codes[0][red], codes[1][green], codes[2][blue]};
        }
    }
    return MakeBaseColor(best, size);
}

BaseColor QuantizeNearest(const AverageColor& average, const CodeSize& size) {
    std::array<int, 3> codes;
    std::transform(average.begin(), average.end(), codes.begin(), [&size](float value) {
        return static_cast<int>(std::floor(value * static_cast<float>(size.largest) / 255.0f + 0.5f));
    });
    return MakeBaseColor(codes, size);
}

}  // namespace

AverageColor computeAverageColor2x4noQuantFloat(const Rgb* image, int width, int x, int y) {
    return Average(image, width, x, y, 2, 4);
}

AverageColor computeAverageColor4x2noQuantFloat(const Rgb* image, int width, int x, int y) {
    return Average(image, width, x, y, 4, 2);
}

BaseColor quantize555ColorCombinedPerceptual(const AverageColor& average) {
    return QuantizeCombined(average, kFiveBits);
}

BaseColor quantize444ColorCombinedPerceptual(const AverageColor& average) {
    return QuantizeCombined(average, kFourBits);
}

BaseColor Quantize555Nearest(const AverageColor& average) {
    return QuantizeNearest(average, kFiveBits);
}

BaseColor Quantize444Nearest(const AverageColor& average) {
    return QuantizeNearest(average, kFourBits);
}

}  // namespace zorvan::texcompress
