// Normal maps from rows read as a height field. Three rows of heights are kept.
#include <array>
#include <new>
#include <utility>
#include <vector>

#include "texconv/row_kernels.h"
#include "texconv/row_steps.h"

namespace QXTextureConverter {

namespace {

class NormalSource : public RowSource {
  public:
    NormalSource(RowSourcePointer rows, const ImageShape& shape, const NormalOptions& options)
        : m_rows(std::move(rows)),
          m_width(static_cast<std::int32_t>(shape.width)),
          m_height(static_cast<std::int32_t>(shape.height)),
          m_options(options),
          m_row(AllocateRow(shape.width, 4)),
          m_heights((CountInRow(shape.width, 1) + 2) * kLines) {
        if (m_width < 0 || m_height < 0) {
            throw std::bad_alloc();  // coordinates are signed
        }
    }

    void Read(std::uint32_t y, std::uint8_t* to) override {
        const auto line = static_cast<std::int64_t>(y);
        const std::int16_t* lines[kLines] = {Heights(line - 1), Heights(line), Heights(line + 1)};
        m_kernels.normals(m_options.kernel, lines, static_cast<std::size_t>(m_width), m_options.nz, to);
    }

  private:
    static constexpr int kLines = 3;
    static constexpr std::int64_t kNoLine = -2;

    // The heights of a line, which may lie one outside the image, with one more at each end.
    const std::int16_t* Heights(std::int64_t line) {
        const auto place = static_cast<std::size_t>((line + kLines) % kLines);
        std::int16_t* heights = m_heights.data() + place * (static_cast<std::size_t>(m_width) + 2) + 1;
        if (m_lineAt[place] != line) {
            m_lineAt[place] = line;
            const std::int32_t inside =
                CoordinateInside(static_cast<std::int32_t>(line), m_height, m_options.wrap);
            m_kernels.heights(m_rows->Row(static_cast<std::uint32_t>(inside), m_row.get()),
                              static_cast<std::size_t>(m_width), heights);
            heights[-1] = heights[CoordinateInside(-1, m_width, m_options.wrap)];
            heights[m_width] = heights[CoordinateInside(m_width, m_width, m_options.wrap)];
        }
        return heights;
    }

    const RowKernels& m_kernels = SelectRowKernels();
    RowSourcePointer m_rows;
    std::int32_t m_width;
    std::int32_t m_height;
    NormalOptions m_options;
    RowMemory m_row;
    std::vector<std::int16_t> m_heights;
    std::array<std::int64_t, kLines> m_lineAt{kNoLine, kNoLine, kNoLine};
};

}  // namespace

RowSourcePointer NormalRows(RowSourcePointer rows, const ImageShape& shape, const NormalOptions& options) {
    return std::make_unique<NormalSource>(std::move(rows), shape, options);
}

}  // namespace QXTextureConverter
