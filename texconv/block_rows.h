// Images of block formats as rows of R, G, B, A pixels, through the codecs.
#pragma once

#include <cstdint>

#include "texconv/format_table.h"
#include "texconv/row_source.h"

namespace QXTextureConverter {

// The message where the format's codec refuses images of this size, as most refuse empty ones; else null.
const char* RefusedBlocks(const FormatInfo& format, std::uint32_t width, std::uint32_t height);

// The image's rows, of which as many as a block is high are decoded at once. It is not empty, and the bytes
// of its pixels are less than 2^32.
RowSourcePointer BlockRows(const FormatInfo& format, const std::uint8_t* blocks, std::uint32_t width,
                           std::uint32_t height);

}  // namespace QXTextureConverter
