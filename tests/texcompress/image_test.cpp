// The entry points: sizes, statuses, edges, mip levels, headers.
#include <gtest/gtest.h>

#include <cstring>

#include "codec_calls.h"
#include "texcompress/atitc_search.h"

namespace zorvan::texcompress {
namespace {

constexpr uint32_t kMasks[] = {0xFF, 0xFF00, 0xFF0000, 0xFF000000};
constexpr uint8_t kGuard = 0xA5;
constexpr uint32_t kUnknownFormat = 0xCCC40003;

uint32_t EncodeSize(uint32_t width, uint32_t height, uint32_t levels, uint32_t flags, uint32_t format) {
    uint32_t size = 1;
    EXPECT_EQ(TxCompressQueryEncodeBufferSize(width, height, levels, flags, format, &size), TXC_OK);
    return size;
}

TEST(Sizes, EncodedSizes) {
    struct Row {
        uint32_t width, height, levels, flags, format, size;
    };
    for (const Row& row : {
             Row{1, 1, 1, 0, TXC_FORMAT_ATC, 8},
             Row{1, 1, 1, 2, TXC_FORMAT_ATC, 16},
             Row{1, 1, 1, 18, TXC_FORMAT_ETC1, 16},
             Row{1, 1, 1, 1, TXC_FORMAT_ETC1, 8},
             Row{1, 1, 1, 2, TXC_FORMAT_ATI1N, 8},
             Row{1, 1, 1, 0, TXC_FORMAT_ATI2N, 16},
             Row{5, 3, 1, 0, TXC_FORMAT_ATC, 16},
             Row{5, 3, 0, 0, TXC_FORMAT_ATC, 0},
             Row{256, 64, 1, 0, TXC_FORMAT_ATC, 8192},
             // 16384 + 4096 + 1024 + 256 + 64 (16 x 4), 32 (8 x 4) and three of 4 x 4, half of all.
             Row{256, 64, 20, 0, TXC_FORMAT_ATC, (16384 + 4096 + 1024 + 256 + 64 + 32 + 3 * 16) / 2},
             Row{256, 64, 9, 2, TXC_FORMAT_ATC, 16384 + 4096 + 1024 + 256 + 64 + 32 + 3 * 16},
             Row{0, 0, 1, 0, TXC_FORMAT_ATC, 0},
             Row{0, 5, 1, 0, TXC_FORMAT_ATC, 16},
         }) {
        EXPECT_EQ(EncodeSize(row.width, row.height, row.levels, row.flags, row.format), row.size)
            << row.width << 'x' << row.height << ' ' << row.levels << ' ' << row.flags;
    }
    for (const uint32_t format : {TXC_FORMAT_ATC_LEGACY, kUnknownFormat, 0u}) {
        uint32_t size = 77;
        EXPECT_EQ(TxCompressQueryEncodeBufferSize(8, 8, 1, 0, format, &size), TXC_ERR_BAD_FORMAT);
        EXPECT_EQ(size, 0u);
    }
}

TEST(Sizes, DecodedSizes) {
    struct Row {
        uint32_t format, hasAlpha, size;
    };
    for (const Row& row :
         {Row{TXC_FORMAT_ATC, 0, 45}, Row{TXC_FORMAT_ATC, 7, 60}, Row{TXC_FORMAT_ETC1, 0, 45},
          Row{TXC_FORMAT_ETC1, 1, 60}, Row{TXC_FORMAT_ATI1N, 1, 45}, Row{TXC_FORMAT_ATI2N, 1, 45}}) {
        uint32_t size = 0;
        EXPECT_EQ(TxCompressQueryDecodeBufferSize(5, 3, row.format, row.hasAlpha, &size), TXC_OK);
        EXPECT_EQ(size, row.size) << std::hex << row.format;
    }
    uint32_t size = 77;
    EXPECT_EQ(TxCompressQueryDecodeBufferSize(5, 3, TXC_FORMAT_ATC_LEGACY, 1, &size), TXC_ERR_BAD_FORMAT);
    EXPECT_EQ(size, 0u);
}

/// An output buffer that shows whether it was written to.
struct GuardedOutput {
    std::array<uint8_t, 256> bytes;
    GuardedOutput() { bytes.fill(kGuard); }
    size_t Written() const {
        size_t end = bytes.size();
        while (end > 0 && bytes[end - 1] == kGuard) {
            --end;
        }
        return end;
    }
};

TEST(Statuses, EncodersCheckBeforeTheyWrite) {
    const TestImage image = CorpusImage(5, 3);
    struct Row {
        const char* name;
        uint32_t flags, format, capacity, txStatus, atiStatus;
    };
    for (const Row& row : {
             Row{"fits", 1, TXC_FORMAT_ATC, 16, TXC_OK, TXC_OK},
             Row{"one short", 1, TXC_FORMAT_ATC, 15, TXC_ERR_BUFFER_TOO_SMALL, TXC_ERR_BUFFER_TOO_SMALL},
             Row{"one short, alpha", 2, TXC_FORMAT_ATC, 31, TXC_ERR_BUFFER_TOO_SMALL,
                 TXC_ERR_BUFFER_TOO_SMALL},
             Row{"flags before format", 3, kUnknownFormat, 0, TXC_ERR_BAD_FLAGS, TXC_ERR_BAD_FLAGS},
             Row{"format before size", 0, kUnknownFormat, 0, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"legacy", 0, TXC_FORMAT_ATC_LEGACY, 16, TXC_ERR_BAD_FORMAT, TXC_OK},
             Row{"below the codes", 0, TXC_FORMAT_ATC_LEGACY - 1, 16, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"ETC1", 1, TXC_FORMAT_ETC1, 16, TXC_OK, TXC_ERR_BAD_FORMAT},
         }) {
        GuardedOutput output;
        uint32_t size = row.capacity;
        EXPECT_EQ(TxCompressEncode(image.pixels.data(), kMasks[0], kMasks[1], kMasks[2], kMasks[3], 5, 3, 20,
                                   row.flags, row.format, output.bytes.data(), &size),
                  row.txStatus)
            << row.name;
        EXPECT_EQ(size, row.capacity) << row.name;
        EXPECT_EQ(output.Written(), row.txStatus == TXC_OK ? 16u : 0u) << row.name;

        for (const auto encode :
             {ATI_TC_EncodeImage_Seperate_Header, ATI_TC_EncodeImageFast_Seperate_Header}) {
            GuardedOutput blocks;
            _ATITC_HEADER header{9, 9, 9, 9, 9};
            const uint32_t status = encode(image.pixels.data(), kMasks[0], kMasks[1], kMasks[2], kMasks[3], 5,
                                           3, 20, row.flags, row.format, &header, blocks.bytes.data(), &size);
            EXPECT_EQ(status == TXC_ERR_LOW_QUALITY ? TXC_OK : status, row.atiStatus) << row.name;
            EXPECT_EQ(size, row.capacity) << row.name;
            EXPECT_EQ(blocks.Written(), row.atiStatus == TXC_OK ? 16u : 0u) << row.name;
            EXPECT_EQ(header.nFormat, row.atiStatus == TXC_OK ? row.format : 9u) << row.name;
            EXPECT_EQ(header.nDataOffset, row.atiStatus == TXC_OK ? 20u : 9u) << row.name;
        }
    }
    GuardedOutput output;
    uint32_t size = 100;
    TxCompressEncode(image.pixels.data(), kMasks[0], kMasks[1], kMasks[2], kMasks[3], 5, 3, 20, 18,
                     TXC_FORMAT_ATC, output.bytes.data(), &size);
    EXPECT_EQ(size, 32u) << "a roomy capacity becomes the exact size";
}

TEST(Statuses, DecodersCheckBeforeTheyWrite) {
    const std::array<uint8_t, 64> blocks{};
    struct Row {
        const char* name;
        uint32_t format, flags, order, capacity, txStatus, atiStatus;
    };
    for (const Row& row : {
             Row{"fits", TXC_FORMAT_ATC, 1, 1, 45, TXC_OK, TXC_OK},
             Row{"flags 1 and 2 together", TXC_FORMAT_ATC, 3, 2, 60, TXC_OK, TXC_OK},
             Row{"one short", TXC_FORMAT_ATC, 0, 1, 44, TXC_ERR_BUFFER_TOO_SMALL, TXC_ERR_BUFFER_TOO_SMALL},
             Row{"one short, alpha", TXC_FORMAT_ATC, 2, 9, 59, TXC_ERR_BUFFER_TOO_SMALL,
                 TXC_ERR_BUFFER_TOO_SMALL},
             Row{"order 0", TXC_FORMAT_ATC, 0, 0, 45, TXC_ERR_BAD_ORDER, TXC_ERR_BAD_ORDER},
             Row{"order 3", TXC_FORMAT_ATC, 0, 3, 45, TXC_ERR_BAD_ORDER, TXC_ERR_BAD_ORDER},
             Row{"format first", kUnknownFormat, 0, 0, 0, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"legacy", TXC_FORMAT_ATC_LEGACY, 0, 1, 45, TXC_ERR_BAD_FORMAT, TXC_OK},
             Row{"ATI2N", TXC_FORMAT_ATI2N, 0, 1, 45, TXC_OK, TXC_ERR_BAD_FORMAT},
         }) {
        const size_t bytes = (row.flags & 2) != 0 ? 60 : 45;
        GuardedOutput output;
        EXPECT_EQ(TxCompressDecode(row.format, 5, 3, row.flags, blocks.data(), 0, row.order,
                                   output.bytes.data(), row.capacity),
                  row.txStatus)
            << row.name;
        EXPECT_EQ(output.Written(), row.txStatus == TXC_OK ? bytes : 0u) << row.name;

        GuardedOutput pixels;
        uint32_t size = row.capacity;
        const _ATITC_HEADER header{row.format, 5, 3, row.flags, 20};
        EXPECT_EQ(
            ATI_TC_DecodeImage_Seperate_Header(&header, blocks.data(), row.order, pixels.bytes.data(), &size),
            row.atiStatus)
            << row.name;
        EXPECT_EQ(pixels.Written(), row.atiStatus == TXC_OK ? bytes : 0u) << row.name;
        EXPECT_EQ(size, row.capacity) << row.name;
    }
}

TEST(Statuses, NullOutputAsksForTheSize) {
    for (const auto encode : {ATI_TC_EncodeImage_Seperate_Header, ATI_TC_EncodeImageFast_Seperate_Header}) {
        uint32_t size = 0;
        EXPECT_EQ(encode(nullptr, 0, 0, 0, 0, 5, 9, 0, 2, TXC_FORMAT_ATC, nullptr, nullptr, &size), TXC_OK);
        EXPECT_EQ(size, 2u * 3 * 16);
    }
    const _ATITC_HEADER header{TXC_FORMAT_ATC_LEGACY, 5, 9, 2, 20};
    uint32_t size = 0;
    EXPECT_EQ(ATI_TC_DecodeImage_Seperate_Header(&header, nullptr, 0, nullptr, &size), TXC_OK);
    EXPECT_EQ(size, 5u * 9 * 4);
}

TEST(Statuses, SizesThatWrapAreRefused) {
    // 65536 x 65536 with 16 bytes a block is 2^32 bytes, which wraps to 0; so do the others.
    struct Row {
        uint32_t width, height;
    };
    for (const Row& row : {Row{65536, 65536}, Row{0x40000000, 16}, Row{1, 0x7FFFFFFF}}) {
        uint8_t byte = kGuard;
        uint32_t size = 0;
        _ATITC_HEADER header{};
        EXPECT_EQ(
            TxCompressEncode(&byte, 0xFF, 0, 0, 0, row.width, row.height, 0, 2, TXC_FORMAT_ATC, &byte, &size),
            TXC_ERR_BUFFER_TOO_SMALL);
        size = 64;
        EXPECT_EQ(ATI_TC_EncodeImage_Seperate_Header(&byte, 0xFF, 0, 0, 0, row.width, row.height, 0, 2,
                                                     TXC_FORMAT_ATC, &header, &byte, &size),
                  TXC_ERR_BUFFER_TOO_SMALL);
        EXPECT_EQ(TxCompressDecode(TXC_FORMAT_ATC, row.width, row.height, 2, &byte, 0, 1, &byte, 0),
                  TXC_ERR_BUFFER_TOO_SMALL);
        header = {TXC_FORMAT_ATC, row.width, row.height, 2, 20};
        EXPECT_EQ(ATI_TC_DecodeImage_Seperate_Header(&header, &byte, 1, &byte, &size),
                  TXC_ERR_BUFFER_TOO_SMALL);
        EXPECT_EQ(byte, kGuard);
    }
    // Negative dimensions have no blocks.
    uint8_t byte = kGuard;
    uint32_t size = 8;
    _ATITC_HEADER header{};
    EXPECT_EQ(ATI_TC_EncodeImageFast_Seperate_Header(&byte, 0xFF, 0, 0, 0, 0xFFFFFFF9, 0xFFFFFFF9, 0, 0,
                                                     TXC_FORMAT_ATC, &header, &byte, &size),
              TXC_OK);
    EXPECT_EQ(byte, kGuard);
}

/// A tile, as an image, that the fast encoder codes with the given error.
TestImage FindTileWithError(uint32_t wanted) {
    Lcg random(wanted);
    for (;;) {
        TestImage image{"tile", 4, 4, std::vector<uint8_t>(64)};
        const uint32_t contrast = 8 + random.Next(80);
        RgbTile tile;
        for (uint32_t k = 0; k < 16; ++k) {
            const auto value = [&] { return static_cast<uint8_t>(128 + random.Next(contrast)); };
            tile[k] = {value(), value(), value()};
            std::memcpy(&image.pixels[4 * k], &tile[k], 3);
        }
        uint32_t color0;
        uint32_t color1;
        uint32_t error;
        EncodeRGBBlockFast(tile, &color0, &color1, TXC_FORMAT_ATC, &error);
        if (error == wanted) {
            return image;
        }
    }
}

TEST(Statuses, FastEncoderReportsLowQuality) {
    // The errors of one tile and the number of tiles in the image, the others black and without error.
    struct Row {
        uint32_t error, tiles, status;
    };
    for (const Row& row :
         {Row{249, 1, TXC_OK}, Row{250, 1, TXC_ERR_LOW_QUALITY}, Row{499, 2, TXC_OK},
          Row{500, 2, TXC_ERR_LOW_QUALITY}, Row{3699, 20, TXC_OK}, Row{3700, 20, TXC_ERR_LOW_QUALITY}}) {
        TestImage image = FindTileWithError(row.error);
        image.height *= row.tiles;
        image.pixels.resize(64 * row.tiles);
        uint32_t status;
        Encode(kEncoderCases[1], image, status);
        EXPECT_EQ(status, row.status) << row.error << ' ' << row.tiles;
    }
}

TEST(Images, PartialBlocksRepeatTheLastColumnAndRow) {
    for (uint32_t width = 1; width <= 9; ++width) {
        for (uint32_t height = 1; height <= 5; ++height) {
            const TestImage image = CorpusImage(width, height);
            TestImage padded{"padded", (width + 3) / 4 * 4, (height + 3) / 4 * 4, {}};
            for (uint32_t y = 0; y < padded.height; ++y) {
                for (uint32_t x = 0; x < padded.width; ++x) {
                    const uint8_t* pixel =
                        &image.pixels[4 * (std::min(y, height - 1) * width + std::min(x, width - 1))];
                    padded.pixels.insert(padded.pixels.end(), pixel, pixel + 4);
                }
            }
            for (const EncoderCase& encoder : kEncoderCases) {
                uint32_t status;
                const std::vector<uint8_t> blocks = Encode(encoder, image, status);
                ASSERT_EQ(blocks, Encode(encoder, padded, status))
                    << encoder.name << ' ' << width << 'x' << height;
                const std::vector<uint8_t> cropped = Decode(encoder, image, blocks);
                const std::vector<uint8_t> whole = Decode(encoder, padded, blocks);
                const size_t bytes = cropped.size() / (width * height);
                for (uint32_t y = 0; y < height; ++y) {
                    ASSERT_TRUE(std::equal(&cropped[y * width * bytes],
                                           &cropped[y * width * bytes] + width * bytes,
                                           &whole[y * padded.width * bytes]))
                        << encoder.name << ' ' << width << 'x' << height;
                }
            }
        }
    }
}

TEST(Images, MipLevelsLieBackToBack) {
    for (const EncoderCase& encoder : kEncoderCases) {
        if (encoder.entry != EncoderCase::Entry::kTxCompress) {
            continue;
        }
        std::vector<uint8_t> chain;
        std::vector<std::vector<uint8_t>> levels;
        for (uint32_t level = 0; level < 6; ++level) {
            const TestImage image = CorpusImage(std::max(1u, 21u >> level), std::max(1u, 9u >> level));
            uint32_t status;
            const std::vector<uint8_t> blocks = Encode(encoder, image, status);
            // A level beyond the chain's five has one pixel and follows the last.
            EXPECT_EQ(EncodeSize(21, 9, level, encoder.flags, encoder.format), chain.size());
            chain.insert(chain.end(), blocks.begin(), blocks.end());
            levels.push_back(Decode(encoder, image, blocks));
        }
        for (const uint32_t level : {0u, 1u, 2u, 3u, 4u, 5u, 31u, 32u, 0xFFFFFFFFu}) {
            const std::vector<uint8_t>& expected = levels[std::min(level, 5u)];
            std::vector<uint8_t> pixels(expected.size());
            const std::array<uint32_t, 4> record = {encoder.format, 21, 9, encoder.flags};
            EXPECT_EQ(TxCompressDecodeFileData(record.data(), chain.data(), level, TXC_ORDER_RGB,
                                               pixels.data(), static_cast<uint32_t>(pixels.size())),
                      TXC_OK);
            EXPECT_EQ(pixels, expected) << encoder.name << ' ' << level;
        }
    }
}

TEST(Images, OrderSwapsTheFirstAndThirdByte) {
    const TestImage image = CorpusImage(6, 6);
    for (const EncoderCase& encoder : kEncoderCases) {
        uint32_t status;
        const std::vector<uint8_t> blocks = Encode(encoder, image, status);
        std::vector<uint8_t> rgb = Decode(encoder, image, blocks);
        std::vector<uint8_t> bgr(rgb.size());
        auto size = static_cast<uint32_t>(bgr.size());
        if (encoder.entry == EncoderCase::Entry::kTxCompress) {
            TxCompressDecode(encoder.format, 6, 6, encoder.flags, blocks.data(), 0, TXC_ORDER_BGR, bgr.data(),
                             size);
        } else {
            const _ATITC_HEADER header{encoder.format, 6, 6, encoder.flags, 20};
            ATI_TC_DecodeImage_Seperate_Header(&header, blocks.data(), TXC_ORDER_BGR, bgr.data(), &size);
        }
        for (size_t i = 0; i < rgb.size(); i += rgb.size() / 36) {
            std::swap(rgb[i], rgb[i + 2]);
        }
        EXPECT_EQ(bgr, rgb) << encoder.name;
    }
}

TEST(Images, ThreeDcIgnoresAlpha) {
    const TestImage image = CorpusImage(8, 8);
    for (const uint32_t format : {TXC_FORMAT_ATI1N, TXC_FORMAT_ATI2N}) {
        const EncoderCase plain{"plain", EncoderCase::Entry::kTxCompress, format, 0, ""};
        const EncoderCase alpha{"alpha", EncoderCase::Entry::kTxCompress, format, 18, ""};
        uint32_t status;
        std::vector<uint8_t> blocks = Encode(alpha, image, status);
        blocks.resize(format == TXC_FORMAT_ATI1N ? 32 : 64);
        EXPECT_EQ(blocks, Encode(plain, image, status));
        const std::vector<uint8_t> rgb = Decode(plain, image, blocks);
        const std::vector<uint8_t> rgba = Decode(alpha, image, blocks);
        for (size_t i = 0; i < 64; ++i) {
            ASSERT_TRUE(std::equal(&rgb[3 * i], &rgb[3 * i] + 3, &rgba[4 * i]));
            ASSERT_EQ(rgba[4 * i + 3], 0);
            ASSERT_EQ(rgb[3 * i + 2], format == TXC_FORMAT_ATI1N ? rgb[3 * i] : 255);
        }
    }
}

TEST(Images, OneBufferFormUsesTheWordEightyBytesBefore) {
    const TestImage image = CorpusImage(5, 3);
    const EncoderCase encoder{"", EncoderCase::Entry::kAtiTc, TXC_FORMAT_ATC, 2, ""};
    uint32_t status;
    const std::vector<uint8_t> expected = Encode(encoder, image, status);
    for (const uint32_t capacity : {32u, 31u}) {
        std::array<uint32_t, 48> words;
        words.fill(7);
        uint32_t* sizeWord = &words[30];
        words[10] = capacity;
        std::vector<uint8_t> buffer(1 + 20 + 32, kGuard);
        uint8_t* unaligned = buffer.data() + 1;
        EXPECT_EQ(ATI_TC_EncodeImage(image.pixels.data(), kMasks[0], kMasks[1], kMasks[2], kMasks[3], 5, 3,
                                     20, 2, TXC_FORMAT_ATC, unaligned, sizeWord),
                  capacity == 32 ? TXC_OK : TXC_ERR_BUFFER_TOO_SMALL);
        EXPECT_EQ(words[10], capacity + 20) << "grows whatever the status";
        EXPECT_EQ(std::count(words.begin(), words.end(), 7u), 47) << "no other word changes";
        if (capacity == 31) {
            EXPECT_EQ(std::count(buffer.begin(), buffer.end(), kGuard), 53);
            continue;
        }
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), unaligned + 20));
        uint32_t size = 60;
        std::vector<uint8_t> pixels(size);
        EXPECT_EQ(ATI_TC_DecodeImage(unaligned, TXC_ORDER_RGB, pixels.data(), &size), TXC_OK);
        EXPECT_EQ(pixels, Decode(encoder, image, expected));

        // The blocks are found where nDataOffset says.
        buffer.insert(buffer.begin() + 21, 3, kGuard);
        buffer[1 + 16] = 23;
        std::vector<uint8_t> again(size);
        EXPECT_EQ(ATI_TC_DecodeImage(buffer.data() + 1, TXC_ORDER_RGB, again.data(), &size), TXC_OK);
        EXPECT_EQ(again, pixels);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
