// The functions that encode and decode rows of blocks, gathered in one table so that a set for other
// instructions can stand beside the plain one. Every set gives the same bytes.
#ifndef ZORVAN_TEXCOMPRESS_BLOCK_KERNELS_H
#define ZORVAN_TEXCOMPRESS_BLOCK_KERNELS_H

#include <cstddef>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

/// Encodes count tiles into blocks that lie stride bytes apart.
using EncodeKernel = void (*)(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride);
/// As EncodeKernel; errors receives each block's CalcBlockMSE.
using MeasuringEncodeKernel = void (*)(const Tile* tiles, size_t count, uint8_t* blocks, size_t stride,
                                       uint32_t* errors);
/// Decodes count blocks that lie stride bytes apart.
using DecodeKernel = void (*)(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles);

struct BlockKernels {
    // From and to Tile::rgb.
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

    // From and to Tile::alpha.
    EncodeKernel encodeAlphaExplicit8;  ///< 8-bit alphas
    EncodeKernel encodeAlphaExplicit4;  ///< alphas that have 4 bits already
    EncodeKernel encodeAlphaInterpolated;
    DecodeKernel decodeAlphaExplicit;
    DecodeKernel decodeAlphaInterpolated;
};

/// The plain set, the reference for all others.
extern const BlockKernels kScalarKernels;

/// The set that the image drivers use.
inline const BlockKernels& SelectBlockKernels() {
    return kScalarKernels;
}

}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_BLOCK_KERNELS_H
