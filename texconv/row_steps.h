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

}  // namespace QXTextureConverter
