// Block formats: what the converter hands to the codecs and what it makes of their answers.
#include "tests/texconv/support.h"
#include "texcompress/texcompress.h"

namespace texconv_test {
namespace {

constexpr std::uint32_t kWidth = 7;
constexpr std::uint32_t kHeight = 5;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

// How each format reaches the codecs. ATITC without interpolated alpha has entry points of its own.
struct BlockFormat {
    std::uint32_t format;
    std::uint32_t codec;
    std::uint32_t encodeFlags;
    std::uint32_t decodeFlags;
    std::uint32_t channels;  // of R, G, B that survive decoding
    const char* encodeError;
    const char* decodeError;
    bool Atitc() const { return encodeFlags == 1 || encodeFlags == 2; }
};

const BlockFormat kBlockFormats[] = {
    {FMT_ATITC_RGBA_EXPLICIT, TXC_FORMAT_ATC, 2, 2, 3,
     "ATI_TC_Encode returned an error trying to encode the image", nullptr},
    {FMT_ATITC_RGB, TXC_FORMAT_ATC, 1, 1, 3, "ATI_TC_Encode returned an error trying to encode the image",
     nullptr},
    {FMT_ATITC_RGBA_INTERPOLATED, TXC_FORMAT_ATC, 18, 18, 3,
     "TxCompressEncode (texcompress.lib) returned an error trying to encode the image using "
     "ATC_RGBA_INTERPOLATED_ALPHA",
     "Error calling TxCompressDecode (texcompress.lib) for ATC_RGBA_INTERPOLATED_ALPHA"},
    {FMT_ETC1_RGB8, TXC_FORMAT_ETC1, 0, 1, 3,
     "TxCompressEncode returned an error trying to encode the image using ETC",
     "Error calling TxCompressDecode (texcompress.lib) for ETC1_RGB8"},
    {FMT_3DC_X, TXC_FORMAT_ATI1N, 0, 2, 1,
     "TxCompressEncode returned an error trying to encode the image using 3DC_X",
     "Error calling TxCompressDecode (texcompress.lib) for 3DC_X"},
    {FMT_3DC_XY, TXC_FORMAT_ATI2N, 0, 2, 2,
     "TxCompressEncode returned an error trying to encode the image using 3DC_XY",
     "Error calling TxCompressDecode (texcompress.lib) for 3DC_XY"},
};

// Noise: the fast encoder complains about its quality.
TestImage Picture() {
    return {kWidth, kHeight, FMT_RGBA8888, Random(12).Fill(kPixels * 4)};
}

Bytes EncodedDirectly(const BlockFormat& to, std::uint32_t size, bool fast = false) {
    const Bytes rgba = Picture().Data();
    Bytes out(size);
    _ATITC_HEADER header{};
    const auto atitc = fast ? ATI_TC_EncodeImageFast_Seperate_Header : ATI_TC_EncodeImage_Seperate_Header;
    if (to.Atitc()) {
        atitc(rgba.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, kWidth, kHeight, kWidth * 4, to.encodeFlags,
              to.codec, &header, out.data(), &size);
    } else {
        TxCompressEncode(rgba.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, kWidth, kHeight, kWidth * 4,
                         to.encodeFlags, to.codec, out.data(), &size);
    }
    return out;
}

TEST(Compressed, EncodersGetTheWorkingImage) {
    for (const BlockFormat& to : kBlockFormats) {
        SCOPED_TRACE(FindFormat(to.format)->name);
        TestImage source = Picture();
        TestImage destination(kWidth, kHeight, to.format);
        const std::uint32_t size = destination.Size();
        destination.Data() = Bytes(size + 8, 0xEE);
        Bytes expected = EncodedDirectly(to, size);
        expected.insert(expected.end(), 8, 0xEE);
        EXPECT_EQ(Convert(source, destination), expected);
        EXPECT_EQ(destination.DataSize(), to.Atitc() ? size + 8 : size);

        // One byte short: the encoders refuse.
        destination.Data() = Bytes(size - 1, 0xEE);
        EXPECT_EQ(MessagesOf([&] { Qonvert(source.Get(), destination.Get()); }),
                  (std::vector<std::string>{"m_pDst->nDataSize is to small", to.encodeError}));
        EXPECT_EQ(destination.Data(), Bytes(size - 1, 0xEE));
    }
}

TEST(Compressed, FastEncoderOnlyWhenAskedForByOne) {
    for (const std::uint32_t fast : {0u, 1u, 2u}) {
        TestImage source = Picture();
        TestImage destination(kWidth, kHeight, FMT_ATITC_RGB);
        destination.With(&TFormatFlags::nFastCompress, fast).Allocate();
        const auto messages = MessagesOf([&] { Qonvert(source.Get(), destination.Get()); });
        EXPECT_EQ(destination.Data(), EncodedDirectly(kBlockFormats[1], destination.Size(), fast == 1));
        EXPECT_EQ(messages, std::vector<std::string>(fast == 1 ? 1 : 0,
                                                     "Fast ATI_TC_Encode returned a low quality error"));
    }
}

TEST(Compressed, DecodersFillTheWorkingImage) {
    for (const BlockFormat& from : kBlockFormats) {
        SCOPED_TRACE(FindFormat(from.format)->name);
        TestImage blocks(kWidth, kHeight, from.format);
        blocks.Data() = Random(77).Fill(blocks.Size());
        Bytes decoded(kPixels * 4);
        std::uint32_t room = kPixels * 4;
        const _ATITC_HEADER header{from.codec, kWidth, kHeight, from.decodeFlags, 20};
        ASSERT_EQ(from.Atitc() ? ATI_TC_DecodeImage_Seperate_Header(&header, blocks.Data().data(), 1,
                                                                    decoded.data(), &room)
                               : TxCompressDecode(from.codec, kWidth, kHeight, from.decodeFlags,
                                                  blocks.Data().data(), 0, 1, decoded.data(), room),
                  TXC_OK);
        const bool alpha = (from.decodeFlags & TXC_FLAG_ALPHA) != 0;
        Bytes expected;
        for (std::size_t i = 0; i < kPixels; ++i) {
            const std::uint8_t* pixel = decoded.data() + i * (alpha ? 4 : 3);
            for (std::uint32_t c = 0; c < 3; ++c) {
                expected.push_back(c < from.channels ? pixel[c] : 0);
            }
            expected.push_back(alpha ? pixel[3] : 255);
        }
        EXPECT_EQ(Convert(blocks, FMT_RGBA8888), expected);

        // An image without columns cannot be decoded; scaled up, zeros are what is left.
        if (from.decodeError != nullptr) {
            TQonvertImage empty{0, 4, from.format, nullptr, 0, blocks.Data().data()};
            TestImage zeros(2, 2, FMT_RGBA8888);
            zeros.Allocate(0xEE);
            EXPECT_EQ(MessagesOf([&] { Qonvert(&empty, zeros.Get()); }),
                      (std::vector<std::string>{"m_pSrc->nWidth == 0", from.decodeError}));
            EXPECT_EQ(zeros.Data(), Bytes(16, 0));
        }
    }
}

}  // namespace
}  // namespace texconv_test
