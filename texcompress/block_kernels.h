// The functions that encode and decode rows of blocks, gathered in one table so that a set for other
// instructions can stand beside the plain one. Every set gives the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

class SourcePixels;
struct PixelTarget;

// Fills count tiles side by side from a source's pixels from (x, y) on; x and y lie inside it.
using GatherKernel = void (*)(const SourcePixels& source, uint32_t x, uint32_t y, size_t count, Tile* tiles);
// Writes count tiles side by side to a target's pixels from (x, y) on.
using ScatterKernel = void (*)(const Tile* tiles, size_t count, const PixelTarget& target, uint32_t x,
                               uint32_t y);
// Encodes count tiles into blocks that lie stride bytes apart.
using EncodeKernel = void (*)(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride);
// As EncodeKernel; errors receives each block's CalcBlockMSE.
using MeasuringEncodeKernel = void (*)(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride,
                                       uint32_t* errors);
// Decodes count blocks that lie stride bytes apart.
using DecodeKernel = void (*)(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles);

struct BlockKernels {
    GatherKernel gather;
    ScatterKernel scatter;

    // The tiles' colours. Encoders ignore the alphas, decoders set them to 0.
    EncodeKernel encodeAtc;
    EncodeKernel encodeAtcLegacy;
    MeasuringEncodeKernel encodeAtcFast;
    MeasuringEncodeKernel encodeAtcLegacyFast;
    EncodeKernel encodeEtc1;
    EncodeKernel encodeAti1n;
    EncodeKernel encodeAti2n;
    DecodeKernel decodeAtc;
    DecodeKernel decodeAtcLegacy;
    DecodeKernel decodeEtc1;
    DecodeKernel decodeAti1n;
    DecodeKernel decodeAti2n;

    // The tiles' alphas. Decoders add them to the colours' tiles.
    EncodeKernel encodeAlphaExplicit8;  // 8-bit alphas
    EncodeKernel encodeAlphaExplicit4;  // alphas that have 4 bits already
    EncodeKernel encodeAlphaInterpolated;
    DecodeKernel decodeAlphaExplicit;
    DecodeKernel decodeAlphaInterpolated;
};

// The plain set, the reference for all others.
extern const BlockKernels kScalarKernels;

// A set with the name that ZORVAN_KERNELS chooses it by.
struct KernelSet {
    const char* name;
    const BlockKernels* kernels;
};

// Number of sets that this processor can run.
size_t KernelSetCount();
// One of them, in rising order of speed. The first is the plain set.
const KernelSet& KernelSetAt(size_t index);

// The set that the image drivers use; see SelectedInstructionSet.
const BlockKernels& SelectBlockKernels();

// Makes the image drivers use a set, for comparisons.
void UseBlockKernels(const BlockKernels& kernels);

}  // namespace zorvan::texcompress
