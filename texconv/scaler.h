// What the scaling filters have in common: rows of the source go in, rows of another size come out.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "texconv/row_kernels.h"
#include "texconv/row_steps.h"
#include "texconv/scale_axis.h"

namespace QXTextureConverter {

// Positions are computed once per row and column. Where an enlarged image repeats a row, it is copied.
class Scaler : public RowSource {
  public:
    Scaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : m_rows(std::move(rows)),
          m_from(from),
          m_to(to),
          m_columns(from.width, to.width),
          m_lines(from.height, to.height),
          m_repeats(to.height > from.height),
          m_result(AllocateRow(m_repeats ? to.width : 0, to.bytesPerPixel)) {}

    void Read(std::uint32_t y, std::uint8_t* to) final {
        if (!m_repeats) {
            Make(y, to);
            return;
        }
        const Interval lines = LinesOf(y);
        if (!m_hasResult || lines != m_resultLines) {
            Make(y, m_result.get());
            m_resultLines = lines;
            m_hasResult = true;
        }
        std::memcpy(to, m_result.get(), std::size_t{m_to.width} * m_to.bytesPerPixel);
    }

  protected:
    virtual void Make(std::uint32_t y, std::uint8_t* to) = 0;
    // Two lines of the source that tell row `y` from others with another content.
    virtual Interval LinesOf(std::uint32_t y) const = 0;

    const RowKernels& m_kernels = SelectRowKernels();
    RowSourcePointer m_rows;
    ImageShape m_from;
    ImageShape m_to;
    Axis m_columns;
    Axis m_lines;

  private:
    bool m_repeats;
    RowMemory m_result;
    Interval m_resultLines{};
    bool m_hasResult = false;
};

// The pixels of a row at the given columns.
template <typename Pixel>
void CopyPixels(const std::uint8_t* row, const std::vector<std::uint32_t>& columns, std::uint8_t* to) {
    for (const std::size_t column : columns) {
        std::memcpy(to, row + column * Pixel::kBytes, Pixel::kBytes);
        to += Pixel::kBytes;
    }
}

// The mean of the covered pixels.
RowSourcePointer BoxScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to);
// A blur around the nearest pixel.
RowSourcePointer CubicScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to);

}  // namespace QXTextureConverter
