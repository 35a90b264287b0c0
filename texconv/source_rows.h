// The caller's pixels as rows of working pixels.
#pragma once

#include "texconv/format_table.h"
#include "texconv/row_source.h"
#include "texconv/word_layout.h"

namespace QXTextureConverter {

// Bytes of the caller's that rows lie in. Bytes from `limit` on are not touched; they read as 0.
struct SourceBytes {
    const std::uint8_t* data;
    std::uint64_t limit;
};

// Plain pixels of 0 to 4 bytes as R, G, B, A bytes; rows lie `stride` bytes apart.
RowSourcePointer PlainRows(const SourceBytes& source, std::uint32_t width, std::uint32_t stride,
                           std::uint32_t pixelBytes, const ChannelMasks& masks);

// Indices of 1, 4 or 8 bits after their colour table, whose entries have entryBytes bytes, as R, G, B, A
// bytes.
RowSourcePointer PaletteRows(const SourceBytes& source, std::uint32_t width, std::uint32_t stride,
                             std::uint32_t bits, std::uint32_t entryBytes, const ChannelMasks& masks);

// Packed pixels of a float format, as R, G, B, A bytes or floats.
RowSourcePointer FloatRowsAsBytes(const SourceBytes& source, std::uint32_t width, const FormatInfo& format);
RowSourcePointer FloatRows(const SourceBytes& source, std::uint32_t width, const FormatInfo& format);

// Packed working pixels.
RowSourcePointer WorkingRows(const std::uint8_t* pixels, std::uint32_t width, std::uint32_t bytesPerPixel);

}  // namespace QXTextureConverter
