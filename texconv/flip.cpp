// Mirroring and flipping of the working image.
#include <cstring>

#include "texconv/image.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

template <typename Pixel>
void CImage::Flip() {
    const bool mirror = (ImgInfo(m_pSrc, INFO_MIRROR_X) != 0) != (ImgInfo(m_pDst, INFO_MIRROR_X) != 0);
    const bool flip = (ImgInfo(m_pSrc, INFO_FLIP_Y) != 0) != (ImgInfo(m_pDst, INFO_FLIP_Y) != 0);
    if (m_pBuffer == nullptr || (!mirror && !flip)) {
        return;
    }
    unsigned char* flipped = AllocateImage(m_nWidth, m_nHeight, Pixel::kBytes);
    const std::size_t rowBytes = std::size_t{m_nWidth} * Pixel::kBytes;
    const std::uint32_t rows = flipped != nullptr && m_nWidth != 0 ? m_nHeight : 0;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const unsigned char* from = m_pBuffer + y * rowBytes;
        unsigned char* to = flipped + (flip ? m_nHeight - 1 - y : y) * rowBytes;
        if (!mirror) {
            std::memcpy(to, from, rowBytes);
            continue;
        }
        for (std::size_t at = 0; at < rowBytes; at += Pixel::kBytes) {
            std::memcpy(to + rowBytes - Pixel::kBytes - at, from + at, Pixel::kBytes);
        }
    }
    SetBuffer(flipped);
}

void CImage::Generic_Flip() {
    Flip<BytePixel>();
}

void CImage::Float_Flip() {
    Flip<FloatPixel>();
}

}  // namespace QXTextureConverter
