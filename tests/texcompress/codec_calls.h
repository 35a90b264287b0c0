// The codec interface with one call for all encoders and one for all decoders, for tests and benchmarks.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "test_images.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {

enum class Entry { kTxCompress, kAtiTc, kAtiTcFast };

// One way to encode an image and to decode it again.
struct Codec {
    Entry entry;
    uint32_t format, flags;
    const char* name = "";
    const char* channels = "";  // those that the format keeps

    bool HasAlpha() const { return (flags & TXC_FLAG_ALPHA) != 0; }
    uint32_t PixelBytes() const { return HasAlpha() ? 4 : 3; }
    uint32_t BlockBytes(uint32_t width, uint32_t height) const {
        const bool one = format == TXC_FORMAT_ATI1N || (format != TXC_FORMAT_ATI2N && !HasAlpha());
        return (width + 3) / 4 * ((height + 3) / 4) * (one ? 8 : 16);
    }
};

inline constexpr std::array kCodecs = {
    Codec{Entry::kTxCompress, TXC_FORMAT_ATC, 0, "ATC", "RGB"},
    Codec{Entry::kAtiTcFast, TXC_FORMAT_ATC, 1, "ATC fast", "RGB"},
    Codec{Entry::kAtiTc, TXC_FORMAT_ATC, 2, "ATC explicit alpha", "RGBA"},
    Codec{Entry::kAtiTcFast, TXC_FORMAT_ATC, 2, "ATC explicit alpha fast", "RGBA"},
    Codec{Entry::kTxCompress, TXC_FORMAT_ATC, 18, "ATC interpolated alpha", "RGBA"},
    Codec{Entry::kAtiTc, TXC_FORMAT_ATC_LEGACY, 1, "ATC legacy", "RGB"},
    Codec{Entry::kAtiTcFast, TXC_FORMAT_ATC_LEGACY, 1, "ATC legacy fast", "RGB"},
    Codec{Entry::kTxCompress, TXC_FORMAT_ETC1, 0, "ETC1", "RGB"},
    Codec{Entry::kTxCompress, TXC_FORMAT_ETC1, 2, "ETC1 explicit alpha", "RGBA"},
    Codec{Entry::kTxCompress, TXC_FORMAT_ATI1N, 0, "ATI1N", "R"},
    Codec{Entry::kTxCompress, TXC_FORMAT_ATI2N, 0, "ATI2N", "RG"},
};

// What an encoder reads.
struct Source {
    const void* pixels;
    uint32_t width, height, pitch;
    std::array<uint32_t, 4> masks = {0xFF, 0xFF00, 0xFF0000, 0xFF000000};
};

inline Source SourceOf(const TestImage& image) {
    return {image.pixels.data(), image.width, image.height, 4 * image.width};
}

// Calls a codec's encoder and returns its status. header is for those that write one.
inline uint32_t Encode(const Codec& codec, const Source& source, void* blocks, uint32_t* size,
                       _ATITC_HEADER* header) {
    const auto& [pixels, width, height, pitch, masks] = source;
    if (codec.entry == Entry::kTxCompress) {
        return TxCompressEncode(pixels, masks[0], masks[1], masks[2], masks[3], width, height, pitch,
                                codec.flags, codec.format, blocks, size);
    }
    const auto encode = codec.entry == Entry::kAtiTcFast ? ATI_TC_EncodeImageFast_Seperate_Header
                                                         : ATI_TC_EncodeImage_Seperate_Header;
    return encode(pixels, masks[0], masks[1], masks[2], masks[3], width, height, pitch, codec.flags,
                  codec.format, header, blocks, size);
}

// Calls a codec's decoder and returns its status.
inline uint32_t Decode(const Codec& codec, uint32_t width, uint32_t height, const void* blocks,
                       uint32_t order, void* pixels, uint32_t* size) {
    if (codec.entry == Entry::kTxCompress) {
        return TxCompressDecode(codec.format, width, height, codec.flags, blocks, 0, order, pixels, *size);
    }
    const _ATITC_HEADER header{codec.format, width, height, codec.flags, 20};
    return ATI_TC_DecodeImage_Seperate_Header(&header, blocks, order, pixels, size);
}

// The image's blocks.
inline std::vector<uint8_t> Encode(const Codec& codec, const Source& source) {
    std::vector<uint8_t> blocks(codec.BlockBytes(source.width, source.height));
    auto size = static_cast<uint32_t>(blocks.size());
    _ATITC_HEADER header;
    Encode(codec, source, blocks.data(), &size, &header);
    return blocks;
}

// The packed pixels of an image's blocks.
inline std::vector<uint8_t> Decode(const Codec& codec, uint32_t width, uint32_t height,
                                   const std::vector<uint8_t>& blocks, uint32_t order = TXC_ORDER_RGB) {
    std::vector<uint8_t> pixels(size_t{width} * height * codec.PixelBytes());
    auto size = static_cast<uint32_t>(pixels.size());
    Decode(codec, width, height, blocks.data(), order, pixels.data(), &size);
    return pixels;
}

}  // namespace zorvan::texcompress
