// The steps between a conversion's source and its destination, as rows made from other rows.
#pragma once

#include "texconv/row_source.h"

namespace QXTextureConverter {

struct ImageShape {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bytesPerPixel;  // 4 or 16
};

struct Orientation {
    bool mirror;
    bool flip;
};

// The image mirrored (the last column first), flipped (the last row first) or both.
RowSourcePointer OrientedRows(RowSourcePointer rows, const ImageShape& shape, const Orientation& orientation);

// Codes of nScaleFilter; 0 is the box too.
enum ScaleFilter : std::uint32_t {
    kBox = 0,
    kPoint = 1,
    kExplicitBox = 2,
    kFourSamples = 3,
    kCubic = 4,
    kUnimplemented = 5
};

// The image in another size. Neither new size is 0; what is no filter gives zeros.
RowSourcePointer ScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to,
                            std::uint32_t filter);

struct NormalOptions {
    std::uint32_t kernel;  // nBumpmap
    bool wrap;             // at the edges; else the edge repeats
    float nz;              // a normal's z before it is brought to length 1
};

// The normal map of 4-byte pixels read as a height field; alpha is 0.
RowSourcePointer NormalRows(RowSourcePointer rows, const ImageShape& shape, const NormalOptions& options);

// The coordinate, at most one size outside 0 .. size - 1, brought inside.
constexpr std::int32_t CoordinateInside(std::int32_t at, std::int32_t size, bool wrap) {
    if (at < 0) {
        return wrap ? at + size : 0;
    }
    if (at >= size) {
        return wrap ? at - size : size - 1;
    }
    return at;
}

}  // namespace QXTextureConverter
