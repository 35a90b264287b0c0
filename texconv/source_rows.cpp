#include "texconv/source_rows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "texconv/float_channels.h"
#include "texconv/row_access.h"
#include "texconv/row_kernels.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kRgbaBytes = 4;
constexpr std::uint32_t kFloatPixelBytes = 16;

// Unpacks the words of `count` pixels, pixelBytes apart from byte `offset` on.
void UnpackRow(const SourceBytes& source, std::uint64_t offset, std::uint32_t pixelBytes,
               const WordLayout& layout, std::uint32_t count, std::uint8_t* to) {
    const auto unpack = [&](const std::uint8_t* words, std::uint32_t first, std::uint32_t some) {
        SelectRowKernels().unpack(layout, words, some, to + std::size_t{first} * kRgbaBytes);
    };
    if (layout.bytes > pixelBytes) {
        ReadWordsInRow(source.data, source.limit, offset, pixelBytes, count, unpack);
    } else {
        ReadRow(source.data, source.limit, offset, std::max(pixelBytes, 1u), count, unpack);
    }
}

class PlainSource : public RowSource {
  public:
    PlainSource(const SourceBytes& source, std::uint32_t width, std::uint32_t stride,
                std::uint32_t pixelBytes, const ChannelMasks& masks)
        : m_source(source),
          m_width(width),
          m_stride(stride),
          m_pixelBytes(pixelBytes),
          m_layout(WordLayout::ForReading(masks, pixelBytes)) {}

    void Read(std::uint32_t y, std::uint8_t* to) override {
        UnpackRow(m_source, std::uint64_t{y} * m_stride, m_pixelBytes, m_layout, m_width, to);
    }

    const std::uint8_t* Peek(std::uint32_t y) override {
        const std::uint64_t offset = std::uint64_t{y} * m_stride;
        const bool whole = offset + std::uint64_t{m_width} * kRgbaBytes <= m_source.limit;
        return m_pixelBytes == kRgbaBytes && m_layout.IsRgba() && whole ? m_source.data + offset : nullptr;
    }

  private:
    SourceBytes m_source;
    std::uint32_t m_width;
    std::uint32_t m_stride;
    std::uint32_t m_pixelBytes;
    WordLayout m_layout;
};

// Looks up `count` indices of kBits bits; the first of a byte lies in its lowest bits.
template <unsigned kBits>
void LookUpIndices(const std::uint8_t* indices, std::uint32_t count, const std::uint32_t* table,
                   std::uint8_t* rgba) {
    constexpr std::uint32_t kPerByte = 8 / kBits;
    const auto lookUpByte = [&](std::uint32_t first, std::uint32_t here) {
        std::uint32_t byte = indices[first / kPerByte];
        for (std::uint32_t x = first; x < first + here; ++x) {
            std::memcpy(rgba + std::size_t{x} * kRgbaBytes, &table[byte & ((1u << kBits) - 1)], kRgbaBytes);
            byte >>= kBits;
        }
    };
    const std::uint32_t whole = count / kPerByte * kPerByte;
    for (std::uint32_t x = 0; x < whole; x += kPerByte) {
        lookUpByte(x, kPerByte);
    }
    if (whole < count) {
        lookUpByte(whole, count - whole);
    }
}

class PaletteSource : public RowSource {
  public:
    PaletteSource(const SourceBytes& source, std::uint32_t width, std::uint32_t stride, std::uint32_t bits,
                  std::uint32_t entryBytes, const ChannelMasks& masks)
        : m_source(source),
          m_width(width),
          m_stride(stride),
          m_bits(bits),
          m_tableBytes(entryBytes << bits),
          m_lookUp(bits == 8 ? LookUpIndices<8> : (bits == 4 ? LookUpIndices<4> : LookUpIndices<1>)) {
        UnpackRow(source, 0, entryBytes, WordLayout::ForReading(masks, entryBytes), 1u << bits,
                  reinterpret_cast<std::uint8_t*>(m_table.data()));
    }

    void Read(std::uint32_t y, std::uint8_t* to) override {
        const std::uint64_t offset = m_tableBytes + std::uint64_t{y} * m_stride;
        const std::uint32_t inside = ElementsInside(m_source.limit, offset, m_bits, m_width);
        if (inside > 0) {
            m_lookUp(m_source.data + offset, inside, m_table.data(), to);
        }
        for (std::uint32_t x = inside; x < m_width; ++x) {
            std::memcpy(to + std::size_t{x} * kRgbaBytes, m_table.data(), kRgbaBytes);
        }
    }

  private:
    SourceBytes m_source;
    std::uint32_t m_width;
    std::uint32_t m_stride;
    std::uint32_t m_bits;
    std::uint32_t m_tableBytes;
    void (*m_lookUp)(const std::uint8_t*, std::uint32_t, const std::uint32_t*, std::uint8_t*);
    std::array<std::uint32_t, 256> m_table{};  // R, G, B, A in memory order
};

// What float formats have in common.
class FloatSource : public RowSource {
  public:
    FloatSource(const SourceBytes& source, std::uint32_t width, const FormatInfo& format)
        : m_source(source),
          m_width(width),
          m_pixelBytes(format.bitsPerPixel / 8),
          m_half(format.floatBytes == 2),
          m_places(PlacesOf(format.floatChannels)) {}

  protected:
    // Calls convert(pixels, count, to), a part of the row at a time.
    template <typename Convert>
    void ReadParts(std::uint32_t y, std::uint32_t workingBytes, std::uint8_t* to, const Convert& convert) {
        ReadRow(m_source.data, m_source.limit, std::uint64_t{y} * m_width * m_pixelBytes, m_pixelBytes,
                m_width, [&](const std::uint8_t* pixels, std::uint32_t first, std::uint32_t count) {
                    for (std::uint32_t at = 0; at < count; at += kPartPixels) {
                        convert(pixels + std::size_t{at} * m_pixelBytes, std::min(count - at, kPartPixels),
                                to + (std::size_t{first} + at) * workingBytes);
                    }
                });
    }

    static constexpr std::uint32_t kPartPixels = 256;

    const RowKernels& m_kernels = SelectRowKernels();
    SourceBytes m_source;
    std::uint32_t m_width;
    std::uint32_t m_pixelBytes;
    bool m_half;
    FloatPlaces m_places;
};

class FloatToByteSource : public FloatSource {
  public:
    using FloatSource::FloatSource;

    // The channels become bytes first; what remains is a plain word.
    void Read(std::uint32_t y, std::uint8_t* to) override {
        const ChannelKernel convert = m_half ? m_kernels.halvesToBytes : m_kernels.floatsToBytes;
        const WordLayout layout = ReadBytesLayout(m_places);
        ReadParts(y, kRgbaBytes, to, [&](const std::uint8_t* pixels, std::uint32_t count, std::uint8_t* out) {
            if (layout.IsRgba()) {
                convert(pixels, std::size_t{count} * 4, out);
                return;
            }
            std::array<std::uint8_t, std::size_t{kPartPixels} * kRgbaBytes> bytes;
            convert(pixels, std::size_t{count} * m_places.count, bytes.data());
            m_kernels.unpack(layout, bytes.data(), count, out);
        });
    }
};

// Float bits are carried as words, so that no NaN changes on the way.
using FloatWord = std::uint32_t;

void SpreadChannels(const FloatPlaces& places, const FloatWord* channels, std::uint32_t count,
                    std::uint8_t* to) {
    for (std::uint32_t i = 0; i < count; ++i) {
        std::array<FloatWord, 4> pixel{};
        for (std::size_t c = 0; c < pixel.size(); ++c) {
            pixel[c] = places.read[c] != kMissingChannel ? channels[places.read[c]] : 0;
        }
        std::memcpy(to, pixel.data(), sizeof(pixel));
        channels += places.count;
        to += sizeof(pixel);
    }
}

class FloatToFloatSource : public FloatSource {
  public:
    using FloatSource::FloatSource;

    void Read(std::uint32_t y, std::uint8_t* to) override {
        ReadParts(y, kFloatPixelBytes, to,
                  [&](const std::uint8_t* pixels, std::uint32_t count, std::uint8_t* out) {
                      const std::size_t channels = std::size_t{count} * m_places.count;
                      if (m_places.count == 4) {
                          Widen(pixels, channels, out);
                          return;
                      }
                      std::array<FloatWord, std::size_t{kPartPixels} * 3> words;
                      Widen(pixels, channels, reinterpret_cast<std::uint8_t*>(words.data()));
                      SpreadChannels(m_places, words.data(), count, out);
                  });
    }

    const std::uint8_t* Peek(std::uint32_t y) override {
        const std::uint64_t rowBytes = std::uint64_t{m_width} * kFloatPixelBytes;
        const bool same = m_pixelBytes == kFloatPixelBytes;
        return same && (y + std::uint64_t{1}) * rowBytes <= m_source.limit ? m_source.data + y * rowBytes
                                                                           : nullptr;
    }

  private:
    void Widen(const std::uint8_t* from, std::size_t channels, std::uint8_t* to) const {
        if (m_half) {
            m_kernels.halvesToFloats(from, channels, to);
        } else {
            std::memcpy(to, from, channels * sizeof(FloatWord));
        }
    }
};

class WorkingSource : public RowSource {
  public:
    WorkingSource(const std::uint8_t* pixels, std::size_t rowBytes)
        : m_pixels(pixels), m_rowBytes(rowBytes) {}

    void Read(std::uint32_t y, std::uint8_t* to) override { std::memcpy(to, Peek(y), m_rowBytes); }
    const std::uint8_t* Peek(std::uint32_t y) override { return m_pixels + y * m_rowBytes; }

  private:
    const std::uint8_t* m_pixels;
    std::size_t m_rowBytes;
};

}  // namespace

RowSourcePointer PlainRows(const SourceBytes& source, std::uint32_t width, std::uint32_t stride,
                           std::uint32_t pixelBytes, const ChannelMasks& masks) {
    return std::make_unique<PlainSource>(source, width, stride, pixelBytes, masks);
}

RowSourcePointer PaletteRows(const SourceBytes& source, std::uint32_t width, std::uint32_t stride,
                             std::uint32_t bits, std::uint32_t entryBytes, const ChannelMasks& masks) {
    return std::make_unique<PaletteSource>(source, width, stride, bits, entryBytes, masks);
}

RowSourcePointer FloatRowsAsBytes(const SourceBytes& source, std::uint32_t width, const FormatInfo& format) {
    return std::make_unique<FloatToByteSource>(source, width, format);
}

RowSourcePointer FloatRows(const SourceBytes& source, std::uint32_t width, const FormatInfo& format) {
    return std::make_unique<FloatToFloatSource>(source, width, format);
}

RowSourcePointer WorkingRows(const std::uint8_t* pixels, std::uint32_t width, std::uint32_t bytesPerPixel) {
    return std::make_unique<WorkingSource>(pixels, std::size_t{width} * bytesPerPixel);
}

}  // namespace QXTextureConverter
