// The box filter.
#include <algorithm>
#include <array>

#include "texconv/scaler.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

// The mean of the covered pixels, whatever their number: each result sums row after row, in every row from
// the left.
template <typename Pixel>
class BoxScaler : public Scaler {
  public:
    BoxScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to), m_row(AllocateRow(from.width, Pixel::kBytes)), m_sums(to.width) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            m_covered.push_back(m_columns.Covered(x));
        }
    }

  private:
    using Sums = std::array<typename Pixel::Sum, 4>;

    Interval LinesOf(std::uint32_t y) const override { return m_lines.Covered(y); }

    void Make(std::uint32_t y, std::uint8_t* to) override {
        const Interval lines = m_lines.Covered(y);
        std::fill(m_sums.begin(), m_sums.end(), Sums{});
        for (std::uint32_t line = lines.first; line < lines.end; ++line) {
            const std::uint8_t* row = m_rows->Row(line, m_row.get());
            for (std::size_t x = 0; x < m_sums.size(); ++x) {
                for (std::size_t column = m_covered[x].first; column < m_covered[x].end; ++column) {
                    AddPixel<Pixel>(m_sums[x], row + column * Pixel::kBytes);
                }
            }
        }
        for (std::size_t x = 0; x < m_sums.size(); ++x) {
            const std::uint64_t count =
                std::uint64_t{m_covered[x].end - m_covered[x].first} * (lines.end - lines.first);
            Channels<Pixel> result;
            std::transform(m_sums[x].begin(), m_sums[x].end(), result.begin(),
                           [count](typename Pixel::Sum sum) { return Pixel::Mean(sum, count); });
            StorePixel<Pixel>(result, to + x * Pixel::kBytes);
        }
    }

    RowMemory m_row;
    std::vector<Interval> m_covered;
    std::vector<Sums> m_sums;
};

// The same for bytes and few enough pixels a mean: a row of column sums, then the means of their spans.
class SmallBoxScaler : public Scaler {
  public:
    SmallBoxScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to),
          m_rowA(AllocateRow(from.width, BytePixel::kBytes)),
          m_rowB(AllocateRow(from.width, BytePixel::kBytes)),
          m_halves(from.width == 2 * to.width && from.height == 2 * to.height),
          m_sums(m_halves ? 0 : CountInRow(from.width, 4)) {
        for (std::uint32_t x = 0; x < to.width && !m_halves; ++x) {
            const Interval covered = m_columns.Covered(x);
            m_spans.push_back({covered.first, covered.end - covered.first});
        }
    }

    // Whether no mean is of more than kMostInMean pixels.
    static bool Fits(const ImageShape& from, const ImageShape& to) {
        const auto most = [](std::uint32_t size, std::uint32_t newSize) {
            return std::uint64_t{size} / newSize + 3;
        };
        // Coordinates are whole numbers of floats, too, so that halves are exact.
        constexpr std::uint32_t kExactCoordinates = 1u << 23;
        return most(from.width, to.width) * most(from.height, to.height) <= kMostInMean &&
               std::max({from.width, from.height, to.width, to.height}) <= kExactCoordinates;
    }

  private:
    Interval LinesOf(std::uint32_t y) const override { return m_lines.Covered(y); }

    void Make(std::uint32_t y, std::uint8_t* to) override {
        if (m_halves) {
            m_kernels.halve(m_rows->Row(2 * y, m_rowA.get()), m_rows->Row(2 * y + 1, m_rowB.get()),
                            m_to.width, to);
            return;
        }
        const Interval lines = LinesOf(y);
        std::fill(m_sums.begin(), m_sums.end(), 0);
        for (std::uint32_t line = lines.first; line < lines.end; ++line) {
            m_kernels.addBytes(m_rows->Row(line, m_rowA.get()), m_sums.size(), m_sums.data());
        }
        m_kernels.averageSpans(m_sums.data(), m_spans.data(), m_to.width, lines.end - lines.first, to);
    }

    RowMemory m_rowA;
    RowMemory m_rowB;
    bool m_halves;
    std::vector<std::uint32_t> m_sums;
    std::vector<Span> m_spans;
};

}  // namespace

RowSourcePointer BoxScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to) {
    if (from.bytesPerPixel == FloatPixel::kBytes) {
        return std::make_unique<BoxScaler<FloatPixel>>(std::move(rows), from, to);
    }
    if (SmallBoxScaler::Fits(from, to)) {
        return std::make_unique<SmallBoxScaler>(std::move(rows), from, to);
    }
    return std::make_unique<BoxScaler<BytePixel>>(std::move(rows), from, to);
}

}  // namespace QXTextureConverter
