// The loops over a row's pixels, gathered in one table so that sets for other instructions can stand beside
// the plain one. Every set gives the same bytes. No pointer needs an alignment; no two ranges overlap.
#pragma once

#include <cstdint>

#include "texconv/word_layout.h"

namespace QXTextureConverter {

// Converts `count` channels.
using ChannelKernel = void (*)(const std::uint8_t* from, std::size_t count, std::uint8_t* to);

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
};

// The plain set, the reference for all others.
extern const RowKernels kScalarRowKernels;
// The vector sets: the same source, compiled once per instruction set.
extern const RowKernels kBaselineRowKernels;
extern const RowKernels kAvx2RowKernels;  // x86 only

// The set for the selected instruction set.
const RowKernels& SelectRowKernels();

}  // namespace QXTextureConverter
