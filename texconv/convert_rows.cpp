// The short way through a conversion: rows from the source through the steps to the destination, without a
// working image where none is needed.
#include <utility>

#include "texconv/image.h"
#include "texconv/source_rows.h"

namespace QXTextureConverter {

namespace {

// Neither empty nor too large for a working image, which the long way would refuse.
bool HasPlainSize(const TQonvertImage& image, std::uint32_t bytesPerPixel) {
    const std::uint64_t pixels = std::uint64_t{image.nWidth} * image.nHeight;
    return pixels != 0 && pixels <= UINT32_MAX / bytesPerPixel;
}

}  // namespace

bool CImage::SharesBytes() {
    const std::uint8_t* source = m_pSrc->pData;
    const std::uint8_t* destination = m_pDst->pData;
    return source < destination + DataLimit(m_pDst) && destination < source + DataLimit(m_pSrc);
}

bool CImage::ConvertByRows(bool floats) {
    const FormatInfo* from = m_pSrc != nullptr ? FindFormat(m_pSrc->nFormat) : nullptr;
    const FormatInfo* to = FindFormat(m_pDst->nFormat);
    m_nBytesPerPixel = floats ? 16 : 4;
    const bool simple = from != nullptr && to != nullptr && m_pSrc->pData != nullptr &&
                        !from->IsCompressed() && !to->IsCompressed() && !to->IsPalette() &&
                        HasPlainSize(*m_pSrc, m_nBytesPerPixel) && HasPlainSize(*m_pDst, m_nBytesPerPixel) &&
                        !SharesBytes();
    const bool changes = simple && (m_pSrc->nWidth != m_pDst->nWidth || m_pSrc->nHeight != m_pDst->nHeight ||
                                    (!floats && ImgInfo(m_pDst, INFO_BUMPMAP) != 0));
    if (!simple || changes) {
        return false;
    }
    m_nWidth = m_pSrc->nWidth;
    m_nHeight = m_pSrc->nHeight;
    RowSourcePointer rows = from->IsFloat() ? FloatSourceRows(*from, !floats) : UncompressedRows();
    if (const Orientation orientation = WantedOrientation(); orientation.mirror || orientation.flip) {
        rows = OrientedRows(std::move(rows), {m_nWidth, m_nHeight, m_nBytesPerPixel}, orientation);
    }
    if (to->IsFloat()) {
        WriteFloat(*rows, *to, !floats);
    } else {
        WritePlain(*rows);
    }
    return true;
}

}  // namespace QXTextureConverter
