// Float and half float pixels in and out of either working image.
#include <bit>
#include <cstring>

#include "texconv/image.h"
#include "texconv/row_access.h"

namespace QXTextureConverter {

namespace {

static_assert(std::endian::native == std::endian::little, "float pixels are read and written in place");

// Where a float format keeps R, G, B and A: the number of its channel, or kMissing.
constexpr std::uint32_t kMissing = 4;
struct ChannelPlaces {
    std::uint32_t count;
    std::array<std::uint32_t, 4> read;     // of R, G, B, A; a missing one reads as 0
    std::array<std::uint32_t, 4> written;  // which of R, G, B, A each channel takes
};

constexpr ChannelPlaces PlacesOf(FloatChannels channels) {
    switch (channels) {
        case FloatChannels::kRgba:
            return {4, {0, 1, 2, 3}, {0, 1, 2, 3}};
        case FloatChannels::kRgb:
            return {3, {0, 1, 2, kMissing}, {0, 1, 2}};
        case FloatChannels::kLa:
            return {2, {0, 0, 0, 1}, {0, 3}};
        case FloatChannels::kL:
            return {1, {0, 0, 0, kMissing}, {0}};
        case FloatChannels::kA:
            return {1, {kMissing, kMissing, kMissing, 0}, {3}};
        case FloatChannels::kNone:
            break;
    }
    return {0, {kMissing, kMissing, kMissing, kMissing}, {}};
}

// Float bits are carried as words, so that no NaN changes on the way.
struct CopyFloat {
    using From = std::uint32_t;
    using To = std::uint32_t;
    static To Convert(From value) { return value; }
};
struct WidenHalf {
    using From = std::uint16_t;
    using To = float;
    static To Convert(From value) { return HalfFloat2Float(value); }
};
struct FloatToByte {
    using From = float;
    using To = std::uint8_t;
    static To Convert(From value) { return Float2UByte(value); }
};
struct HalfToByte {
    using From = std::uint16_t;
    using To = std::uint8_t;
    static To Convert(From value) { return HalfFloat2UByte(value); }
};
struct NarrowFloat {
    using From = float;
    using To = std::uint16_t;
    static To Convert(From value) { return Float2HalfFloat(value); }
};
struct ByteToFloat {
    using From = std::uint8_t;
    using To = float;
    static To Convert(From value) { return UByte2Float(value); }
};
struct ByteToHalf {
    using From = std::uint8_t;
    using To = std::uint16_t;
    static To Convert(From value) { return UByte2HalfFloat(value); }
};

// Packed pixels to working pixels.
template <typename Conversion>
void ReadPixels(const std::uint8_t* from, std::uint32_t count, const ChannelPlaces& places,
                std::uint8_t* to) {
    for (std::uint32_t i = 0; i < count; ++i) {
        std::array<typename Conversion::From, 5> in{};  // the last one stays 0, for what is missing
        std::memcpy(in.data(), from, places.count * sizeof(in[0]));
        std::array<typename Conversion::To, 4> out;
        for (std::size_t c = 0; c < out.size(); ++c) {
            out[c] = Conversion::Convert(in[places.read[c]]);
        }
        std::memcpy(to, out.data(), sizeof(out));
        from += places.count * sizeof(in[0]);
        to += sizeof(out);
    }
}

// Working pixels to packed pixels.
template <typename Conversion>
void WritePixels(const std::uint8_t* from, std::uint32_t count, const ChannelPlaces& places,
                 std::uint8_t* to) {
    for (std::uint32_t i = 0; i < count; ++i) {
        std::array<typename Conversion::From, 4> in;
        std::memcpy(in.data(), from, sizeof(in));
        std::array<typename Conversion::To, 4> out{};
        for (std::uint32_t c = 0; c < places.count; ++c) {
            out[c] = Conversion::Convert(in[places.written[c]]);
        }
        std::memcpy(to, out.data(), places.count * sizeof(out[0]));
        from += sizeof(in);
        to += places.count * sizeof(out[0]);
    }
}

using PixelKernel = void (*)(const std::uint8_t*, std::uint32_t, const ChannelPlaces&, std::uint8_t*);

}  // namespace

void CImage::Input_ToFloat() {
    if (!StartWorkingImage(16)) {
        return;
    }
    if (const FormatInfo* format = FindFormat(m_pSrc->nFormat); format != nullptr && format->IsFloat()) {
        ReadFloat(*format, false);
    } else {
        std::memset(m_pBuffer, 0, std::size_t{m_nWidth} * m_nHeight * m_nBytesPerPixel);
    }
}

void CImage::Input_FloatToGeneric() {
    if (!StartWorkingImage(4)) {
        return;
    }
    if (const FormatInfo* format = FindFormat(m_pSrc->nFormat); format != nullptr && format->IsFloat()) {
        ReadFloat(*format, true);
    } else {
        std::memset(m_pBuffer, 0, std::size_t{m_nWidth} * m_nHeight * m_nBytesPerPixel);
    }
}

void CImage::ReadFloat(const FormatInfo& format, bool toBytes) {
    const bool half = format.floatBytes == 2;
    const PixelKernel read = toBytes ? (half ? ReadPixels<HalfToByte> : ReadPixels<FloatToByte>)
                                     : (half ? ReadPixels<WidenHalf> : ReadPixels<CopyFloat>);
    const ChannelPlaces places = PlacesOf(format.floatChannels);
    const std::uint32_t pixelBytes = format.bitsPerPixel / 8;
    const std::uint64_t rowBytes = std::uint64_t{m_nWidth} * pixelBytes;
    const std::uint64_t limit = DataLimit(m_pSrc);
    const std::uint32_t rows = m_nWidth != 0 ? m_nHeight : 0;
    for (std::uint32_t y = 0; y < rows; ++y) {
        std::uint8_t* row = m_pBuffer + std::size_t{y} * m_nWidth * m_nBytesPerPixel;
        ReadRow(m_pSrc->pData, limit, y * rowBytes, pixelBytes, m_nWidth,
                [&](const std::uint8_t* bytes, std::uint32_t first, std::uint32_t count) {
                    read(bytes, count, places, row + std::size_t{first} * m_nBytesPerPixel);
                });
    }
}

void CImage::Output_Float() {
    if (const FormatInfo* format = FindFormat(m_pDst->nFormat); format != nullptr && format->IsFloat()) {
        WriteFloat(*format, false);
    }
    SetBuffer(nullptr);
}

void CImage::Output_GenericToFloat() {
    if (const FormatInfo* format = FindFormat(m_pDst->nFormat); format != nullptr && format->IsFloat()) {
        WriteFloat(*format, true);
    }
    SetBuffer(nullptr);
}

void CImage::WriteFloat(const FormatInfo& format, bool fromBytes) {
    if (m_pBuffer == nullptr) {
        return;
    }
    const bool half = format.floatBytes == 2;
    const PixelKernel write = fromBytes ? (half ? WritePixels<ByteToHalf> : WritePixels<ByteToFloat>)
                                        : (half ? WritePixels<NarrowFloat> : WritePixels<CopyFloat>);
    const ChannelPlaces places = PlacesOf(format.floatChannels);
    const std::uint32_t pixelBytes = format.bitsPerPixel / 8;
    const std::uint64_t rowBytes = std::uint64_t{m_nWidth} * pixelBytes;
    const std::uint64_t limit = DataLimit(m_pDst);
    const std::uint32_t rows = m_nWidth != 0 ? m_nHeight : 0;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const std::uint8_t* row = m_pBuffer + std::size_t{y} * m_nWidth * m_nBytesPerPixel;
        WriteRow(m_pDst->pData, limit, y * rowBytes, pixelBytes, m_nWidth,
                 [&](std::uint8_t* bytes, std::uint32_t first, std::uint32_t count) {
                     write(row + std::size_t{first} * m_nBytesPerPixel, count, places, bytes);
                 });
    }
}

}  // namespace QXTextureConverter
