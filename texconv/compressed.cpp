// Block formats in and out of the 8-bit pipeline, through the codecs.
#include <cstring>

#include "texcompress/texcompress.h"
#include "texconv/image.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;
constexpr std::uint32_t kHeaderBytes = 20;
static_assert(sizeof(_ATITC_HEADER) == kHeaderBytes);

constexpr std::uint32_t kInterpolated = TXC_FLAG_ALPHA | TXC_FLAG_INTERPOLATED_ALPHA;

// Spreads packed R, G, B pixels at the start of `buffer` to opaque R, G, B, A pixels, from the
// last to the first, so that none is overwritten before it has moved.
void WidenRgbInPlace(std::uint8_t* buffer, std::size_t pixels) {
    for (std::size_t i = pixels; i-- > 0;) {
        const std::uint8_t* rgb = buffer + i * 3;
        const std::uint8_t red = rgb[0];
        const std::uint8_t green = rgb[1];
        const std::uint8_t blue = rgb[2];
        std::uint8_t* rgba = buffer + i * kRgbaBytes;
        rgba[0] = red;
        rgba[1] = green;
        rgba[2] = blue;
        rgba[3] = 255;
    }
}

// Clears channels `first` to 2 of every pixel.
void ClearChannels(std::uint8_t* rgba, std::size_t pixels, std::uint32_t first) {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::memset(rgba + i * kRgbaBytes + first, 0, 3 - first);
    }
}

}  // namespace

void CImage::Input_CompressedToGeneric() {
    if (!StartWorkingImage(kRgbaBytes)) {
        return;
    }
    bool decoded = false;
    switch (m_pSrc->nFormat) {
        case FMT_ATITC_RGBA_EXPLICIT:
        case FMT_ATITC_RGB:
            decoded = DecodeAtitc();
            break;
        case FMT_ATITC_RGBA_INTERPOLATED:
            decoded = DecodeAtitcInterpolated();
            break;
        case FMT_ETC1_RGB8:
            decoded = DecodeEtc1();
            break;
        case FMT_3DC_X:
            decoded =
                Decode3Dc(TXC_FORMAT_ATI1N, "Error calling TxCompressDecode (texcompress.lib) for 3DC_X");
            break;
        case FMT_3DC_XY:
            decoded =
                Decode3Dc(TXC_FORMAT_ATI2N, "Error calling TxCompressDecode (texcompress.lib) for 3DC_XY");
            break;
        default:
            SetBuffer(nullptr);
            return;
    }
    const std::size_t pixels = std::size_t{m_nWidth} * m_nHeight;
    if (!decoded) {
        std::memset(m_pBuffer, 0, pixels * kRgbaBytes);
    }
}

bool CImage::DecodeAtitc() {
    const bool alpha = ImgInfo(m_pSrc, INFO_ALPHA) != 0;
    const _ATITC_HEADER header{TXC_FORMAT_ATC, m_nWidth, m_nHeight, alpha ? TXC_FLAG_ALPHA : TXC_FLAG_RGB,
                               kHeaderBytes};
    std::uint32_t size = 0;
    const bool decoded =
        ATI_TC_DecodeImage_Seperate_Header(&header, m_pSrc->pData, TXC_ORDER_RGB, nullptr, &size) == TXC_OK &&
        ATI_TC_DecodeImage_Seperate_Header(&header, m_pSrc->pData, TXC_ORDER_RGB, m_pBuffer, &size) == TXC_OK;
    if (!decoded) {
        Verbose("Can't decode ATITC input image");
    } else if (!alpha) {
        WidenRgbInPlace(m_pBuffer, std::size_t{m_nWidth} * m_nHeight);
    }
    return decoded;
}

bool CImage::DecodeAtitcInterpolated() {
    std::uint32_t size = 0;
    if (TxCompressQueryDecodeBufferSize(m_nWidth, m_nHeight, TXC_FORMAT_ATC, 1, &size) != TXC_OK) {
        Verbose(
            "Error calling TxCompressQueryDecodeBufferSize (texcompress.lib) for "
            "ATC_RGBA_INTERPOLATED_ALPHA");
        return false;
    }
    if (TxCompressDecode(TXC_FORMAT_ATC, m_nWidth, m_nHeight, kInterpolated, m_pSrc->pData, 0, TXC_ORDER_RGB,
                         m_pBuffer, size) != TXC_OK) {
        Verbose("Error calling TxCompressDecode (texcompress.lib) for ATC_RGBA_INTERPOLATED_ALPHA");
        return false;
    }
    return true;
}

bool CImage::DecodeEtc1() {
    const std::size_t pixels = std::size_t{m_nWidth} * m_nHeight;
    if (TxCompressDecode(TXC_FORMAT_ETC1, m_nWidth, m_nHeight, TXC_FLAG_RGB, m_pSrc->pData, 0, TXC_ORDER_RGB,
                         m_pBuffer, static_cast<std::uint32_t>(pixels * 3)) != TXC_OK) {
        Verbose("Error calling TxCompressDecode (texcompress.lib) for ETC1_RGB8");
        return false;
    }
    WidenRgbInPlace(m_pBuffer, pixels);
    return true;
}

bool CImage::Decode3Dc(std::uint32_t codecFormat, const char* message) {
    const std::size_t pixels = std::size_t{m_nWidth} * m_nHeight;
    if (TxCompressDecode(codecFormat, m_nWidth, m_nHeight, TXC_FLAG_ALPHA, m_pSrc->pData, 0, TXC_ORDER_RGB,
                         m_pBuffer, static_cast<std::uint32_t>(pixels * kRgbaBytes)) != TXC_OK) {
        Verbose(message);
        return false;
    }
    ClearChannels(m_pBuffer, pixels, codecFormat == TXC_FORMAT_ATI1N ? 1 : 2);
    return true;
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
