// The codec interface on vectors, for tests and benchmarks: one row per encoder.
#ifndef ZORVAN_TESTS_TEXCOMPRESS_CODEC_CALLS_H
#define ZORVAN_TESTS_TEXCOMPRESS_CODEC_CALLS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "test_images.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {

/// One way to encode an image.
struct EncoderCase {
    enum class Entry { kTxCompress, kAtiTc, kAtiTcFast };
    const char* name;
    Entry entry;
    uint32_t format, flags;
    const char* channels;  ///< those that the format keeps
};

inline constexpr std::array kEncoderCases = {
    EncoderCase{"ATC", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ATC, 0, "RGB"},
    EncoderCase{"ATC fast", EncoderCase::Entry::kAtiTcFast, TXC_FORMAT_ATC, 1, "RGB"},
    EncoderCase{"ATC explicit alpha", EncoderCase::Entry::kAtiTc, TXC_FORMAT_ATC, 2, "RGBA"},
    EncoderCase{"ATC explicit alpha fast", EncoderCase::Entry::kAtiTcFast, TXC_FORMAT_ATC, 2, "RGBA"},
    EncoderCase{"ATC interpolated alpha", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ATC, 18, "RGBA"},
    EncoderCase{"ATC legacy", EncoderCase::Entry::kAtiTc, TXC_FORMAT_ATC_LEGACY, 1, "RGB"},
    EncoderCase{"ATC legacy fast", EncoderCase::Entry::kAtiTcFast, TXC_FORMAT_ATC_LEGACY, 1, "RGB"},
    EncoderCase{"ETC1", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ETC1, 0, "RGB"},
    EncoderCase{"ETC1 explicit alpha", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ETC1, 2, "RGBA"},
    EncoderCase{"ATI1N", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ATI1N, 0, "R"},
    EncoderCase{"ATI2N", EncoderCase::Entry::kTxCompress, TXC_FORMAT_ATI2N, 0, "RG"},
};

/// Room for an image's blocks.
inline std::vector<uint8_t> MakeBlocks(const EncoderCase& encoder, const TestImage& image) {
    const uint32_t blockBytes = (encoder.flags & 2) != 0 || encoder.format == TXC_FORMAT_ATI2N ? 16 : 8;
    return std::vector<uint8_t>(size_t{(image.width + 3) / 4} * ((image.height + 3) / 4) * blockBytes);
}

/// Room for decoded pixels: 3 bytes each, or 4 with alpha.
inline std::vector<uint8_t> MakePixels(const EncoderCase& encoder, const TestImage& image) {
    return std::vector<uint8_t>(size_t{image.width} * image.height * ((encoder.flags & 2) != 0 ? 4 : 3));
}

/// Encodes an image of R, G, B, A bytes into blocks of MakeBlocks. Returns the encoder's status.
inline uint32_t Encode(const EncoderCase& encoder, const TestImage& image, std::vector<uint8_t>& blocks) {
    using Entry = EncoderCase::Entry;
    auto size = static_cast<uint32_t>(blocks.size());
    if (encoder.entry == Entry::kTxCompress) {
        return TxCompressEncode(image.pixels.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, image.width,
                                image.height, 4 * image.width, encoder.flags, encoder.format, blocks.data(),
                                &size);
    }
    _ATITC_HEADER header;
    const auto encode = encoder.entry == Entry::kAtiTcFast ? ATI_TC_EncodeImageFast_Seperate_Header
                                                           : ATI_TC_EncodeImage_Seperate_Header;
    return encode(image.pixels.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, image.width, image.height,
                  4 * image.width, encoder.flags, encoder.format, &header, blocks.data(), &size);
}

/// Encodes an image of R, G, B, A bytes. Returns its blocks; status receives the encoder's status.
inline std::vector<uint8_t> Encode(const EncoderCase& encoder, const TestImage& image, uint32_t& status) {
    std::vector<uint8_t> blocks = MakeBlocks(encoder, image);
    status = Encode(encoder, image, blocks);
    return blocks;
}

/// Decodes blocks into packed pixels of MakePixels.
inline void Decode(const EncoderCase& encoder, const TestImage& image, const std::vector<uint8_t>& blocks,
                   std::vector<uint8_t>& pixels) {
    auto size = static_cast<uint32_t>(pixels.size());
    if (encoder.entry == EncoderCase::Entry::kTxCompress) {
        TxCompressDecode(encoder.format, image.width, image.height, encoder.flags, blocks.data(), 0,
                         TXC_ORDER_RGB, pixels.data(), size);
    } else {
        const _ATITC_HEADER header{encoder.format, image.width, image.height, encoder.flags, 20};
        ATI_TC_DecodeImage_Seperate_Header(&header, blocks.data(), TXC_ORDER_RGB, pixels.data(), &size);
    }
}

/// Decodes blocks to packed pixels.
inline std::vector<uint8_t> Decode(const EncoderCase& encoder, const TestImage& image,
                                   const std::vector<uint8_t>& blocks) {
    std::vector<uint8_t> pixels = MakePixels(encoder, image);
    Decode(encoder, image, blocks, pixels);
    return pixels;
}

}  // namespace zorvan::texcompress

#endif  // ZORVAN_TESTS_TEXCOMPRESS_CODEC_CALLS_H
