// Scaling of the working image, and the filter that the destination asks for.
#include <utility>

#include "texconv/image.h"
#include "texconv/source_rows.h"

namespace QXTextureConverter {

RowSourcePointer CImage::Scaled(RowSourcePointer rows) {
    const std::uint32_t filter = ImgInfo(m_pDst, INFO_SCALE_FILTER);
    const ImageShape from{m_nWidth, m_nHeight, m_nBytesPerPixel};
    const ImageShape to{m_pDst->nWidth, m_pDst->nHeight, m_nBytesPerPixel};
    if (filter == kUnimplemented) {
        const std::uint64_t pixels = std::uint64_t{to.width} * to.height;
        for (std::uint64_t i = 0; i < pixels && m_bVerbose; ++i) {
            Verbose("Unimplemented scalefiler");
        }
    }
    return ScaledRows(std::move(rows), from, to, filter);
}

void CImage::Scale() {
    if (m_pBuffer == nullptr || (m_pDst->nWidth == m_nWidth && m_pDst->nHeight == m_nHeight)) {
        return;
    }
    unsigned char* scaled = AllocateImage(m_pDst->nWidth, m_pDst->nHeight, m_nBytesPerPixel);
    if (scaled != nullptr && m_pDst->nWidth != 0 && m_pDst->nHeight != 0) {
        Store(*Scaled(WorkingRows(m_pBuffer, m_nWidth, m_nBytesPerPixel)), m_pDst->nWidth, m_pDst->nHeight,
              scaled);
    }
    SetBuffer(scaled);
    m_nWidth = m_pDst->nWidth;
    m_nHeight = m_pDst->nHeight;
}

void CImage::Generic_Scale() {
    Scale();
}

void CImage::Float_Scale() {
    Scale();
}

}  // namespace QXTextureConverter
