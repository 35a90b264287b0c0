// The cubic filter: a blur around the nearest pixel. Results that share their nearest pixel are made once,
// and lines of the source are kept as floats while the next results need them too.
#include <algorithm>
#include <array>
#include <new>

#include "texconv/scaler.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

// What both kinds of pixel have in common; a result takes pixels from kLines lines.
template <typename Pixel, std::size_t kLines>
class CubicScaler : public Scaler {
  public:
    CubicScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : Scaler(std::move(rows), from, to) {
        for (std::uint32_t x = 0; x < to.width; ++x) {
            const std::uint32_t centre = m_columns.Centre(x, 0.5f);
            if (m_centres.empty() || centre != m_centres.back()) {
                m_centres.push_back(centre);
            }
            m_places.push_back(static_cast<std::uint32_t>(m_centres.size() - 1));
        }
        m_blurred = AllocateRow(Repeats() ? Count() : 0, Pixel::kBytes);
        m_lineAt.fill(kNoLine);
    }

  protected:
    using Lines = std::array<const float*, kLines>;

    // Stores the floats of a line that results take.
    virtual void Keep(std::uint32_t line, float* to) = 0;
    // Makes the different results of a row, from what is kept of its lines, the upper first.
    virtual void Blur(const Lines& lines, std::uint8_t* to) = 0;

    void KeepFloats(std::size_t perLine) {
        m_perLine = perLine;
        m_kept.resize(perLine * kLines);
    }
    // How many different results there are in a row.
    std::uint32_t Count() const { return static_cast<std::uint32_t>(m_centres.size()); }

    std::vector<std::uint32_t> m_centres;  // theirs

  private:
    static constexpr std::uint64_t kNoLine = UINT64_MAX;

    Interval LinesOf(std::uint32_t y) const override { return {m_lines.Centre(y, 0.5f), 0}; }
    bool Repeats() const { return Count() < m_to.width; }

    void Make(std::uint32_t y, std::uint8_t* to) override {
        const std::uint32_t centre = m_lines.Centre(y, 0.5f);
        Lines lines;
        for (std::size_t tap = 0; tap < kLines; ++tap) {
            lines[tap] = Line(m_lines.Beside(centre, kFirstTap + static_cast<int>(tap)));
        }
        Blur(lines, Repeats() ? m_blurred.get() : to);
        if (Repeats()) {
            CopyPixels<Pixel>(m_blurred.get(), m_places, to);
        }
    }

    // Lines beside one another never share a place.
    const float* Line(std::uint32_t line) {
        const std::size_t place = line % kLines;
        float* kept = m_kept.data() + place * m_perLine;
        if (m_lineAt[place] != line) {
            m_lineAt[place] = line;
            Keep(line, kept);
        }
        return kept;
    }

    std::vector<std::uint32_t> m_places;  // of the row's pixels among the results
    RowMemory m_blurred;
    std::vector<float> m_kept;
    std::size_t m_perLine = 0;
    std::array<std::uint64_t, kLines> m_lineAt;
};

// Keeps of a line the runs of pixels that the results take with each tap, side by side. Where the results lie
// one or two columns apart, such runs are parts of the same.
class ByteCubicScaler : public CubicScaler<BytePixel, kByteTaps> {
  public:
    ByteCubicScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : CubicScaler(std::move(rows), from, to), m_row(AllocateRow(from.width, BytePixel::kBytes)) {
        const std::size_t channels = CountInRow(Count(), 4);
        m_apart = LieApart(1) ? 1 : LieApart(2) ? 2 : 0;
        if (m_apart == 1) {
            m_offsets = {0, 4, 8};
        } else if (m_apart == 2) {
            m_offsets = {0, channels + 4, 4};
        } else {
            m_offsets = {0, channels, CountInRow(Count(), 8)};
        }
        // Up to the end of the run that lies last.
        KeepFloats(*std::max_element(m_offsets.begin(), m_offsets.end()) + channels);
    }

  private:
    // Whether the results' centres are each `step`-th column.
    bool LieApart(std::uint32_t step) const {
        std::uint32_t column = step - 1;
        for (const std::uint32_t centre : m_centres) {
            if (centre != column || centre >= m_from.width) {
                return false;
            }
            column += step;
        }
        return true;
    }

    void Keep(std::uint32_t line, float* to) override {
        const std::uint8_t* row = m_rows->Row(line, m_row.get());
        const std::size_t channels = std::size_t{Count()} * 4;
        if (m_apart == 1) {
            KeepPixel(row, 0, to);
            m_kernels.widenBytes(row, channels, to + 4);
            KeepPixel(row, m_columns.Beside(Count(), 0), to + 4 + channels);
        } else if (m_apart == 2) {
            m_kernels.widenPairs(row, Count(), to, to + channels + 4);
            KeepPixel(row, m_columns.Beside(2 * Count(), 0), to + channels);
        } else {
            for (int tap = 0; tap < kByteTaps; ++tap) {
                for (const std::uint32_t centre : m_centres) {
                    KeepPixel(row, m_columns.Beside(centre, kFirstTap + tap), to);
                    to += 4;
                }
            }
        }
    }

    static void KeepPixel(const std::uint8_t* row, std::size_t column, float* to) {
        std::copy_n(row + column * BytePixel::kBytes, BytePixel::kBytes, to);
    }

    void Blur(const Lines& lines, std::uint8_t* to) override {
        std::array<const float*, kByteTaps * kByteTaps> runs;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            runs[i] = lines[i % kByteTaps] + m_offsets[i / kByteTaps];
        }
        m_kernels.cubicBytes(runs.data(), Count(), to);
    }

    RowMemory m_row;
    std::uint32_t m_apart;                         // columns between the centres of results, 0 for any others
    std::array<std::size_t, kByteTaps> m_offsets;  // of the taps' runs, in channels
};

class FloatCubicScaler : public CubicScaler<FloatPixel, kTaps> {
  public:
    FloatCubicScaler(RowSourcePointer rows, const ImageShape& from, const ImageShape& to)
        : CubicScaler(std::move(rows), from, to) {
        if (from.width > UINT32_MAX / 4) {
            throw std::bad_alloc();  // places are 32 bits
        }
        for (const std::uint32_t centre : m_centres) {
            for (int tap = 0; tap < kTaps; ++tap) {
                m_taps.push_back(m_columns.Beside(centre, kFirstTap + tap) * 4);
            }
        }
        KeepFloats(CountInRow(from.width, 4));
    }

  private:
    void Keep(std::uint32_t line, float* to) override {
        m_rows->Read(line, reinterpret_cast<std::uint8_t*>(to));
    }

    void Blur(const Lines& lines, std::uint8_t* to) override {
        m_kernels.cubicFloats(lines.data(), m_taps.data(), Count(), to);
    }

    std::vector<std::uint32_t> m_taps;
};

}  // namespace

RowSourcePointer CubicScaledRows(RowSourcePointer rows, const ImageShape& from, const ImageShape& to) {
    if (from.bytesPerPixel == FloatPixel::kBytes) {
        return std::make_unique<FloatCubicScaler>(std::move(rows), from, to);
    }
    return std::make_unique<ByteCubicScaler>(std::move(rows), from, to);
}

}  // namespace QXTextureConverter
