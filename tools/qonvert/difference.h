// How much two pictures of one size differ.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/qonvert/pixels.h"

namespace qonvert {

// Comparison and its formula, for --help.
inline constexpr const char* kPsnrHelp =
    "PSNR = 10 * log10(P^2 / MSE) dB, where MSE is the mean over the pixels of the squared difference\n"
    "of one channel (together: of all compared channels), and P is 255; pictures with float or 16-bit\n"
    "samples are compared as floats with P = 1. Equal pictures have an infinite PSNR. Alpha is compared\n"
    "when either picture has it; a picture without it counts as opaque.";

struct ChannelDifference {
    double squares = 0;  // sum of squared differences
    double largest = 0;  // absolute difference
    double samples = 0;

    double psnr(double peak) const;  // dB, infinite for equal samples
};

struct Difference {
    double peak = 255;  // of a sample
    bool alpha = false;
    ChannelDifference channels[4];  // R, G, B, A
    ChannelDifference together;
    // Largest difference of each pixel's colour channel and alpha, as FMT_RGB888; empty unless asked for.
    Bytes picture;

    bool equal() const { return together.squares == 0 && together.largest == 0; }
};

// Both pictures must have one size. Throws ToolError when they are too large.
Difference Measure(const Picture& a, const Picture& b, bool wantPicture = false);

nlohmann::ordered_json ToJson(const Difference& difference);
// "PSNR R 38.21, G 40.02, B 37.90, together 38.60 dB; largest error R 9, G 12, B 10, together 12"
std::string ToText(const Difference& difference);

}  // namespace qonvert
