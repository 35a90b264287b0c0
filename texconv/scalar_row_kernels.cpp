// The plain kernels: the conversions as they are defined, one pixel or channel at a time.
#include <bit>
#include <cmath>
#include <cstring>

#include "texconv/half_float.h"
#include "texconv/row_kernels.h"
#include "texconv/scale_axis.h"
#include "texconv/working_pixel.h"

namespace QXTextureConverter {

namespace {

static_assert(std::endian::native == std::endian::little, "pixels are read and written in place");

void Unpack(const WordLayout& layout, const std::uint8_t* words, std::size_t count, std::uint8_t* rgba) {
    const ChannelField fields[] = {ChannelField(layout.masks.red), ChannelField(layout.masks.green),
                                   ChannelField(layout.masks.blue), ChannelField(layout.masks.alpha)};
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word = 0;
        std::memcpy(&word, words + i * layout.bytes, layout.bytes);
        for (std::size_t c = 0; c < 4; ++c) {
            rgba[i * 4 + c] = fields[c].Read(word, c == 3 && layout.opaque ? 255 : 0);
        }
    }
}

// Channels that share bits are combined by OR.
void Pack(const WordLayout& layout, const std::uint8_t* rgba, std::size_t count, std::uint8_t* words) {
    const ChannelField fields[] = {ChannelField(layout.masks.red), ChannelField(layout.masks.green),
                                   ChannelField(layout.masks.blue), ChannelField(layout.masks.alpha)};
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t word = 0;
        for (std::size_t c = 0; c < 4; ++c) {
            word |= fields[c].Write(rgba[i * 4 + c]);
        }
        std::memcpy(words + i * layout.bytes, &word, layout.bytes);
    }
}

void Mirror(const std::uint8_t* rgba, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(to + (count - 1 - i) * 4, rgba + i * 4, 4);
    }
}

template <typename From, typename To, To (*kConvert)(From)>
void EachChannel(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
        From in;
        std::memcpy(&in, from + i * sizeof(in), sizeof(in));
        const To out = kConvert(in);
        std::memcpy(to + i * sizeof(out), &out, sizeof(out));
    }
}

void AddBytes(const std::uint8_t* bytes, std::size_t count, std::uint32_t* sums) {
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] += bytes[i];
    }
}

void AverageSpans(const std::uint32_t* sums, const Span* spans, std::size_t count, std::uint32_t lines,
                  std::uint8_t* to) {
    for (std::size_t i = 0; i < count * 4; ++i) {
        const Span& span = spans[i / 4];
        std::uint32_t sum = 0;
        for (std::size_t x = span.first; x < std::size_t{span.first} + span.count; ++x) {
            sum += sums[x * 4 + i % 4];
        }
        to[i] = static_cast<std::uint8_t>(sum / (span.count * lines));
    }
}

void Halve(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count * 4; ++i) {
        const std::size_t at = i / 4 * 8 + i % 4;
        to[i] = static_cast<std::uint8_t>((upper[at] + upper[at + 4] + lower[at] + lower[at + 4]) / 4);
    }
}

void WidenBytes(const std::uint8_t* bytes, std::size_t count, float* to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(bytes[i]);
    }
}

void WidenPairs(const std::uint8_t* rgba, std::size_t count, float* even, float* odd) {
    for (std::size_t i = 0; i < count * 4; ++i) {
        const std::uint8_t* pixel = rgba + i / 4 * 8;
        even[i] = static_cast<float>(pixel[i % 4]);
        odd[i] = static_cast<float>(pixel[4 + i % 4]);
    }
}

// Column after column, in each from the upper line to the lower.
void CubicBytes(const float* const* runs, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count * 4; ++i) {
        float sum = 0.0f;
        for (int run = 0; run < kByteTaps * kByteTaps; ++run) {
            sum += kSplineWeights[run / kByteTaps] * kSplineWeights[run % kByteTaps] * runs[run][i];
        }
        to[i] = BytePixel::FromFloat(sum);
    }
}

void CubicFloats(const float* const* lines, const std::uint32_t* taps, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i, taps += kTaps, to += FloatPixel::kBytes) {
        Channels<FloatPixel> result;
        for (std::size_t c = 0; c < result.size(); ++c) {
            float sum = 0.0f;
            for (int column = 0; column < kTaps; ++column) {
                for (int line = 0; line < kTaps; ++line) {
                    const float weight = kSplineWeights[column] * kSplineWeights[line];
                    sum += weight * lines[line][taps[column] + c];
                }
            }
            result[c] = FloatPixel::FromFloat(sum);
        }
        StorePixel<FloatPixel>(result, to);
    }
}

void Heights(const std::uint8_t* rgba, std::size_t count, std::int16_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<std::int16_t>((rgba[i * 4] + rgba[i * 4 + 1] + rgba[i * 4 + 2]) / 3);
    }
}

struct Slope {
    int dx;
    int dy;
};

// h(i, j) is the height i columns right of and j rows below the pixel.
template <typename Height>
Slope SlopeAt(std::uint32_t kernel, const Height& h) {
    switch (kernel) {
        case kDiagonalBumpmap:
            return {h(0, 0) - h(1, 1), h(1, 0) - h(0, 1)};
        case kSobelBumpmap:
            return {h(-1, 1) + h(-1, -1) - h(1, -1) - h(1, 1) + 2 * (h(-1, 0) - h(1, 0)),
                    h(1, -1) + h(-1, -1) - h(-1, 1) - h(1, 1) + 2 * (h(0, -1) - h(0, 1))};
        case kPrewittBumpmap:
            return {h(-1, -1) + h(-1, 0) + h(-1, 1) - h(1, -1) - h(1, 0) - h(1, 1),
                    h(-1, -1) + h(0, -1) + h(1, -1) - h(-1, 1) - h(0, 1) - h(1, 1)};
        default:
            return {0, 0};
    }
}

void Normals(std::uint32_t kernel, const std::int16_t* const* lines, std::size_t count, float nz,
             std::uint8_t* rgba) {
    for (std::ptrdiff_t x = 0; x < static_cast<std::ptrdiff_t>(count); ++x) {
        const Slope slope = SlopeAt(kernel, [&](int i, int j) { return lines[j + 1][x + i]; });
        const float nx = static_cast<float>(slope.dx) / 255.0f;
        const float ny = static_cast<float>(slope.dy) / 255.0f;
        const float scale = 1.0f / std::sqrt(nx * nx + ny * ny + nz * nz);
        *rgba++ = Bumpmap_OffsetAndBias(nx * scale);
        *rgba++ = Bumpmap_OffsetAndBias(ny * scale);
        *rgba++ = Bumpmap_OffsetAndBias(nz * scale);
        *rgba++ = 0;
    }
}

std::uint32_t Nearest(const PaletteColors& palette, const std::uint8_t* rgba) {
    std::uint32_t best = 0;
    int bestDistance = 2000000000;
    for (std::uint32_t i = 0; i < palette.count; ++i) {
        const int red = rgba[0] - palette.red[i];
        const int green = rgba[1] - palette.green[i];
        const int blue = rgba[2] - palette.blue[i];
        const int alpha = rgba[3] - palette.alpha[i];
        const int distance = red * red + green * green + blue * blue + alpha * alpha;
        if (distance < bestDistance) {
            best = i;
            bestDistance = distance;
        }
    }
    return best;
}

}  // namespace

constinit const RowKernels kScalarRowKernels{
    .unpack = Unpack,
    .pack = Pack,
    .mirror = Mirror,
    .floatsToBytes = EachChannel<float, unsigned char, Float2UByte>,
    .halvesToBytes = EachChannel<unsigned short, unsigned char, HalfFloat2UByte>,
    .bytesToFloats = EachChannel<unsigned char, float, UByte2Float>,
    .bytesToHalves = EachChannel<unsigned char, unsigned short, UByte2HalfFloat>,
    .floatsToHalves = EachChannel<float, unsigned short, Float2HalfFloat>,
    .halvesToFloats = EachChannel<unsigned short, float, HalfFloat2Float>,
    .addBytes = AddBytes,
    .averageSpans = AverageSpans,
    .halve = Halve,
    .widenBytes = WidenBytes,
    .widenPairs = WidenPairs,
    .cubicBytes = CubicBytes,
    .cubicFloats = CubicFloats,
    .heights = Heights,
    .normals = Normals,
    .nearest = Nearest,
};

}  // namespace QXTextureConverter
