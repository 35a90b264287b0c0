// Resampling to the destination's size, a row at a time.
#include <algorithm>
#include <array>

#include "texconv/scaler.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

template <typename Pixel>
class PointScaler : public Scaler {
  public:
    PointScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to), m_row(AllocateRow(from.width, Pixel::kBytes)) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            m_sources.push_back(m_columns.Sample(x, 0.5f));
        }
    }

  private:
    Interval LinesOf(std::uint32_t y) const override { return {m_lines.Sample(y, 0.5f), 0}; }

    void Make(std::uint32_t y, std::uint8_t* to) override {
        CopyPixels<Pixel>(m_rows->Row(m_lines.Sample(y, 0.5f), m_row.get()), m_sources, to);
    }

    RowMemory m_row;
    std::vector<std::uint32_t> m_sources;
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

  private:
    Interval LinesOf(std::uint32_t y) const override {
        return {m_lines.Sample(y, 0.0f), m_lines.Sample(y, 0.5f)};
    }

    void Make(std::uint32_t y, std::uint8_t* to) override {
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

    RowMemory m_upper;
    RowMemory m_lower;
    std::vector<std::array<std::uint32_t, 2>> m_sources;
};

class ZeroRows : public RowSource {
  public:
    explicit ZeroRows(std::size_t rowBytes) : m_rowBytes(rowBytes) {}
    void Read(std::uint32_t, std::uint8_t* to) override { std::memset(to, 0, m_rowBytes); }

  private:
    std::size_t m_rowBytes;
};

template <typename Pixel>
RowSourcePointer SampledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to,
                             std::uint32_t filter) {
    if (filter == kPoint) {
        return std::make_unique<PointScaler<Pixel>>(std::move(rows), from, to);
    }
    return std::make_unique<FourSampleScaler<Pixel>>(std::move(rows), from, to);
}

}  // namespace

RowSourcePointer ScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to,
                            std::uint32_t filter) {
    if (from.width == 0 || from.height == 0 || filter > kUnimplemented) {
        return std::make_unique<ZeroRows>(std::size_t{to.width} * to.bytesPerPixel);
    }
    switch (filter) {
        case kPoint:
        case kFourSamples:
            return from.bytesPerPixel == BytePixel::kBytes
                       ? SampledRows<BytePixel>(std::move(rows), from, to, filter)
                       : SampledRows<FloatPixel>(std::move(rows), from, to, filter);
        case kCubic:
            return CubicScaledRows(std::move(rows), from, to);
        default:
            return BoxScaledRows(std::move(rows), from, to);
    }
}

}  // namespace QXTextureConverter
