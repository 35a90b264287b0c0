// Palette destinations: colour table, then packed indices.
#include <array>
#include <cstring>

#include "texconv/image.h"
#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;
constexpr std::uint32_t kMostColors = 256;

// The plain format of a colour table's entries.
std::uint32_t TableFormat(std::uint32_t paletteFormat) {
    switch (paletteFormat) {
        case FMT_P8_RGB888:
        case FMT_P4_RGB888:
            return FMT_RGB888;
        case FMT_P8_RGBA5551:
        case FMT_P4_RGBA5551:
            return FMT_RGBA5551;
        case FMT_P8_RGBA4444:
        case FMT_P4_RGBA4444:
            return FMT_RGBA4444;
        case FMT_P8_RGB565:
        case FMT_P4_RGB565:
            return FMT_RGB565;
        default:
            return FMT_RGBA8888;
    }
}

// Indices of `bits` bits (1, 4 or 8) without row padding, the first of a byte in its lowest bits.
void PackIndices(const std::uint8_t* indices, std::size_t count, std::uint32_t bits, std::uint8_t* to) {
    if (bits == 8) {
        std::memcpy(to, indices, count);
        return;
    }
    const std::size_t perByte = 8 / bits;
    for (std::size_t i = 0; i < count; i += perByte) {
        std::uint32_t byte = 0;
        for (std::size_t j = 0; j < perByte && i + j < count; ++j) {
            byte |= std::uint32_t{indices[i + j]} << (j * bits);
        }
        *to++ = static_cast<std::uint8_t>(byte);
    }
}

}  // namespace

void CImage::Output_GenericToPalette() {
    if (m_pBuffer == nullptr) {
        return;
    }
    const std::uint32_t bits = ImgInfo(m_pDst, INFO_BPP);
    const std::uint32_t paletteBits = ImgInfo(m_pDst, INFO_PALETTE_BITS);
    const std::uint32_t colors = 1u << bits;
    const std::size_t pixels = std::size_t{m_nWidth} * m_nHeight;
    std::array<std::uint8_t, std::size_t{kMostColors} * kRgbaBytes> palette{};
    unsigned char* indices = m_pBuffer;  // the quantizer leaves no pixels behind
    if (pngquant(m_pBuffer, indices, palette.data(), static_cast<int>(colors), m_nWidth, m_nHeight, false,
                 false) == 0) {
        Verbose("Palette quantization failed");
        m_pDst->nDataSize = 0;
        SetBuffer(nullptr);
        return;
    }
    const std::uint32_t tableBytes = paletteBits * colors / 8;
    if (paletteBits == 32) {
        std::memcpy(m_pDst->pData, palette.data(), tableBytes);
    } else {
        TQonvertImage table{colors, 1, FMT_RGBA8888, nullptr, colors * kRgbaBytes, palette.data()};
        TQonvertImage entries{colors, 1, TableFormat(m_pDst->nFormat), nullptr, tableBytes, m_pDst->pData};
        Qonvert(&table, &entries);
        if (entries.nDataSize != tableBytes) {  // it found no memory, and has said so
            m_pDst->nDataSize = 0;
            SetBuffer(nullptr);
            return;
        }
    }
    PackIndices(indices, pixels, bits, m_pDst->pData + tableBytes);
    SetBuffer(nullptr);
}

}  // namespace QXTextureConverter
