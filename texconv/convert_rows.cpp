// A whole conversion as rows from the source through the steps to the destination, with a working image only
// for encoders and the palette quantizer, and where source and destination share memory.
#include <utility>

#include "texconv/block_rows.h"
#include "texconv/image.h"
#include "texconv/row_kernels.h"
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

RowSourcePointer CImage::OrientedSourceRows(const FormatInfo& from, bool floats) {
    if (SharesBytes()) {
        floats ? Input_ToFloat() : Input_ToGeneric();
        floats ? Float_Flip() : Generic_Flip();
        return m_pBuffer != nullptr ? WorkingRows(m_pBuffer, m_nWidth, m_nBytesPerPixel) : nullptr;
    }
    m_nWidth = m_pSrc->nWidth;
    m_nHeight = m_pSrc->nHeight;
    m_nBytesPerPixel = floats ? 16 : 4;
    RowSourcePointer rows = from.IsCompressed() ? BlockRows(from, m_pSrc->pData, m_nWidth, m_nHeight)
                            : from.IsFloat()    ? FloatSourceRows(from, !floats)
                                                : UncompressedRows();
    const Orientation orientation = WantedOrientation();
    if (orientation.mirror || orientation.flip) {
        return OrientedRows(std::move(rows), {m_nWidth, m_nHeight, m_nBytesPerPixel}, orientation);
    }
    return rows;
}

bool CImage::ConvertByRows(bool floats) {
    const FormatInfo* from = m_pSrc != nullptr ? FindFormat(m_pSrc->nFormat) : nullptr;
    const FormatInfo* to = FindFormat(m_pDst->nFormat);
    const std::uint32_t bytesPerPixel = floats ? 16 : 4;
    if (from == nullptr || to == nullptr || m_pSrc->pData == nullptr ||
        !HasPlainSize(*m_pSrc, bytesPerPixel) || !HasPlainSize(*m_pDst, bytesPerPixel)) {
        return false;
    }
    RowSourcePointer rows = OrientedSourceRows(*from, floats);
    if (rows == nullptr) {
        return true;
    }
    if (m_pDst->nWidth != m_nWidth || m_pDst->nHeight != m_nHeight) {
        rows = Scaled(std::move(rows));
        m_nWidth = m_pDst->nWidth;
        m_nHeight = m_pDst->nHeight;
    }
    if (const std::uint32_t kernel = floats ? 0 : ImgInfo(m_pDst, INFO_BUMPMAP); kernel != kNoBumpmap) {
        rows = Normals(std::move(rows), kernel);
    }
    if (to->IsFloat()) {
        WriteFloat(*rows, *to, !floats);
    } else if (!to->IsCompressed() && !to->IsPalette()) {
        WritePlain(*rows);
    } else {
        OutputWorkingImage(std::move(rows));
    }
    return true;
}

void CImage::OutputWorkingImage(RowSourcePointer rows) {
    if (m_pBuffer == nullptr || rows->Peek(0) != m_pBuffer) {
        unsigned char* image = AllocateImage(m_nWidth, m_nHeight, m_nBytesPerPixel);
        if (image != nullptr) {
            Store(*rows, m_nWidth, m_nHeight, image);
        }
        SetBuffer(image);
    }
    Output_Generic();
}

}  // namespace QXTextureConverter
