// Block formats in and out of the 8-bit pipeline, through the codecs.
#include "texcompress/texcompress.h"
#include "texconv/block_rows.h"
#include "texconv/image.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;
constexpr std::uint32_t kInterpolated = TXC_FLAG_ALPHA | TXC_FLAG_INTERPOLATED_ALPHA;

}  // namespace

void CImage::Input_CompressedToGeneric() {
    const FormatInfo* format = m_pSrc != nullptr ? FindFormat(m_pSrc->nFormat) : nullptr;
    if (!StartWorkingImage(kRgbaBytes)) {
        return;
    }
    if (format == nullptr || !format->IsCompressed()) {
        SetBuffer(nullptr);
        return;
    }
    if (const char* message = RefusedBlocks(*format, m_nWidth, m_nHeight); message != nullptr) {
        Verbose(message);
    } else if (m_nWidth != 0 && m_nHeight != 0) {
        Store(*BlockRows(*format, m_pSrc->pData, m_nWidth, m_nHeight), m_nWidth, m_nHeight, m_pBuffer);
    }
}

void CImage::Output_GenericToCompressed() {
    if (m_pBuffer == nullptr) {
        return;
    }
    const char* message = nullptr;
    switch (m_pDst->nFormat) {
        case FMT_ATITC_RGBA_EXPLICIT:
        case FMT_ATITC_RGB: {
            const std::uint32_t status = EncodeAtitc();
            if (status == TXC_ERR_LOW_QUALITY) {
                message = "Fast ATI_TC_Encode returned a low quality error";
            } else if (status != TXC_OK) {
                message = "ATI_TC_Encode returned an error trying to encode the image";
            }
            break;
        }
        case FMT_ATITC_RGBA_INTERPOLATED:
            if (Encode(kInterpolated, TXC_FORMAT_ATC) != TXC_OK) {
                message =
                    "TxCompressEncode (texcompress.lib) returned an error trying to encode the image using "
                    "ATC_RGBA_INTERPOLATED_ALPHA";
            }
            break;
        case FMT_ETC1_RGB8:
            if (Encode(0, TXC_FORMAT_ETC1) != TXC_OK) {
                message = "TxCompressEncode returned an error trying to encode the image using ETC";
            }
            break;
        case FMT_3DC_X:
            if (Encode(0, TXC_FORMAT_ATI1N) != TXC_OK) {
                message = "TxCompressEncode returned an error trying to encode the image using 3DC_X";
            }
            break;
        case FMT_3DC_XY:
            if (Encode(0, TXC_FORMAT_ATI2N) != TXC_OK) {
                message = "TxCompressEncode returned an error trying to encode the image using 3DC_XY";
            }
            break;
        default:
            break;
    }
    if (message != nullptr) {
        Verbose(message);
    }
    SetBuffer(nullptr);
}

std::uint32_t CImage::EncodeAtitc() {
    const auto encode = ImgInfo(m_pDst, INFO_FAST_COMPRESS) == 1 ? ATI_TC_EncodeImageFast_Seperate_Header
                                                                 : ATI_TC_EncodeImage_Seperate_Header;
    const std::uint32_t flags = ImgInfo(m_pDst, INFO_ALPHA) != 0 ? TXC_FLAG_ALPHA : TXC_FLAG_RGB;
    const ChannelMasks& masks = detail::kRgba8888;
    _ATITC_HEADER header{};
    return encode(m_pBuffer, masks.red, masks.green, masks.blue, masks.alpha, m_nWidth, m_nHeight,
                  m_nWidth * kRgbaBytes, flags, TXC_FORMAT_ATC, &header, m_pDst->pData, &m_pDst->nDataSize);
}

std::uint32_t CImage::Encode(std::uint32_t flags, std::uint32_t codecFormat) {
    const ChannelMasks& masks = detail::kRgba8888;
    return TxCompressEncode(m_pBuffer, masks.red, masks.green, masks.blue, masks.alpha, m_nWidth, m_nHeight,
                            m_nWidth * kRgbaBytes, flags, codecFormat, m_pDst->pData, &m_pDst->nDataSize);
}

}  // namespace QXTextureConverter
