// The set of vector kernels. A file that includes this is compiled for one instruction set, so everything in
// these headers has internal linkage and calls nothing inline from elsewhere: the linker must never mix the
// sets.
#pragma once

#include "texconv/vector_bump.h"
#include "texconv/vector_cubic.h"
#include "texconv/vector_float.h"
#include "texconv/vector_palette.h"
#include "texconv/vector_plain.h"
#include "texconv/vector_scale.h"

namespace QXTextureConverter {
namespace {

constexpr RowKernels kVectorRowKernels{
    .unpack = Unpack,
    .pack = Pack,
    .mirror = Mirror,
    .floatsToBytes = FloatsToBytes,
    .halvesToBytes = HalvesToBytes,
    .bytesToFloats = BytesToFloats,
    .bytesToHalves = BytesToHalves,
    .floatsToHalves = FloatsToHalves,
    .halvesToFloats = HalvesToFloats,
    .addBytes = AddBytes,
    .averageSpans = AverageSpans,
    .halve = Halve,
    .widenBytes = WidenBytes,
    .widenPairs = WidenPairs,
    .cubicBytes = CubicBytes,
    .cubicFloats = CubicFloats,
    .heights = Heights,
    .normals = Normals,
    .nearest = Nearest,
};

}  // namespace
}  // namespace QXTextureConverter
