// The cubic filter: a blur around the nearest pixel. Results that share their nearest pixel are made once,
// and rows of the source are kept as floats while the next results need them too.
#include <array>
#include <new>

#include "texconv/scaler.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

template <typename Pixel>
class CubicScaler : public Scaler {
  public:
    CubicScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to),
          m_row(AllocateRow(from.width, BytePixel::kBytes)),
          m_floats(CountInRow(from.width, 4 * kTaps)) {
        if (from.width > UINT32_MAX / 4) {
            throw std::bad_alloc();  // places are 32 bits
        }
        std::uint32_t last = 0;
        for (std::uint32_t x = 0; x < to.width; ++x) {
            const std::uint32_t centre = m_columns.Centre(x, 0.5f);
            if (x == 0 || centre != last) {
                for (int tap = 0; tap < kTaps; ++tap) {
                    m_taps.push_back(m_columns.Beside(centre, kFirstTap + tap) * 4);
                }
                last = centre;
                ++m_count;
            }
            m_places.push_back(m_count - 1);
        }
        m_blurred = AllocateRow(m_count < to.width ? m_count : 0, Pixel::kBytes);
    }

  private:
    Interval LinesOf(std::uint32_t y) const override { return {m_lines.Centre(y, 0.5f), 0}; }

    void Make(std::uint32_t y, std::uint8_t* to) override {
        const std::uint32_t centre = m_lines.Centre(y, 0.5f);
        const auto line = [&](int tap) { return Line(m_lines.Beside(centre, kFirstTap + tap)); };
        const std::array<const float*, kTaps> lines{line(0), line(1), line(2), line(3)};
        const auto blur = Pixel::kBytes == BytePixel::kBytes ? m_kernels.cubicBytes : m_kernels.cubicFloats;
        const bool repeats = m_count < m_to.width;
        blur(lines.data(), m_taps.data(), m_count, repeats ? m_blurred.get() : to);
        if (repeats) {
            CopyPixels<Pixel>(m_blurred.get(), m_places, to);
        }
    }

    // Four lines beside one another never share a place.
    const float* Line(std::uint32_t line) {
        const std::size_t channels = std::size_t{m_from.width} * 4;
        const std::size_t place = line % kTaps;
        float* floats = m_floats.data() + place * channels;
        if (m_lineAt[place] != line) {
            m_lineAt[place] = line;
            if constexpr (Pixel::kBytes == BytePixel::kBytes) {
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
    RowMemory m_blurred;
    std::vector<std::uint32_t> m_taps;
    std::uint32_t m_count = 0;            // of different results in a row
    std::vector<std::uint32_t> m_places;  // of the row's pixels among them
};

}  // namespace

RowSourcePointer CubicScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to) {
    if (from.bytesPerPixel == FloatPixel::kBytes) {
        return std::make_unique<CubicScaler<FloatPixel>>(std::move(rows), from, to);
    }
    return std::make_unique<CubicScaler<BytePixel>>(std::move(rows), from, to);
}

}  // namespace QXTextureConverter
