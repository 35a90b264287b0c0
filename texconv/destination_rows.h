// Rows of working pixels into the caller's buffer.
#pragma once

#include <cstdint>

#include "texconv/format_table.h"
#include "texconv/row_kernels.h"
#include "texconv/word_layout.h"

namespace QXTextureConverter {

// Bytes of the caller's that rows are written to. Bytes from `limit` on are not touched.
struct DestinationBytes {
    std::uint8_t* data;
    std::uint64_t limit;
};

// Plain pixels from R, G, B, A bytes; rows lie `stride` bytes apart.
class PlainDestination {
  public:
    PlainDestination(const DestinationBytes& destination, std::uint32_t width, std::uint32_t stride,
                     const WordLayout& layout)
        : m_destination(destination), m_width(width), m_stride(stride), m_layout(layout) {}

    void Write(std::uint32_t y, const std::uint8_t* rgba) const;
    // Where row `y` may be stored as working pixels, or null where they must be converted.
    std::uint8_t* Place(std::uint32_t y) const;

  private:
    const RowKernels& m_kernels = SelectRowKernels();
    DestinationBytes m_destination;
    std::uint32_t m_width;
    std::uint32_t m_stride;
    WordLayout m_layout;
};

// Packed pixels of a float format, from R, G, B, A bytes or floats.
class FloatDestination {
  public:
    FloatDestination(const DestinationBytes& destination, std::uint32_t width, const FormatInfo& format,
                     bool fromBytes)
        : m_destination(destination), m_width(width), m_format(format), m_fromBytes(fromBytes) {}

    void Write(std::uint32_t y, const std::uint8_t* working) const;
    std::uint8_t* Place(std::uint32_t y) const;

  private:
    void WritePart(const std::uint8_t* working, std::uint32_t count, std::uint8_t* pixels) const;

    const RowKernels& m_kernels = SelectRowKernels();
    DestinationBytes m_destination;
    std::uint32_t m_width;
    const FormatInfo& m_format;
    bool m_fromBytes;
};

}  // namespace QXTextureConverter
