// Between PNG's samples and the converter's layouts; no file here.
#pragma once

#include <array>
#include <vector>

#include "tools/qonvert/container.h"

namespace qonvert {

struct PngPalette {
    std::vector<std::array<std::uint8_t, 4>> entries;  // R, G, B, A
    bool hasAlpha = false;
};

// Rows as PNG stores them.
struct PngPicture {
    unsigned depth = 8;     // bits per sample or index
    unsigned channels = 1;  // 1 to 4, grey or colour
    PngPalette palette;     // not empty for an indexed picture
    std::size_t rowBytes = 0;
    Bytes rows;
};

// One byte per sample, `channels` 1 to 4, as FMT_L8, FMT_LA88, FMT_RGB888 or FMT_RGBA8888.
void PackBytes(Bytes samples, unsigned channels, TextureFile& texture);

// One 16-bit word (host order) per sample, as a float format (65535 is 1.0) or FMT_L16.
void PackDeep(const Bytes& samples, unsigned channels, DeepSamples wish, TextureFile& texture);

// One byte per index of `depth` bits, as the smallest palette format that holds the depth. Missing
// colour table entries are 0.
void PackIndexed(const Bytes& indices, const PngPalette& palette, int depth, TextureFile& texture,
                 Findings& findings);

// Level 0 of a texture that PngCarries.
PngPicture UnpackForPng(const TextureFile& texture);

}  // namespace qonvert
