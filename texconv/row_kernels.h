// The loops over a row's pixels, gathered in one table so that sets for other instructions can stand beside
// the plain one. Every set gives the same bytes. No pointer needs an alignment; no two ranges overlap.
#pragma once

#include <cstdint>

#include "texconv/word_layout.h"

namespace QXTextureConverter {

// Converts `count` channels.
using ChannelKernel = void (*)(const std::uint8_t* from, std::size_t count, std::uint8_t* to);

// Pixels of a row that become one.
struct Span {
    std::uint32_t first;
    std::uint32_t count;
};
inline constexpr std::uint32_t kMostInMean = 1u << 13;

// A palette's channels, for the search of the nearest colour.
struct PaletteColors {
    std::uint32_t count;
    std::int16_t red[256];
    std::int16_t green[256];
    std::int16_t blue[256];
    std::int16_t alpha[256];
};

// Codes of nBumpmap; any other gives a flat normal map.
enum BumpKernel : std::uint32_t {
    kNoBumpmap = 0,
    kDiagonalBumpmap = 1,
    kSobelBumpmap = 2,
    kPrewittBumpmap = 3
};

struct RowKernels {
    // Pixel words to R, G, B, A bytes and back.
    void (*unpack)(const WordLayout& layout, const std::uint8_t* words, std::size_t count,
                   std::uint8_t* rgba);
    void (*pack)(const WordLayout& layout, const std::uint8_t* rgba, std::size_t count, std::uint8_t* words);
    // The row's 4-byte pixels from the last to the first.
    void (*mirror)(const std::uint8_t* rgba, std::size_t count, std::uint8_t* to);

    ChannelKernel floatsToBytes;
    ChannelKernel halvesToBytes;
    ChannelKernel bytesToFloats;
    ChannelKernel bytesToHalves;
    ChannelKernel floatsToHalves;
    ChannelKernel halvesToFloats;

    // Adds `count` bytes to as many sums.
    void (*addBytes)(const std::uint8_t* bytes, std::size_t count, std::uint32_t* sums);
    // The truncated means of `count` spans of pixels, 4 channels each, whose sums are of `lines` bytes;
    // of kMostInMean pixels at most.
    void (*averageSpans)(const std::uint32_t* sums, const Span* spans, std::size_t count, std::uint32_t lines,
                         std::uint8_t* to);
    // The truncated means of 2 x 2 pixels, for `count` results.
    void (*halve)(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count, std::uint8_t* to);

    // The cubic filter. On bytes, as floats: `runs` has for each of kByteTaps columns, and in it for each of
    // as many lines, the pixels that `count` results take there, side by side.
    void (*widenBytes)(const std::uint8_t* bytes, std::size_t count, float* to);
    // Two pixels at a time: the even ones apart from the odd ones, `count` of each.
    void (*widenPairs)(const std::uint8_t* rgba, std::size_t count, float* even, float* odd);
    void (*cubicBytes)(const float* const* runs, std::size_t count, std::uint8_t* to);
    // On kTaps lines of float pixels: `taps` has the places of kTaps columns in floats for each result.
    void (*cubicFloats)(const float* const* lines, const std::uint32_t* taps, std::size_t count,
                        std::uint8_t* to);

    // The means of R, G and B.
    void (*heights)(const std::uint8_t* rgba, std::size_t count, std::int16_t* to);
    // Normals from three lines of heights, which have one more at each end; nz is infinite or so large that
    // its square is not 0.
    void (*normals)(std::uint32_t kernel, const std::int16_t* const* lines, std::size_t count, float nz,
                    std::uint8_t* rgba);

    // The first of the palette's colours with the least squared distance from R, G, B, A.
    std::uint32_t (*nearest)(const PaletteColors& palette, const std::uint8_t* rgba);
};

// The plain set, the reference for all others.
extern const RowKernels kScalarRowKernels;
// The vector sets: the same source, compiled once per instruction set.
extern const RowKernels kBaselineRowKernels;
extern const RowKernels kAvx2RowKernels;  // x86 only

// The set for the selected instruction set.
const RowKernels& SelectRowKernels();

}  // namespace QXTextureConverter
