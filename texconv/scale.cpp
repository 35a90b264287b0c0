// Resampling of the working image to the destination's size.
#include <algorithm>
#include <cstring>

#include "texconv/image.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

// Filter codes; 0 is the box too.
enum ScaleFilter : std::uint32_t {
    kBox = 0,
    kPoint = 1,
    kExplicitBox = 2,
    kFourSamples = 3,
    kCubic = 4,
    kUnimplemented = 5
};

struct Interval {
    std::uint32_t first;
    std::uint32_t end;
};

// One direction of the resampling. Coordinates are single precision, each operation rounded;
// what rounding would push past the source is kept inside.
class Axis {
  public:
    // Neither size is 0.
    Axis(std::uint32_t sourceSize, std::uint32_t size)
        : m_sourceSize(sourceSize), m_ratio(static_cast<float>(sourceSize) / static_cast<float>(size)) {}

    // The source coordinate of destination coordinate `at` + `offset`.
    std::uint32_t Sample(std::uint32_t at, float offset) const {
        return std::min(Scaled(static_cast<float>(at) + offset), m_sourceSize - 1);
    }
    // The source coordinates that destination coordinate `at` covers, at least one.
    Interval Covered(std::uint32_t at) const {
        const std::uint32_t first = Sample(at, 0.0f);
        const std::uint32_t end = std::min(Scaled(static_cast<float>(at) + 1.0f), m_sourceSize);
        return {first, std::max(end, first + 1)};
    }
    // The coordinate `offset` beside `at`, kept inside the source.
    std::uint32_t Beside(std::uint32_t at, int offset) const {
        const std::int64_t moved = std::int64_t{at} + offset;
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(moved, 0, std::int64_t{m_sourceSize} - 1));
    }

  private:
    std::uint32_t Scaled(float position) const { return TruncateToUnsigned(position * m_ratio); }

    std::uint32_t m_sourceSize;
    float m_ratio;
};

constexpr float PositiveCube(float u) {
    return u > 0.0f ? u * u * u : 0.0f;
}

// Cubic B-spline weight at distance t.
constexpr float SplineWeight(float t) {
    constexpr float kSixth = 1.0f / 6.0f;
    return (PositiveCube(t + 2.0f) - 4.0f * PositiveCube(t + 1.0f) + 6.0f * PositiveCube(t) -
            4.0f * PositiveCube(t - 1.0f)) *
           kSixth;
}

template <typename Pixel>
class Resampler {
  public:
    Resampler(const unsigned char* pixels, std::uint32_t width, std::uint32_t height, std::uint32_t newWidth,
              std::uint32_t newHeight)
        : m_pixels(pixels), m_width(width), m_columns(width, newWidth), m_rows(height, newHeight) {}

    Channels<Pixel> Point(std::uint32_t x, std::uint32_t y) const {
        return Load(m_columns.Sample(x, 0.5f), m_rows.Sample(y, 0.5f));
    }

    Channels<Pixel> FourSamples(std::uint32_t x, std::uint32_t y) const {
        Sums sums{};
        for (const float a : {0.0f, 0.5f}) {
            for (const float b : {0.0f, 0.5f}) {
                Add(sums, Load(m_columns.Sample(x, a), m_rows.Sample(y, b)));
            }
        }
        Channels<Pixel> result;
        std::transform(sums.begin(), sums.end(), result.begin(), Pixel::MeanOfFour);
        return result;
    }

    Channels<Pixel> Box(std::uint32_t x, std::uint32_t y) const {
        const Interval columns = m_columns.Covered(x);
        const Interval rows = m_rows.Covered(y);
        Sums sums{};
        for (std::uint32_t sy = rows.first; sy < rows.end; ++sy) {
            for (std::uint32_t sx = columns.first; sx < columns.end; ++sx) {
                Add(sums, Load(sx, sy));
            }
        }
        const std::uint64_t count = std::uint64_t{columns.end - columns.first} * (rows.end - rows.first);
        Channels<Pixel> result;
        std::transform(sums.begin(), sums.end(), result.begin(),
                       [count](typename Pixel::Sum sum) { return Pixel::Mean(sum, count); });
        return result;
    }

    // A blur around the nearest sample: the weights depend on whole offsets only.
    Channels<Pixel> Cubic(std::uint32_t x, std::uint32_t y) const {
        const std::uint32_t centreX = m_columns.Sample(x, 0.5f);
        const std::uint32_t centreY = m_rows.Sample(y, 0.5f);
        std::array<float, 4> sums{};
        for (int m = -1; m <= 2; ++m) {
            for (int n = 1; n >= -2; --n) {
                const float weight =
                    SplineWeight(static_cast<float>(m)) * SplineWeight(static_cast<float>(n));
                const Channels<Pixel> pixel = Load(m_columns.Beside(centreX, m), m_rows.Beside(centreY, -n));
                for (std::size_t c = 0; c < sums.size(); ++c) {
                    sums[c] += weight * static_cast<float>(pixel[c]);
                }
            }
        }
        Channels<Pixel> result;
        std::transform(sums.begin(), sums.end(), result.begin(), Pixel::FromFloat);
        return result;
    }

  private:
    using Sums = std::array<typename Pixel::Sum, 4>;

    Channels<Pixel> Load(std::uint32_t x, std::uint32_t y) const {
        return LoadPixel<Pixel>(m_pixels + (std::size_t{y} * m_width + x) * Pixel::kBytes);
    }
    static void Add(Sums& sums, const Channels<Pixel>& pixel) {
        for (std::size_t c = 0; c < sums.size(); ++c) {
            sums[c] += pixel[c];
        }
    }

    const unsigned char* m_pixels;
    std::uint32_t m_width;
    Axis m_columns;
    Axis m_rows;
};

// Fills `to` row by row with filter(x, y).
template <typename Pixel, typename Filter>
void FillImage(unsigned char* to, std::uint32_t width, std::uint32_t height, const Filter& filter) {
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            StorePixel<Pixel>(filter(x, y), to);
            to += Pixel::kBytes;
        }
    }
}

}  // namespace

template <typename Pixel>
void CImage::Scale() {
    if (m_pBuffer == nullptr || (m_pDst->nWidth == m_nWidth && m_pDst->nHeight == m_nHeight)) {
        return;
    }
    const std::uint32_t width = m_pDst->nWidth;
    const std::uint32_t height = m_pDst->nHeight;
    unsigned char* scaled = AllocateImage(width, height, Pixel::kBytes);
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (scaled != nullptr && pixels != 0) {
        const std::uint32_t filter = ImgInfo(m_pDst, INFO_SCALE_FILTER);
        if (filter == kUnimplemented) {
            for (std::uint64_t i = 0; i < pixels && m_bVerbose; ++i) {
                Verbose("Unimplemented scalefiler");
            }
        }
        if (m_nWidth == 0 || m_nHeight == 0 || filter > kUnimplemented) {
            std::memset(scaled, 0, static_cast<std::size_t>(pixels * Pixel::kBytes));
        } else {
            const Resampler<Pixel> source(m_pBuffer, m_nWidth, m_nHeight, width, height);
            const auto fill = [&](auto sample) {
                FillImage<Pixel>(scaled, width, height,
                                 [&](std::uint32_t x, std::uint32_t y) { return (source.*sample)(x, y); });
            };
            switch (filter) {
                case kPoint:
                    fill(&Resampler<Pixel>::Point);
                    break;
                case kFourSamples:
                    fill(&Resampler<Pixel>::FourSamples);
                    break;
                case kCubic:
                    fill(&Resampler<Pixel>::Cubic);
                    break;
                default:
                    fill(&Resampler<Pixel>::Box);
                    break;
            }
        }
    }
    SetBuffer(scaled);
    m_nWidth = width;
    m_nHeight = height;
}

void CImage::Generic_Scale() {
    Scale<BytePixel>();
}

void CImage::Float_Scale() {
    Scale<FloatPixel>();
}

}  // namespace QXTextureConverter
