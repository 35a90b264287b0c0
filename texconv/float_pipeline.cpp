// Float and half float pixels in and out of either working image.
#include <cstring>

#include "texconv/destination_rows.h"
#include "texconv/image.h"
#include "texconv/source_rows.h"

namespace QXTextureConverter {

void CImage::Input_ToFloat() {
    if (StartWorkingImage(16)) {
        ReadFloat(false);
    }
}

void CImage::Input_FloatToGeneric() {
    if (StartWorkingImage(4)) {
        ReadFloat(true);
    }
}

void CImage::ReadFloat(bool toBytes) {
    const FormatInfo* format = FindFormat(m_pSrc->nFormat);
    if (format == nullptr || !format->IsFloat()) {
        std::memset(m_pBuffer, 0, std::size_t{m_nWidth} * m_nHeight * m_nBytesPerPixel);
    } else if (m_nWidth != 0) {
        Store(*FloatSourceRows(*format, toBytes), m_nWidth, m_nHeight, m_pBuffer);
    }
}

RowSourcePointer CImage::FloatSourceRows(const FormatInfo& format, bool toBytes) {
    const SourceBytes bytes{m_pSrc->pData, DataLimit(m_pSrc)};
    return toBytes ? FloatRowsAsBytes(bytes, m_pSrc->nWidth, format)
                   : FloatRows(bytes, m_pSrc->nWidth, format);
}

void CImage::Output_Float() {
    OutputFloats(false);
}

void CImage::Output_GenericToFloat() {
    OutputFloats(true);
}

void CImage::OutputFloats(bool fromBytes) {
    const FormatInfo* format = FindFormat(m_pDst->nFormat);
    if (m_pBuffer != nullptr && format != nullptr && format->IsFloat()) {
        WriteFloat(*WorkingRows(m_pBuffer, m_nWidth, m_nBytesPerPixel), *format, fromBytes);
    }
    SetBuffer(nullptr);
}

void CImage::WriteFloat(RowSource& rows, const FormatInfo& format, bool fromBytes) {
    const DestinationBytes bytes{m_pDst->pData, DataLimit(m_pDst)};
    const FloatDestination destination(bytes, m_nWidth, format, fromBytes);
    const std::uint32_t height = m_nWidth != 0 ? m_nHeight : 0;
    const RowMemory scratch = AllocateRow(height != 0 ? m_nWidth : 0, m_nBytesPerPixel);
    for (std::uint32_t y = 0; y < height; ++y) {
        if (std::uint8_t* place = destination.Place(y); place != nullptr) {
            rows.Read(y, place);
        } else {
            destination.Write(y, rows.Row(y, scratch.get()));
        }
    }
}

}  // namespace QXTextureConverter
