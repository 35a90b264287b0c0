// The set of kernels on vectors. See vector_types.h for how it is compiled.
#pragma once

#include "texcompress/alpha_decode_vector.h"
#include "texcompress/alpha_encode_vector.h"
#include "texcompress/atitc_decode_vector.h"
#include "texcompress/atitc_encode_vector.h"
#include "texcompress/block_kernels.h"
#include "texcompress/etc1_decode_vector.h"
#include "texcompress/etc1_encode_vector.h"
#include "texcompress/scatter_vector.h"
#include "texcompress/source_pixels.h"

namespace zorvan::texcompress {
namespace {

inline void GatherRows(const SourcePixels& source, uint32_t x, uint32_t y, size_t count, Tile* tiles) {
    source.GatherRow(x, y, count, tiles);
}

// A kernel of the plain set. The set is looked at when the kernel is called, not before: constants of
// other files may not be ready.
template <auto Kernel>
struct Plain;
template <typename... Arguments, void (*BlockKernels::*Kernel)(Arguments...)>
struct Plain<Kernel> {
    static void Call(Arguments... arguments) { (kScalarKernels.*Kernel)(arguments...); }
};

constexpr BlockKernels kVectorKernels = {
    .gather = GatherRows,
    .scatter = ScatterRows,
    .encodeAtc = EncodeAtcOnVectors<TXC_FORMAT_ATC>,
    .encodeAtcLegacy = EncodeAtcOnVectors<TXC_FORMAT_ATC_LEGACY>,
    .encodeAtcFast = EncodeAtcFastOnVectors<TXC_FORMAT_ATC>,
    .encodeAtcLegacyFast = EncodeAtcFastOnVectors<TXC_FORMAT_ATC_LEGACY>,
    .encodeEtc1 = EncodeEtc1OnVectors,
    .encodeAti1n = EncodeAti1nOnVectors,
    .encodeAti2n = EncodeAti2nOnVectors,
    .decodeAtc = DecodeAtcOnVectors<TXC_FORMAT_ATC>,
    .decodeAtcLegacy = DecodeAtcOnVectors<TXC_FORMAT_ATC_LEGACY>,
    .decodeEtc1 = DecodeEtc1OnVectors,
    .decodeAti1n = DecodeAti1nOnVectors,
    .decodeAti2n = DecodeAti2nOnVectors,
    .encodeAlphaExplicit8 = Plain<&BlockKernels::encodeAlphaExplicit8>::Call,
    .encodeAlphaExplicit4 = Plain<&BlockKernels::encodeAlphaExplicit4>::Call,
    .encodeAlphaInterpolated = EncodeAlphaInterpolatedOnVectors,
    .decodeAlphaExplicit = DecodeAlphaExplicitOnVectors,
    .decodeAlphaInterpolated = DecodeAlphaInterpolatedOnVectors,
};

}  // namespace
}  // namespace zorvan::texcompress
