#include "core/pixel_format.h"

#include <algorithm>
#include <cstring>

#include "core/texture.h"

namespace zorvan {
namespace {

// Bits and lowest bit of each channel in a 16-bit pixel; 0 bits for a channel that is not there.
struct Channel {
    uint32_t bits, shift;
};
using Layout = Channel[4];

constexpr Layout kLayouts[3] = {
    {{5, 11}, {6, 5}, {5, 0}, {0, 0}}, {{5, 11}, {5, 6}, {5, 1}, {1, 0}}, {{4, 12}, {4, 8}, {4, 4}, {4, 0}}};

bool Is16Bit(uint32_t format) {
    return format <= TextureFormat::Rgba4444;
}

uint32_t PixelBytes(uint32_t format) {
    return Is16Bit(format) ? 2 : format == TextureFormat::Rgb888 ? 3 : 4;
}

// Nearest value of a channel's width and back; 8 bits to fewer and back to 8 loses nothing twice.
uint32_t Narrow(uint32_t value, uint32_t bits) {
    const uint32_t most = (1u << bits) - 1;
    return (value * most + 127) / 255;
}

uint8_t Widen(uint32_t value, uint32_t bits) {
    const uint32_t most = (1u << bits) - 1;
    return static_cast<uint8_t>((value * 255 + most / 2) / most);
}

void PackPixel(uint8_t const* rgba, uint32_t format, uint8_t* out) {
    if (!Is16Bit(format)) {
        std::memcpy(out, rgba, PixelBytes(format));
        return;
    }
    uint32_t pixel = 0;
    for (int i = 0; i < 4; ++i) {
        const Channel channel = kLayouts[format][i];
        pixel |= Narrow(rgba[i], channel.bits) << channel.shift;
    }
    const auto word = static_cast<uint16_t>(pixel);
    std::memcpy(out, &word, sizeof(word));
}

void UnpackPixel(uint8_t const* in, uint32_t format, uint8_t* rgba) {
    rgba[3] = 255;
    if (!Is16Bit(format)) {
        std::memcpy(rgba, in, PixelBytes(format));
        return;
    }
    uint16_t word = 0;
    std::memcpy(&word, in, sizeof(word));
    for (int i = 0; i < 4; ++i) {
        const Channel channel = kLayouts[format][i];
        if (channel.bits > 0) {
            rgba[i] = Widen((word >> channel.shift) & ((1u << channel.bits) - 1), channel.bits);
        }
    }
}

// Along one axis: which source pixels a new pixel covers, in units of 1 / newSide of a source pixel.
struct Span {
    uint32_t first, last;
    uint64_t Weight(uint32_t source, uint32_t at, uint32_t side, uint32_t newSide) const {
        const uint64_t from = std::max(uint64_t{at} * side, uint64_t{source} * newSide);
        const uint64_t to = std::min((uint64_t{at} + 1) * side, (uint64_t{source} + 1) * newSide);
        return to - from;
    }
};

Span Covered(uint32_t at, uint32_t side, uint32_t newSide) {
    return {at * side / newSide, ((at + 1) * side - 1) / newSide};
}

}  // namespace

bool IsPlainFormat(uint32_t format) {
    return format <= TextureFormat::Rgba8888Dynamic && format != TextureFormat::Reserved;
}

void PackPixels(Image const& image, uint32_t format, std::vector<uint8_t>& bytes) {
    const size_t begin = bytes.size();
    bytes.resize(begin + size_t{image.width} * image.height * PixelBytes(format));
    PackPadded(image, format, image.width, image.height, bytes.data() + begin);
}

void PackPadded(Image const& image, uint32_t format, uint32_t width, uint32_t height, uint8_t* out) {
    const uint32_t pixelBytes = PixelBytes(format);
    const uint32_t above = height - image.height;
    for (uint32_t y = height; y-- > 0;) {
        uint8_t const* row = image.rgba.data() + size_t{y < above ? 0 : y - above} * image.width * 4;
        for (uint32_t x = 0; x < width; ++x, out += pixelBytes) {
            PackPixel(row + size_t{std::min(x, image.width - 1)} * 4, format, out);
        }
    }
}

Image UnpackPixels(uint8_t const* bytes, uint32_t format, uint32_t width, uint32_t height) {
    Image image{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
    const uint32_t pixelBytes = PixelBytes(format);
    for (uint32_t y = height; y-- > 0;) {
        uint8_t* out = image.rgba.data() + size_t{y} * width * 4;
        for (uint32_t x = 0; x < width; ++x, out += 4, bytes += pixelBytes) {
            UnpackPixel(bytes, format, out);
        }
    }
    return image;
}

Image PadImage(Image const& image, uint32_t width, uint32_t height) {
    Image padded{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
    const uint32_t above = height - image.height;
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t const* row = image.rgba.data() + size_t{y < above ? 0 : y - above} * image.width * 4;
        uint8_t* out = padded.rgba.data() + size_t{y} * width * 4;
        for (uint32_t x = 0; x < width; ++x, out += 4) {
            std::memcpy(out, row + size_t{std::min(x, image.width - 1)} * 4, 4);
        }
    }
    return padded;
}

Image HalveImage(Image const& image) {
    const uint32_t width = std::max(image.width / 2, 1u);
    const uint32_t height = std::max(image.height / 2, 1u);
    const uint64_t area = uint64_t{image.width} * image.height;
    Image half{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
    uint8_t* out = half.rgba.data();
    for (uint32_t y = 0; y < height; ++y) {
        const Span rows = Covered(y, image.height, height);
        for (uint32_t x = 0; x < width; ++x, out += 4) {
            const Span columns = Covered(x, image.width, width);
            uint64_t sums[4] = {};
            for (uint32_t sy = rows.first; sy <= rows.last; ++sy) {
                const uint64_t rowWeight = rows.Weight(sy, y, image.height, height);
                for (uint32_t sx = columns.first; sx <= columns.last; ++sx) {
                    const uint64_t weight = rowWeight * columns.Weight(sx, x, image.width, width);
                    uint8_t const* in = image.rgba.data() + (size_t{sy} * image.width + sx) * 4;
                    for (int i = 0; i < 4; ++i) {
                        sums[i] += weight * in[i];
                    }
                }
            }
            for (int i = 0; i < 4; ++i) {
                out[i] = static_cast<uint8_t>((sums[i] + area / 2) / area);
            }
        }
    }
    return half;
}

}  // namespace zorvan
