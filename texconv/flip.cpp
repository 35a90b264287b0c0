// Mirroring and flipping: of rows on their way, and of the working image in place.
#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "texconv/image.h"
#include "texconv/row_kernels.h"
#include "texconv/row_steps.h"

namespace QXTextureConverter {

namespace {

using BytePixel = std::array<std::uint8_t, 4>;
using FloatPixel = std::array<std::uint8_t, 16>;

class OrientedSource : public RowSource {
  public:
    OrientedSource(RowSourcePointer rows, const ImageShape& shape, const Orientation& orientation)
        : m_rows(std::move(rows)),
          m_shape(shape),
          m_orientation(orientation),
          m_row(AllocateRow(orientation.mirror ? shape.width : 0, shape.bytesPerPixel)) {}

    void Read(std::uint32_t y, std::uint8_t* to) override {
        if (!m_orientation.mirror) {
            m_rows->Read(SourceRow(y), to);
            return;
        }
        const std::uint8_t* row = m_rows->Row(SourceRow(y), m_row.get());
        if (m_shape.bytesPerPixel == sizeof(BytePixel)) {
            m_kernels.mirror(row, m_shape.width, to);
            return;
        }
        for (std::size_t x = 0; x < m_shape.width; ++x) {
            std::memcpy(to + (m_shape.width - 1 - x) * sizeof(FloatPixel), row + x * sizeof(FloatPixel),
                        sizeof(FloatPixel));
        }
    }

    const std::uint8_t* Peek(std::uint32_t y) override {
        return m_orientation.mirror ? nullptr : m_rows->Peek(SourceRow(y));
    }

  private:
    std::uint32_t SourceRow(std::uint32_t y) const { return m_orientation.flip ? m_shape.height - 1 - y : y; }

    const RowKernels& m_kernels = SelectRowKernels();
    RowSourcePointer m_rows;
    ImageShape m_shape;
    Orientation m_orientation;
    RowMemory m_row;
};

template <typename Pixel>
void OrientInPlace(std::uint8_t* image, std::uint32_t width, std::uint32_t height,
                   const Orientation& orientation) {
    static_assert(alignof(Pixel) == 1);
    if (width == 0) {
        return;  // the height may be any then
    }
    auto* pixels = reinterpret_cast<Pixel*>(image);
    const auto row = [=](std::uint32_t y) { return pixels + std::size_t{y} * width; };
    for (std::uint32_t y = 0; orientation.flip && y < height / 2; ++y) {
        std::swap_ranges(row(y), row(y) + width, row(height - 1 - y));
    }
    for (std::uint32_t y = 0; orientation.mirror && y < height; ++y) {
        std::reverse(row(y), row(y) + width);
    }
}

}  // namespace

RowSourcePointer OrientedRows(RowSourcePointer rows, const ImageShape& shape,
                              const Orientation& orientation) {
    return std::make_unique<OrientedSource>(std::move(rows), shape, orientation);
}

Orientation CImage::WantedOrientation() {
    const bool mirror = (ImgInfo(m_pSrc, INFO_MIRROR_X) != 0) != (ImgInfo(m_pDst, INFO_MIRROR_X) != 0);
    const bool flip = (ImgInfo(m_pSrc, INFO_FLIP_Y) != 0) != (ImgInfo(m_pDst, INFO_FLIP_Y) != 0);
    return {mirror, flip};
}

void CImage::Generic_Flip() {
    const Orientation orientation = WantedOrientation();
    if (m_pBuffer != nullptr) {
        OrientInPlace<BytePixel>(m_pBuffer, m_nWidth, m_nHeight, orientation);
    }
}

void CImage::Float_Flip() {
    const Orientation orientation = WantedOrientation();
    if (m_pBuffer != nullptr) {
        OrientInPlace<FloatPixel>(m_pBuffer, m_nWidth, m_nHeight, orientation);
    }
}

}  // namespace QXTextureConverter
