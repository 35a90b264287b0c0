// The plain kernels: the conversions as they are defined, one pixel or channel at a time.
#include <bit>
#include <cstring>

#include "texconv/half_float.h"
#include "texconv/row_kernels.h"

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
};

}  // namespace QXTextureConverter
