// The 8-bit pipeline: plain and palette pixels in, plain pixels out, and the choice of the steps.
#include <array>
#include <cstring>

#include "texconv/image.h"
#include "texconv/plain_pixels.h"
#include "texconv/row_access.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;

bool IsPackedRgba(std::uint32_t stride, std::uint32_t width, const ChannelMasks& masks) {
    return stride == std::uint64_t{width} * kRgbaBytes && masks == detail::kRgba8888;
}

// Looks up `count` indices of 1, 4 or 8 bits; the first of a byte lies in its lowest bits.
void LookUpIndices(const std::uint8_t* indices, std::uint32_t bits, std::uint32_t count,
                   const std::uint8_t* table, std::uint8_t* rgba) {
    const std::uint32_t indexMask = (1u << bits) - 1;
    for (std::uint32_t x = 0; x < count; ++x) {
        const std::uint64_t bit = std::uint64_t{x} * bits;
        const std::uint32_t index = (indices[bit / 8] >> (bit % 8)) & indexMask;
        std::memcpy(rgba + std::size_t{x} * kRgbaBytes, table + std::size_t{index} * kRgbaBytes, kRgbaBytes);
    }
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
    if (!StartWorkingImage(kRgbaBytes) || m_nWidth == 0 || m_nHeight == 0) {
        return;
    }
    const std::uint32_t bits = ImgInfo(m_pSrc, INFO_BPP);
    const std::uint32_t stride = ImgInfo(m_pSrc, INFO_STRIDE);
    const ChannelMasks masks = Masks(m_pSrc);
    if (bits == 32 && IsPackedRgba(stride, m_nWidth, masks)) {
        std::memcpy(m_pBuffer, m_pSrc->pData, std::size_t{stride} * m_nHeight);
    } else if (ImgInfo(m_pSrc, INFO_PALETTE_BITS) != 0) {
        ReadPalette(bits, stride, masks);
    } else {
        ReadPlain(bits, stride, masks);
    }
}

void CImage::ReadPlain(std::uint32_t bits, std::uint32_t stride, const ChannelMasks& masks) {
    const std::uint32_t bytes = bits / 8;
    const PlainPixels pixels(masks, bytes);
    const std::uint64_t limit = DataLimit(m_pSrc);
    for (std::uint32_t y = 0; y < m_nHeight; ++y) {
        std::uint8_t* row = m_pBuffer + std::size_t{y} * m_nWidth * kRgbaBytes;
        ReadRow(m_pSrc->pData, limit, std::uint64_t{y} * stride, std::max(bytes, 1u), m_nWidth,
                [&](const std::uint8_t* words, std::uint32_t first, std::uint32_t count) {
                    pixels.Unpack(words, count, row + std::size_t{first} * kRgbaBytes);
                });
    }
}

void CImage::ReadPalette(std::uint32_t bits, std::uint32_t stride, const ChannelMasks& masks) {
    const std::uint32_t entryBytes = ImgInfo(m_pSrc, INFO_PALETTE_BITS) / 8;
    const std::uint32_t entries = 1u << bits;
    const std::uint64_t limit = DataLimit(m_pSrc);
    const PlainPixels pixels(masks, entryBytes);
    std::array<std::uint8_t, std::size_t{256} * kRgbaBytes> table{};
    ReadRow(m_pSrc->pData, limit, 0, entryBytes, entries,
            [&](const std::uint8_t* words, std::uint32_t first, std::uint32_t count) {
                pixels.Unpack(words, count, table.data() + std::size_t{first} * kRgbaBytes);
            });

    const std::uint32_t tableBytes = entryBytes * entries;
    for (std::uint32_t y = 0; y < m_nHeight; ++y) {
        std::uint8_t* row = m_pBuffer + std::size_t{y} * m_nWidth * kRgbaBytes;
        const std::uint64_t offset = tableBytes + std::uint64_t{y} * stride;
        const std::uint32_t inside = ElementsInside(limit, offset, bits, m_nWidth);
        if (inside > 0) {
            LookUpIndices(m_pSrc->pData + offset, bits, inside, table.data(), row);
        }
        for (std::uint32_t x = inside; x < m_nWidth; ++x) {
            std::memcpy(row + std::size_t{x} * kRgbaBytes, table.data(), kRgbaBytes);
        }
    }
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
    if (m_pBuffer == nullptr) {
        return;
    }
    const std::uint32_t bits = ImgInfo(m_pDst, INFO_BPP);
    const std::uint32_t stride = ImgInfo(m_pDst, INFO_STRIDE);
    const ChannelMasks masks = Masks(m_pDst);
    if (m_pDst->nFormat == FMT_RGBA8888 && IsPackedRgba(stride, m_nWidth, masks)) {
        std::memcpy(m_pDst->pData, m_pBuffer, std::size_t{stride} * m_nHeight);
        return;
    }

    // Pixels of no bits all land on the row's first byte, where the last one stays.
    const std::uint32_t bytes = std::max(bits / 8, 1u);
    const std::uint32_t firstWritten = bits != 0 || m_nWidth == 0 ? 0 : m_nWidth - 1;
    const std::uint32_t rows = m_nWidth != 0 ? m_nHeight : 0;
    const PlainPixels pixels(masks, bytes);
    const std::uint64_t limit = DataLimit(m_pDst);
    for (std::uint32_t y = 0; y < rows; ++y) {
        const std::uint8_t* row = m_pBuffer + (std::size_t{y} * m_nWidth + firstWritten) * kRgbaBytes;
        WriteRow(m_pDst->pData, limit, std::uint64_t{y} * stride, bytes, m_nWidth - firstWritten,
                 [&](std::uint8_t* words, std::uint32_t first, std::uint32_t count) {
                     pixels.Pack(row + std::size_t{first} * kRgbaBytes, count, words);
                 });
    }
    m_pDst->nDataSize = m_nHeight * stride;
}

}  // namespace QXTextureConverter
