// Source pixels of other layouts than four bytes R, G, B, A.
#include <gtest/gtest.h>

#include "codec_calls.h"

namespace zorvan::texcompress {
namespace {

struct PixelLayout {
    const char* name;
    uint32_t bytes;
    uint32_t maskR, maskG, maskB, maskA;
};

constexpr std::array kLayouts = {
    PixelLayout{"RGB565", 2, 0xF800, 0x07E0, 0x001F, 0},
    PixelLayout{"RGBA4444", 2, 0xF000, 0x0F00, 0x00F0, 0x000F},
    PixelLayout{"RGBA5551", 2, 0xF800, 0x07C0, 0x003E, 0x0001},
    PixelLayout{"RG88", 2, 0x00FF, 0xFF00, 0, 0},
    PixelLayout{"BGR888", 3, 0xFF0000, 0x00FF00, 0x0000FF, 0},
    PixelLayout{"RGBA2648", 3, 0x000003, 0x0000FC, 0x000F00, 0xFF000},
    PixelLayout{"BGRA8888", 4, 0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000},
    PixelLayout{"RGBA wide", 4, 0x000001FF, 0x0007FE00, 0x07F80000, 0x18000000},
};

constexpr uint32_t kWidth = 6;
constexpr uint32_t kHeight = 5;

/// A channel's 8-bit value, computed bit by bit: bit 7 - i is bit (top - i) of the channel, which is
/// repeated once below itself.
uint8_t Widened(uint32_t word, uint32_t mask) {
    std::vector<bool> bits;
    for (uint32_t bit = 32; bit-- > 0;) {
        if ((mask >> bit & 1) != 0) {
            bits.push_back((word >> bit & 1) != 0);
        }
    }
    uint32_t value = 0;
    for (uint32_t i = 0; i < 8 && bits.size() <= 8 && i < 2 * bits.size(); ++i) {
        value |= static_cast<uint32_t>(bits[i % bits.size()]) << (7 - i);
    }
    return static_cast<uint8_t>(value);
}

/// Alpha as the encoders take it from masks of 0, 1, 4 and 8 bits; 0 for all others.
uint8_t WidenedAlpha(uint32_t word, uint32_t mask) {
    const uint32_t bits = static_cast<uint32_t>(std::popcount(mask));
    const bool known = bits == 1 || bits == 4 || bits == 8;
    return bits == 0 ? 255 : bits == 1 ? ((word & mask) != 0 ? 255 : 0) : known ? Widened(word, mask) : 0;
}

/// An allocation that ends with the last pixel, so that AddressSanitizer sees any read beyond it.
std::vector<uint8_t> MakeSource(const PixelLayout& layout, uint32_t pitch, uint32_t seed) {
    std::vector<uint8_t> source((kHeight - 1) * pitch + kWidth * layout.bytes);
    Lcg random(seed);
    for (uint8_t& byte : source) {
        byte = static_cast<uint8_t>(random.Next(256));
    }
    return source;
}

TestImage WidenedImage(const PixelLayout& layout, const std::vector<uint8_t>& source, uint32_t pitch) {
    TestImage image{layout.name, kWidth, kHeight, {}};
    for (uint32_t y = 0; y < kHeight; ++y) {
        for (uint32_t x = 0; x < kWidth; ++x) {
            uint32_t word = 0;
            for (uint32_t i = layout.bytes; i-- > 0;) {
                word = word << 8 | source[y * pitch + x * layout.bytes + i];
            }
            for (const uint32_t mask : {layout.maskR, layout.maskG, layout.maskB}) {
                image.pixels.push_back(Widened(word, mask));
            }
            image.pixels.push_back(WidenedAlpha(word, layout.maskA));
        }
    }
    return image;
}

TEST(SourcePixels, OtherLayoutsEncodeAsTheirWidenedPixels) {
    for (const PixelLayout& layout : kLayouts) {
        const uint32_t pitch = kWidth * layout.bytes + 7;
        const std::vector<uint8_t> source = MakeSource(layout, pitch, layout.maskR);
        const TestImage widened = WidenedImage(layout, source, pitch);
        for (const EncoderCase& encoder : kEncoderCases) {
            uint32_t status;
            const std::vector<uint8_t> expected = Encode(encoder, widened, status);
            std::vector<uint8_t> blocks(expected.size());
            auto size = static_cast<uint32_t>(blocks.size());
            _ATITC_HEADER header;
            if (encoder.entry == EncoderCase::Entry::kTxCompress) {
                TxCompressEncode(source.data(), layout.maskR, layout.maskG, layout.maskB, layout.maskA,
                                 kWidth, kHeight, pitch, encoder.flags, encoder.format, blocks.data(), &size);
            } else {
                const auto encode = encoder.entry == EncoderCase::Entry::kAtiTc
                                        ? ATI_TC_EncodeImage_Seperate_Header
                                        : ATI_TC_EncodeImageFast_Seperate_Header;
                encode(source.data(), layout.maskR, layout.maskG, layout.maskB, layout.maskA, kWidth, kHeight,
                       pitch, encoder.flags, encoder.format, &header, blocks.data(), &size);
            }
            EXPECT_EQ(blocks, expected) << layout.name << ' ' << encoder.name;
        }
    }
}

TEST(SourcePixels, FastEncoderReadsOneByteAndWidePixelsAsZero) {
    const TestImage black{"black", 4, 4, std::vector<uint8_t>(64)};
    uint32_t status;
    const std::vector<uint8_t> expected = Encode(kEncoderCases[1], black, status);
    const std::vector<uint8_t> white(16 * 6, 0xFF);
    for (const uint32_t shared : {0u, 0xFFFFFFFFu}) {
        std::vector<uint8_t> blocks(8);
        uint32_t size = 8;
        _ATITC_HEADER header;
        ATI_TC_EncodeImageFast_Seperate_Header(white.data(), 0xFF, shared, 0, 0, 4, 4, 4, 1, TXC_FORMAT_ATC,
                                               &header, blocks.data(), &size);
        EXPECT_EQ(blocks, expected);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
