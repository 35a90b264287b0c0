// Normal maps of the working image, and what the destination asks of them.
#include <cstddef>
#include <utility>

#include "texconv/image.h"
#include "texconv/row_kernels.h"
#include "texconv/source_rows.h"

namespace QXTextureConverter {

unsigned CImage::Bumpmap_GetPixel(int x, int y, bool wrap) {
    const int column = CoordinateInside(x, static_cast<int>(m_nWidth), wrap);
    const int row = CoordinateInside(y, static_cast<int>(m_nHeight), wrap);
    const unsigned char* pixel =
        m_pBuffer + (static_cast<std::size_t>(row) * m_nWidth + static_cast<std::size_t>(column)) * 4;
    return (unsigned{pixel[0]} + pixel[1] + pixel[2]) / 3;
}

RowSourcePointer CImage::Normals(RowSourcePointer rows, std::uint32_t kernel) {
    const bool wrap = ImgInfo(m_pDst, INFO_BUMPMAP_WRAP) != 0;
    const auto strength = static_cast<std::int32_t>(ImgInfo(m_pDst, INFO_BUMPMAP_HEIGHT));
    // Strength 0 makes the normal's z infinite, its bytes (128, 128, 0).
    const float nz = 1.0f / (static_cast<float>(strength) / 10.0f);
    return NormalRows(std::move(rows), {m_nHeight != 0 ? m_nWidth : 0, m_nHeight, 4}, {kernel, wrap, nz});
}

void CImage::Generic_Bumpmap() {
    if (m_pBuffer == nullptr) {
        return;
    }
    const std::uint32_t kernel = ImgInfo(m_pDst, INFO_BUMPMAP);
    if (kernel == kNoBumpmap) {
        return;
    }
    RowSourcePointer rows = Normals(WorkingRows(m_pBuffer, m_nWidth, 4), kernel);
    unsigned char* normals = AllocateImage(m_nWidth, m_nHeight, 4);
    if (normals != nullptr && m_nWidth != 0) {
        Store(*rows, m_nWidth, m_nHeight, normals);
    }
    SetBuffer(normals);
}

}  // namespace QXTextureConverter
