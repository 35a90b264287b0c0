#include "texconv/destination_rows.h"

#include <array>
#include <cstring>

#include "texconv/float_channels.h"
#include "texconv/row_access.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;
constexpr std::uint32_t kFloatPixelBytes = 16;
constexpr std::uint32_t kPartPixels = 256;

// The place of a row of `rowBytes` at `offset`, if all of it may be touched.
std::uint8_t* PlaceInside(const DestinationBytes& destination, std::uint64_t offset, std::uint64_t rowBytes) {
    return offset + rowBytes <= destination.limit ? destination.data + offset : nullptr;
}

void GatherChannels(const FloatPlaces& places, const std::uint8_t* working, std::uint32_t count,
                    std::uint8_t* channels) {
    for (std::uint32_t i = 0; i < count; ++i) {
        for (std::uint32_t c = 0; c < places.count; ++c) {
            std::memcpy(channels, working + std::size_t{places.written[c]} * 4, 4);
            channels += 4;
        }
        working += kFloatPixelBytes;
    }
}

}  // namespace

void PlainDestination::Write(std::uint32_t y, const std::uint8_t* rgba) const {
    WriteRow(m_destination.data, m_destination.limit, std::uint64_t{y} * m_stride, m_layout.bytes, m_width,
             [&](std::uint8_t* words, std::uint32_t first, std::uint32_t count) {
                 m_kernels.pack(m_layout, rgba + std::size_t{first} * kRgbaBytes, count, words);
             });
}

std::uint8_t* PlainDestination::Place(std::uint32_t y) const {
    return m_layout.IsRgba()
               ? PlaceInside(m_destination, std::uint64_t{y} * m_stride, std::uint64_t{m_width} * kRgbaBytes)
               : nullptr;
}

void FloatDestination::Write(std::uint32_t y, const std::uint8_t* working) const {
    const std::uint32_t workingBytes = m_fromBytes ? kRgbaBytes : kFloatPixelBytes;
    const std::uint32_t pixelBytes = m_format.bitsPerPixel / 8;
    WriteRow(m_destination.data, m_destination.limit, std::uint64_t{y} * m_width * pixelBytes, pixelBytes,
             m_width, [&](std::uint8_t* pixels, std::uint32_t first, std::uint32_t count) {
                 for (std::uint32_t at = 0; at < count; at += kPartPixels) {
                     WritePart(working + (std::size_t{first} + at) * workingBytes,
                               std::min(count - at, kPartPixels), pixels + std::size_t{at} * pixelBytes);
                 }
             });
}

std::uint8_t* FloatDestination::Place(std::uint32_t y) const {
    const std::uint64_t rowBytes = std::uint64_t{m_width} * kFloatPixelBytes;
    const bool same = !m_fromBytes && m_format.bitsPerPixel == 8 * kFloatPixelBytes;
    return same ? PlaceInside(m_destination, y * rowBytes, rowBytes) : nullptr;
}

// The channels that the format lacks go first, then the others change their type.
void FloatDestination::WritePart(const std::uint8_t* working, std::uint32_t count,
                                 std::uint8_t* pixels) const {
    const FloatPlaces places = PlacesOf(m_format.floatChannels);
    const std::size_t channels = std::size_t{count} * places.count;
    const bool half = m_format.floatBytes == 2;
    std::array<std::uint8_t, std::size_t{kPartPixels} * 3 * 4> kept;
    const std::uint8_t* from = places.count == 4 ? working : kept.data();
    if (m_fromBytes) {
        if (places.count != 4) {
            m_kernels.pack(WrittenBytesLayout(places), working, count, kept.data());
        }
        (half ? m_kernels.bytesToHalves : m_kernels.bytesToFloats)(from, channels, pixels);
        return;
    }
    if (places.count != 4) {
        GatherChannels(places, working, count, kept.data());
    }
    if (half) {
        m_kernels.floatsToHalves(from, channels, pixels);
    } else {
        std::memcpy(pixels, from, channels * 4);
    }
}

}  // namespace QXTextureConverter
