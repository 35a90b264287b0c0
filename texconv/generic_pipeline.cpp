// The 8-bit pipeline: plain and palette pixels in, plain pixels out, and the choice of the steps.
#include <algorithm>

#include "texconv/destination_rows.h"
#include "texconv/image.h"
#include "texconv/source_rows.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;

bool IsPackedRgba(std::uint32_t stride, std::uint32_t width, const ChannelMasks& masks) {
    return stride == std::uint64_t{width} * kRgbaBytes && masks == detail::kRgba8888;
}

}  // namespace

void CImage::Input_ToGeneric() {
    if (ImgInfo(m_pSrc, INFO_COMPRESSED) != 0) {
        Input_CompressedToGeneric();
    } else if (ImgInfo(m_pSrc, INFO_FLOAT) != 0) {
        Input_FloatToGeneric();
    } else {
        Input_UncompressedToGeneric();
    }
}

void CImage::Input_UncompressedToGeneric() {
    if (StartWorkingImage(kRgbaBytes) && m_nWidth != 0 && m_nHeight != 0) {
        Store(*UncompressedRows(), m_nWidth, m_nHeight, m_pBuffer);
    }
}

RowSourcePointer CImage::UncompressedRows() {
    const std::uint32_t bits = ImgInfo(m_pSrc, INFO_BPP);
    const std::uint32_t stride = ImgInfo(m_pSrc, INFO_STRIDE);
    const ChannelMasks masks = Masks(m_pSrc);
    const SourceBytes bytes{m_pSrc->pData, DataLimit(m_pSrc)};
    if (const std::uint32_t entryBits = ImgInfo(m_pSrc, INFO_PALETTE_BITS); entryBits != 0) {
        return PaletteRows(bytes, m_pSrc->nWidth, stride, bits, entryBits / 8, masks);
    }
    return PlainRows(bytes, m_pSrc->nWidth, stride, bits / 8, masks);
}

void CImage::Output_Generic() {
    if (ImgInfo(m_pDst, INFO_COMPRESSED) != 0) {
        Output_GenericToCompressed();
    } else if (ImgInfo(m_pDst, INFO_PALETTE_BITS) != 0) {
        Output_GenericToPalette();
    } else if (ImgInfo(m_pDst, INFO_FLOAT) != 0) {
        Output_GenericToFloat();
    } else {
        Output_GenericToUncompressed();
    }
}

void CImage::Output_GenericToUncompressed() {
    if (m_pBuffer != nullptr) {
        WritePlain(*WorkingRows(m_pBuffer, m_nWidth, kRgbaBytes));
    }
}

void CImage::WritePlain(RowSource& rows) {
    const std::uint32_t bits = ImgInfo(m_pDst, INFO_BPP);
    const std::uint32_t stride = ImgInfo(m_pDst, INFO_STRIDE);
    const ChannelMasks masks = Masks(m_pDst);
    const DestinationBytes bytes{m_pDst->pData, DataLimit(m_pDst)};

    // Pixels of no bits all land on the row's first byte, where the last one stays.
    const std::uint32_t first = bits != 0 || m_nWidth == 0 ? 0 : m_nWidth - 1;
    const PlainDestination destination(bytes, m_nWidth - first, stride,
                                       WordLayout(masks, std::max(bits / 8, 1u)));
    const std::uint32_t height = m_nWidth != 0 ? m_nHeight : 0;
    const RowMemory scratch = AllocateRow(height != 0 ? m_nWidth : 0, kRgbaBytes);
    for (std::uint32_t y = 0; y < height; ++y) {
        if (std::uint8_t* place = destination.Place(y); place != nullptr) {
            rows.Read(y, place);
        } else {
            destination.Write(y, rows.Row(y, scratch.get()) + std::size_t{first} * kRgbaBytes);
        }
    }
    if (m_pDst->nFormat != FMT_RGBA8888 || !IsPackedRgba(stride, m_nWidth, masks)) {
        m_pDst->nDataSize = m_nHeight * stride;
    }
}

}  // namespace QXTextureConverter
