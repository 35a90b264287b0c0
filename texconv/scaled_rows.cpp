// Resampling to the destination's size, a row at a time. Positions are computed once per row and column.
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "texconv/row_kernels.h"
#include "texconv/row_steps.h"
#include "texconv/scale_axis.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

// What the filters have in common.
class Scaler : public RowSource {
  public:
    Scaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : m_rows(std::move(rows)),
          m_from(from),
          m_to(to),
          m_columns(from.width, to.width),
          m_lines(from.height, to.height) {}

  protected:
    const RowKernels& m_kernels = SelectRowKernels();
    RowSourcePointer m_rows;
    ImageShape m_from;
    ImageShape m_to;
    Axis m_columns;
    Axis m_lines;
};

class PointScaler : public Scaler {
  public:
    PointScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to), m_row(AllocateRow(from.width, from.bytesPerPixel)) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            m_sources.push_back(std::size_t{m_columns.Sample(x, 0.5f)} * from.bytesPerPixel);
        }
    }

    void Read(std::uint32_t y, std::uint8_t* to) override {
        const std::uint8_t* row = m_rows->Row(m_lines.Sample(y, 0.5f), m_row.get());
        if (m_from.bytesPerPixel == BytePixel::kBytes) {
            Copy<BytePixel>(row, to);
        } else {
            Copy<FloatPixel>(row, to);
        }
    }

  private:
    template <typename Pixel>
    void Copy(const std::uint8_t* row, std::uint8_t* to) const {
        for (const std::size_t source : m_sources) {
            std::memcpy(to, row + source, Pixel::kBytes);
            to += Pixel::kBytes;
        }
    }

    RowMemory m_row;
    std::vector<std::size_t> m_sources;
};

template <typename Pixel>
class FourSampleScaler : public Scaler {
  public:
    FourSampleScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to),
          m_upper(AllocateRow(from.width, Pixel::kBytes)),
          m_lower(AllocateRow(from.width, Pixel::kBytes)) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            m_sources.push_back({m_columns.Sample(x, 0.0f), m_columns.Sample(x, 0.5f)});
        }
    }

    void Read(std::uint32_t y, std::uint8_t* to) override {
        const std::array<const std::uint8_t*, 2> lines{m_rows->Row(m_lines.Sample(y, 0.0f), m_upper.get()),
                                                       m_rows->Row(m_lines.Sample(y, 0.5f), m_lower.get())};
        for (const auto& columns : m_sources) {
            std::array<typename Pixel::Sum, 4> sums{};
            for (const std::size_t column : columns) {
                for (const std::uint8_t* line : lines) {
                    AddPixel<Pixel>(sums, line + column * Pixel::kBytes);
                }
            }
            Channels<Pixel> result;
            std::transform(sums.begin(), sums.end(), result.begin(), Pixel::MeanOfFour);
            StorePixel<Pixel>(result, to);
            to += Pixel::kBytes;
        }
    }

  private:
    RowMemory m_upper;
    RowMemory m_lower;
    std::vector<std::array<std::uint32_t, 2>> m_sources;
};

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

    void Read(std::uint32_t y, std::uint8_t* to) override {
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

  private:
    using Sums = std::array<typename Pixel::Sum, 4>;

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
          m_sums(m_halves ? 0 : std::size_t{from.width} * 4),
          m_repeats(to.height > from.height),
          m_result(AllocateRow(m_repeats ? to.width : 0, BytePixel::kBytes)) {
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

    void Read(std::uint32_t y, std::uint8_t* to) override {
        if (m_halves) {
            m_kernels.halve(m_rows->Row(2 * y, m_rowA.get()), m_rows->Row(2 * y + 1, m_rowB.get()),
                            m_to.width, to);
            return;
        }
        if (!m_repeats) {
            Average(y, to);
            return;
        }
        if (!m_hasResult || !CoverSameLines(y, m_resultLine)) {
            Average(y, m_result.get());
            m_resultLine = y;
            m_hasResult = true;
        }
        std::memcpy(to, m_result.get(), std::size_t{m_to.width} * BytePixel::kBytes);
    }

  private:
    bool CoverSameLines(std::uint32_t y, std::uint32_t other) const {
        const Interval lines = m_lines.Covered(y);
        const Interval others = m_lines.Covered(other);
        return lines.first == others.first && lines.end == others.end;
    }

    void Average(std::uint32_t y, std::uint8_t* to) {
        const Interval lines = m_lines.Covered(y);
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
    bool m_repeats;
    RowMemory m_result;
    bool m_hasResult = false;
    std::uint32_t m_resultLine = 0;
};

// A blur around the nearest sample. Rows are kept as floats while the next results need them too.
class CubicScaler : public Scaler {
  public:
    CubicScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to),
          m_row(AllocateRow(from.width, from.bytesPerPixel)),
          m_floats(std::size_t{from.width} * 4 * kTaps) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            const std::uint32_t centre = m_columns.Sample(x, 0.5f);
            for (int tap = 0; tap < kTaps; ++tap) {
                m_taps.push_back(m_columns.Beside(centre, kFirstTap + tap) * 4);
            }
        }
    }

    void Read(std::uint32_t y, std::uint8_t* to) override {
        const std::uint32_t centre = m_lines.Sample(y, 0.5f);
        const auto line = [&](int tap) { return Floats(m_lines.Beside(centre, kFirstTap + tap)); };
        const std::array<const float*, kTaps> lines{line(0), line(1), line(2), line(3)};
        const bool bytes = m_from.bytesPerPixel == BytePixel::kBytes;
        (bytes ? m_kernels.cubicBytes : m_kernels.cubicFloats)(lines.data(), m_taps.data(), m_to.width, to);
    }

  private:
    // Four lines beside one another never share a place.
    const float* Floats(std::uint32_t line) {
        const std::size_t place = line % kTaps;
        float* floats = m_floats.data() + place * m_from.width * 4;
        if (m_lineAt[place] != line) {
            m_lineAt[place] = line;
            const std::size_t channels = std::size_t{m_from.width} * 4;
            if (m_from.bytesPerPixel == BytePixel::kBytes) {
                m_kernels.widenBytes(m_rows->Row(line, m_row.get()), channels, floats);
            } else {
                m_rows->Read(line, reinterpret_cast<std::uint8_t*>(floats));
            }
        }
        return floats;
    }

    static constexpr std::uint64_t kNoLine = UINT64_MAX;

    RowMemory m_row;
    std::vector<float> m_floats;
    std::array<std::uint64_t, kTaps> m_lineAt{kNoLine, kNoLine, kNoLine, kNoLine};
    std::vector<std::uint32_t> m_taps;
};

class ZeroRows : public RowSource {
  public:
    explicit ZeroRows(std::size_t rowBytes) : m_rowBytes(rowBytes) {}
    void Read(std::uint32_t, std::uint8_t* to) override { std::memset(to, 0, m_rowBytes); }

  private:
    std::size_t m_rowBytes;
};

template <typename Pixel>
RowSourcePointer ScaledPixels(RowSourcePointer rows, const ImageShape& from, const ImageShape& to,
                              std::uint32_t filter) {
    switch (filter) {
        case kPoint:
            return std::make_unique<PointScaler>(std::move(rows), from, to);
        case kFourSamples:
            return std::make_unique<FourSampleScaler<Pixel>>(std::move(rows), from, to);
        case kCubic:
            return std::make_unique<CubicScaler>(std::move(rows), from, to);
        default:
            break;
    }
    if (Pixel::kBytes == BytePixel::kBytes && SmallBoxScaler::Fits(from, to)) {
        return std::make_unique<SmallBoxScaler>(std::move(rows), from, to);
    }
    return std::make_unique<BoxScaler<Pixel>>(std::move(rows), from, to);
}

}  // namespace

RowSourcePointer ScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to,
                            std::uint32_t filter) {
    if (from.width == 0 || from.height == 0 || filter > kUnimplemented) {
        return std::make_unique<ZeroRows>(std::size_t{to.width} * to.bytesPerPixel);
    }
    return from.bytesPerPixel == BytePixel::kBytes
               ? ScaledPixels<BytePixel>(std::move(rows), from, to, filter)
               : ScaledPixels<FloatPixel>(std::move(rows), from, to, filter);
}

}  // namespace QXTextureConverter
