// The entry points: sizes, statuses, edges, mip levels, headers.
#include <gtest/gtest.h>

#include "codec_calls.h"
#include "texcompress/atitc_search.h"

namespace zorvan::texcompress {
namespace {

constexpr uint8_t kGuard = 0xA5;
constexpr uint32_t kUnknownFormat = 0xCCC40003;
constexpr uint32_t kSmall = TXC_ERR_BUFFER_TOO_SMALL;
constexpr std::array kEntries = {Entry::kTxCompress, Entry::kAtiTc, Entry::kAtiTcFast};

TEST(Sizes, OfBlocks) {
    // Levels of 256 x 64: 16384 + 4096 + 1024 + 256 + 64 pixels, then 32 (8 x 4) and three of 4 x 4.
    constexpr uint32_t kChain = 16384 + 4096 + 1024 + 256 + 64 + 32 + 3 * 16;
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
             Row{256, 64, 20, 0, TXC_FORMAT_ATC, kChain / 2},
             Row{256, 64, 9, 2, TXC_FORMAT_ATC, kChain},
             Row{0, 0, 1, 0, TXC_FORMAT_ATC, 0},
             Row{0, 5, 1, 0, TXC_FORMAT_ATC, 16},
         }) {
        uint32_t size = 1;
        EXPECT_EQ(
            TxCompressQueryEncodeBufferSize(row.width, row.height, row.levels, row.flags, row.format, &size),
            TXC_OK);
        EXPECT_EQ(size, row.size) << row.width << 'x' << row.height << ' ' << row.levels << ' ' << row.flags;
    }
}

TEST(Sizes, OfPixels) {
    for (const auto& [format, opaque, alpha] : {std::tuple{TXC_FORMAT_ATC, 45u, 60u},
                                                {TXC_FORMAT_ETC1, 45u, 60u},
                                                {TXC_FORMAT_ATI1N, 45u, 45u},
                                                {TXC_FORMAT_ATI2N, 45u, 45u}}) {
        for (const uint32_t hasAlpha : {0u, 1u, 7u}) {
            uint32_t size = 0;
            EXPECT_EQ(TxCompressQueryDecodeBufferSize(5, 3, format, hasAlpha, &size), TXC_OK);
            EXPECT_EQ(size, hasAlpha == 0 ? opaque : alpha) << std::hex << format;
        }
    }
    for (const uint32_t format : {TXC_FORMAT_ATC_LEGACY, kUnknownFormat, 0u}) {
        uint32_t sizes[2] = {77, 77};
        EXPECT_EQ(TxCompressQueryEncodeBufferSize(8, 8, 1, 0, format, &sizes[0]), TXC_ERR_BAD_FORMAT);
        EXPECT_EQ(TxCompressQueryDecodeBufferSize(8, 8, format, 1, &sizes[1]), TXC_ERR_BAD_FORMAT);
        EXPECT_EQ(sizes[0] + sizes[1], 0u) << "unknown formats have size 0";
    }
}

TEST(Sizes, AreTheAnswerToANullOutput) {
    for (const Entry entry : {Entry::kAtiTc, Entry::kAtiTcFast}) {
        const Codec codec{entry, TXC_FORMAT_ATC_LEGACY, 2};
        uint32_t size = 0;
        EXPECT_EQ(Encode(codec, {nullptr, 5, 9, 0}, nullptr, &size, nullptr), TXC_OK);
        EXPECT_EQ(size, 2u * 3 * 16);
        EXPECT_EQ(Decode(codec, 5, 9, nullptr, 0, nullptr, &size), TXC_OK);
        EXPECT_EQ(size, 5u * 9 * 4);
        const Codec unknown{entry, kUnknownFormat, 2};
        EXPECT_EQ(Encode(unknown, {nullptr, 5, 9, 0}, nullptr, &size, nullptr), TXC_ERR_BAD_FORMAT);
        EXPECT_EQ(Decode(unknown, 5, 9, nullptr, 0, nullptr, &size), TXC_ERR_BAD_FORMAT);
    }
}

// An output that shows how much of it was written.
struct GuardedOutput {
    std::array<uint8_t, 128> bytes;
    GuardedOutput() { bytes.fill(kGuard); }
    size_t Written() const {
        const auto end = std::find_if(bytes.rbegin(), bytes.rend(), [](uint8_t b) { return b != kGuard; });
        return static_cast<size_t>(bytes.rend() - end);
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
             Row{"roomy", 18, TXC_FORMAT_ATC, 100, TXC_OK, TXC_OK},
             Row{"one short", 1, TXC_FORMAT_ATC, 15, kSmall, kSmall},
             Row{"one short, alpha", 2, TXC_FORMAT_ATC, 31, kSmall, kSmall},
             Row{"flags before format", 3, kUnknownFormat, 0, TXC_ERR_BAD_FLAGS, TXC_ERR_BAD_FLAGS},
             Row{"format before size", 0, kUnknownFormat, 0, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"legacy", 0, TXC_FORMAT_ATC_LEGACY, 16, TXC_ERR_BAD_FORMAT, TXC_OK},
             Row{"below the codes", 0, TXC_FORMAT_ATC_LEGACY - 1, 16, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"ETC1", 1, TXC_FORMAT_ETC1, 16, TXC_OK, TXC_ERR_BAD_FORMAT},
         }) {
        for (const Entry entry : kEntries) {
            const Codec codec{entry, row.format, row.flags};
            const bool tx = entry == Entry::kTxCompress;
            const uint32_t expected = tx ? row.txStatus : row.atiStatus;
            const bool written = expected == TXC_OK;
            GuardedOutput blocks;
            _ATITC_HEADER header{9, 9, 9, 9, 9};
            uint32_t size = row.capacity;
            const uint32_t status = Encode(codec, SourceOf(image), blocks.bytes.data(), &size, &header);
            SCOPED_TRACE(row.name);
            EXPECT_EQ(status == TXC_ERR_LOW_QUALITY ? TXC_OK : status, expected);
            EXPECT_EQ(blocks.Written(), written ? codec.BlockBytes(5, 3) : 0u);
            EXPECT_EQ(size, tx && written ? codec.BlockBytes(5, 3) : row.capacity);
            const auto field = [&](uint32_t value) { return !tx && written ? value : 9; };
            const auto& [format, width, height, flags, dataOffset] = header;
            EXPECT_EQ((std::array{format, width, height, flags, dataOffset}),
                      (std::array{field(row.format), field(5), field(3), field(row.flags), field(20)}));
        }
    }
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
             Row{"one short", TXC_FORMAT_ATC, 0, 1, 44, kSmall, kSmall},
             Row{"size before order", TXC_FORMAT_ATC, 2, 9, 59, kSmall, kSmall},
             Row{"order 0", TXC_FORMAT_ATC, 0, 0, 45, TXC_ERR_BAD_ORDER, TXC_ERR_BAD_ORDER},
             Row{"order 3", TXC_FORMAT_ATC, 0, 3, 45, TXC_ERR_BAD_ORDER, TXC_ERR_BAD_ORDER},
             Row{"format first", kUnknownFormat, 0, 0, 0, TXC_ERR_BAD_FORMAT, TXC_ERR_BAD_FORMAT},
             Row{"legacy", TXC_FORMAT_ATC_LEGACY, 0, 1, 45, TXC_ERR_BAD_FORMAT, TXC_OK},
             Row{"ATI2N", TXC_FORMAT_ATI2N, 0, 1, 45, TXC_OK, TXC_ERR_BAD_FORMAT},
         }) {
        for (const Entry entry : {Entry::kTxCompress, Entry::kAtiTc}) {
            const Codec codec{entry, row.format, row.flags};
            const uint32_t status = entry == Entry::kTxCompress ? row.txStatus : row.atiStatus;
            GuardedOutput pixels;
            uint32_t size = row.capacity;
            EXPECT_EQ(Decode(codec, 5, 3, blocks.data(), row.order, pixels.bytes.data(), &size), status)
                << row.name;
            EXPECT_EQ(pixels.Written(), status == TXC_OK ? 15 * codec.PixelBytes() : 0u) << row.name;
            EXPECT_EQ(size, row.capacity) << row.name;
        }
    }
}

TEST(Statuses, SizesThatWrapAreRefused) {
    // With 16 bytes a block, each of these comes to 0 modulo 2^32, or to 64 where that is the capacity.
    uint8_t byte = kGuard;
    for (const auto& [width, height] : {std::pair{65536u, 65536u}, {0x40000000u, 16u}, {1u, 0x7FFFFFFFu}}) {
        for (const Entry entry : {Entry::kTxCompress, Entry::kAtiTc}) {
            const Codec codec{entry, TXC_FORMAT_ATC, 2};
            _ATITC_HEADER header{};
            uint32_t size = entry == Entry::kTxCompress ? 0 : 64;
            EXPECT_EQ(Encode(codec, {&byte, width, height, 0}, &byte, &size, &header),
                      TXC_ERR_BUFFER_TOO_SMALL);
            EXPECT_EQ(Decode(codec, width, height, &byte, 1, &byte, &size), TXC_ERR_BUFFER_TOO_SMALL);
        }
    }
    // Negative dimensions have no blocks.
    uint32_t size = 8;
    _ATITC_HEADER header{};
    const Codec fast{Entry::kAtiTcFast, TXC_FORMAT_ATC, 0};
    EXPECT_EQ(Encode(fast, {&byte, 0xFFFFFFF9, 0xFFFFFFF9, 0}, &byte, &size, &header), TXC_OK);
    EXPECT_EQ(byte, kGuard);
}

// An image of a tile that the fast encoder codes with the given error, above black ones without error.
TestImage TileWithError(uint32_t wanted, uint32_t tiles) {
    TestImage image{4, 4 * tiles, std::vector<uint8_t>(size_t{64} * tiles)};
    uint32_t error = 0;
    for (Lcg random(wanted); error != wanted;) {
        const uint32_t contrast = 8 + random.Next(80);
        RgbTile tile;
        for (uint32_t k = 0; k < 16; ++k) {
            for (size_t c = 0; c < 3; ++c) {
                image.pixels[4 * k + c] = static_cast<uint8_t>(128 + random.Next(contrast));
            }
            tile[k] = {image.pixels[4 * k], image.pixels[4 * k + 1], image.pixels[4 * k + 2]};
        }
        uint32_t color0, color1;
        EncodeRGBBlockFast(tile, &color0, &color1, TXC_FORMAT_ATC, &error);
    }
    return image;
}

TEST(Statuses, FastEncoderReportsLowQuality) {
    const Codec fast{Entry::kAtiTcFast, TXC_FORMAT_ATC, 1};
    for (const auto& [error, tiles, status] : {std::tuple{249u, 1u, TXC_OK},
                                               {250u, 1u, TXC_ERR_LOW_QUALITY},
                                               {499u, 2u, TXC_OK},
                                               {500u, 2u, TXC_ERR_LOW_QUALITY},
                                               {3699u, 20u, TXC_OK},
                                               {3700u, 20u, TXC_ERR_LOW_QUALITY}}) {
        std::vector<uint8_t> blocks(size_t{8} * tiles);
        auto size = static_cast<uint32_t>(blocks.size());
        _ATITC_HEADER header;
        const TestImage image = TileWithError(error, tiles);
        EXPECT_EQ(Encode(fast, SourceOf(image), blocks.data(), &size, &header), status) << error;
    }
}

TEST(Images, PartialBlocksAreCropped) {
    for (const Codec& codec : kCodecs) {
        const std::vector<uint8_t> blocks = Encode(codec, SourceOf(CorpusImage(12, 8)));
        const std::vector<uint8_t> whole = Decode(codec, 12, 8, blocks);
        for (uint32_t i = 0; i < 16; ++i) {
            const std::vector<uint8_t> pixels = Decode(codec, 9 + i % 4, 5 + i / 4, blocks);
            const size_t row = (9 + i % 4) * codec.PixelBytes();
            for (size_t k = 0; k < pixels.size(); ++k) {
                ASSERT_EQ(pixels[k], whole[k / row * 12 * codec.PixelBytes() + k % row]) << codec.name;
            }
        }
    }
}

TEST(Images, MipLevelsLieBackToBack) {
    for (const Codec& codec : kCodecs) {
        if (codec.entry != Entry::kTxCompress) {
            continue;
        }
        // The chain has five levels; what follows them has one pixel.
        std::vector<uint8_t> chain;
        std::vector<std::vector<uint8_t>> levels;
        for (uint32_t level = 0; level < 6; ++level) {
            const TestImage image = CorpusImage(std::max(1u, 21u >> level), std::max(1u, 9u >> level));
            const std::vector<uint8_t> blocks = Encode(codec, SourceOf(image));
            levels.push_back(Decode(codec, image.width, image.height, blocks));
            chain.insert(chain.end(), blocks.begin(), blocks.end());
        }
        for (const uint32_t level : {0u, 1u, 2u, 3u, 4u, 5u, 31u, 32u, 0xFFFFFFFFu}) {
            std::vector<uint8_t> pixels(levels[std::min(level, 5u)].size());
            const std::array<uint32_t, 4> record = {codec.format, 21, 9, codec.flags};
            EXPECT_EQ(TxCompressDecodeFileData(record.data(), chain.data(), level, TXC_ORDER_RGB,
                                               pixels.data(), static_cast<uint32_t>(pixels.size())),
                      TXC_OK);
            EXPECT_EQ(pixels, levels[std::min(level, 5u)]) << codec.name << ' ' << level;
        }
    }
}

TEST(Images, AlphaBlocksComeFirst) {
    const TestImage image{1, 1, {0, 0, 0, 0x9C}};
    for (const uint32_t format : {TXC_FORMAT_ATC, TXC_FORMAT_ETC1}) {
        std::vector<uint8_t> four = Encode({Entry::kTxCompress, format, 2}, SourceOf(image));
        std::vector<uint8_t> interpolated = Encode({Entry::kTxCompress, format, 18}, SourceOf(image));
        EXPECT_EQ(std::count(four.begin(), four.begin() + 8, 0x99), 8);
        EXPECT_EQ(std::vector(interpolated.begin(), interpolated.begin() + 8),
                  (std::vector<uint8_t>{0x9C, 0x9C, 0, 0, 0, 0, 0, 0}));
    }
}

TEST(Images, OrderSwapsTheFirstAndThirdByte) {
    for (const Codec& codec : kCodecs) {
        const std::vector<uint8_t> blocks = Encode(codec, SourceOf(CorpusImage(6, 6)));
        std::vector<uint8_t> swapped = Decode(codec, 6, 6, blocks, TXC_ORDER_RGB);
        for (size_t i = 0; i < swapped.size(); i += codec.PixelBytes()) {
            std::swap(swapped[i], swapped[i + 2]);
        }
        EXPECT_EQ(Decode(codec, 6, 6, blocks, TXC_ORDER_BGR), swapped) << codec.name;
    }
}

TEST(Images, ThreeDcIgnoresAlpha) {
    for (const uint32_t format : {TXC_FORMAT_ATI1N, TXC_FORMAT_ATI2N}) {
        const Codec plain{Entry::kTxCompress, format, 0};
        const Codec alpha{Entry::kTxCompress, format, 18};
        const std::vector<uint8_t> blocks = Encode(plain, SourceOf(CorpusImage(8, 8)));
        EXPECT_EQ(Encode(alpha, SourceOf(CorpusImage(8, 8))), blocks);
        std::vector<uint8_t> expected = Decode(plain, 8, 8, blocks);
        for (size_t i = 0; i < 64; ++i) {
            expected.insert(expected.begin() + static_cast<ptrdiff_t>(4 * i + 3), 0);
        }
        EXPECT_EQ(Decode(alpha, 8, 8, blocks), expected);
    }
}

TEST(Images, OneBufferFormUsesTheWordEightyBytesBefore) {
    const TestImage image = CorpusImage(5, 3);
    const Codec codec{Entry::kAtiTc, TXC_FORMAT_ATC, 2};
    const std::vector<uint8_t> expected = Encode(codec, SourceOf(image));
    for (const uint32_t capacity : {32u, 31u}) {
        std::array<uint32_t, 48> words;
        words.fill(7);
        words[10] = capacity;
        // Neither aligned nor with the blocks where the encoder put them: nDataOffset counts.
        std::vector<uint8_t> buffer(1 + 20 + 32, kGuard);
        EXPECT_EQ(ATI_TC_EncodeImage(image.pixels.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, 5, 3, 20, 2,
                                     TXC_FORMAT_ATC, &buffer[1], &words[30]),
                  capacity == 32 ? TXC_OK : TXC_ERR_BUFFER_TOO_SMALL);
        EXPECT_EQ(words[10], capacity + 20) << "grows whatever the status";
        EXPECT_EQ(std::count(words.begin(), words.end(), 7u), 47) << "no other word changes";
        if (capacity == 31) {
            EXPECT_EQ(std::count(buffer.begin(), buffer.end(), kGuard), 53);
            continue;
        }
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), &buffer[21]));
        buffer.insert(buffer.begin() + 21, 3, kGuard);
        buffer[1 + 16] = 23;
        uint32_t size = 60;
        std::vector<uint8_t> pixels(size);
        EXPECT_EQ(ATI_TC_DecodeImage(&buffer[1], TXC_ORDER_RGB, pixels.data(), &size), TXC_OK);
        EXPECT_EQ(pixels, Decode(codec, 5, 3, expected));
    }
}

}  // namespace
}  // namespace zorvan::texcompress
