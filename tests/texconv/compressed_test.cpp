// Block formats: what the converter hands to the codecs and what it makes of their answers.
#include "tests/texconv/support.h"
#include "texcompress/texcompress.h"

namespace texconv_test {
namespace {

constexpr std::uint32_t kWidth = 7;
constexpr std::uint32_t kHeight = 5;

Bytes Picture() {
    Bytes rgba = Random(12).Fill(std::size_t{kWidth} * kHeight * 4);
    return rgba;
}

Bytes EncodedDirectly(std::uint32_t format, std::uint32_t size, const Bytes& rgba, bool fast = false) {
    Bytes out(size);
    _ATITC_HEADER header{};
    std::uint32_t room = size;
    const auto encode = [&](std::uint32_t flags, std::uint32_t codec) {
        return TxCompressEncode(rgba.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, kWidth, kHeight, kWidth * 4,
                                flags, codec, out.data(), &room);
    };
    const auto encodeAtitc =
        fast ? ATI_TC_EncodeImageFast_Seperate_Header : ATI_TC_EncodeImage_Seperate_Header;
    switch (format) {
        case FMT_ATITC_RGBA_EXPLICIT:
        case FMT_ATITC_RGB:
            encodeAtitc(rgba.data(), 0xFF, 0xFF00, 0xFF0000, 0xFF000000, kWidth, kHeight, kWidth * 4,
                        format == FMT_ATITC_RGB ? 1 : 2, TXC_FORMAT_ATC, &header, out.data(), &room);
            break;
        case FMT_ATITC_RGBA_INTERPOLATED:
            EXPECT_EQ(encode(18, TXC_FORMAT_ATC), TXC_OK);
            break;
        case FMT_ETC1_RGB8:
            EXPECT_EQ(encode(0, TXC_FORMAT_ETC1), TXC_OK);
            break;
        case FMT_3DC_X:
            EXPECT_EQ(encode(0, TXC_FORMAT_ATI1N), TXC_OK);
            break;
        default:
            EXPECT_EQ(encode(0, TXC_FORMAT_ATI2N), TXC_OK);
            break;
    }
    return out;
}

constexpr std::uint32_t kBlockFormats[] = {
    FMT_ATITC_RGBA_EXPLICIT, FMT_ATITC_RGB, FMT_ATITC_RGBA_INTERPOLATED,
    FMT_ETC1_RGB8,           FMT_3DC_X,     FMT_3DC_XY};

TEST(Compressed, EncodersGetTheWorkingImage) {
    const Bytes rgba = Picture();
    for (const std::uint32_t format : kBlockFormats) {
        SCOPED_TRACE(FindFormat(format)->name);
        TestImage source(kWidth, kHeight, FMT_RGBA8888, rgba);
        TestImage destination(kWidth, kHeight, format);
        const std::uint32_t size = destination.Size();
        destination.Data() = Bytes(size + 8, 0xEE);
        Bytes expected = EncodedDirectly(format, size, rgba);
        expected.resize(size + 8, 0xEE);
        EXPECT_EQ(Convert(source, destination), expected);
        const bool sizeStored = format != FMT_ATITC_RGBA_EXPLICIT && format != FMT_ATITC_RGB;
        EXPECT_EQ(destination.DataSize(), sizeStored ? size : size + 8);
    }
}

TEST(Compressed, FastEncoderOnlyWhenAskedForByOne) {
    const Bytes rgba = Picture();  // noise: the fast encoder complains about its quality
    for (const std::uint32_t fast : {0u, 1u, 2u}) {
        TestImage source(kWidth, kHeight, FMT_RGBA8888, rgba);
        TestImage destination(kWidth, kHeight, FMT_ATITC_RGB);
        destination.With(&TFormatFlags::nFastCompress, fast).Allocate();
        const auto messages = MessagesOf([&] { Qonvert(source.Get(), destination.Get()); });
        EXPECT_EQ(destination.Data(), EncodedDirectly(FMT_ATITC_RGB, destination.Size(), rgba, fast == 1));
        EXPECT_EQ(messages, fast == 1
                                ? std::vector<std::string>{"Fast ATI_TC_Encode returned a low quality error"}
                                : std::vector<std::string>{});
    }
}

TEST(Compressed, TooSmallDestinationsAreRefusedByTheEncoders) {
    const std::string texcompress =
        "TxCompressEncode (texcompress.lib) returned an error trying to encode the image using ";
    const std::string messages[] = {
        "ATI_TC_Encode returned an error trying to encode the image",
        "ATI_TC_Encode returned an error trying to encode the image",
        texcompress + "ATC_RGBA_INTERPOLATED_ALPHA",
        "TxCompressEncode returned an error trying to encode the image using ETC",
        "TxCompressEncode returned an error trying to encode the image using 3DC_X",
        "TxCompressEncode returned an error trying to encode the image using 3DC_XY"};
    for (std::size_t i = 0; i < std::size(kBlockFormats); ++i) {
        TestImage source(kWidth, kHeight, FMT_RGBA8888, Picture());
        TestImage destination(kWidth, kHeight, kBlockFormats[i]);
        destination.Data() = Bytes(destination.Size() - 1, 0xEE);
        EXPECT_EQ(MessagesOf([&] { Qonvert(source.Get(), destination.Get()); }),
                  (std::vector<std::string>{"m_pDst->nDataSize is to small", messages[i]}));
        EXPECT_EQ(destination.Data(), Bytes(destination.Size() - 1, 0xEE));
    }
}

TEST(Compressed, DecodersFillTheWorkingImage) {
    for (const std::uint32_t format : kBlockFormats) {
        SCOPED_TRACE(FindFormat(format)->name);
        TestImage blocks(kWidth, kHeight, format);
        blocks.Data() = Random(77).Fill(blocks.Size());
        const std::size_t pixels = std::size_t{kWidth} * kHeight;
        Bytes decoded(pixels * 4);
        std::uint32_t room = static_cast<std::uint32_t>(decoded.size());
        std::uint32_t flags = 0;
        if (format == FMT_ATITC_RGB || format == FMT_ATITC_RGBA_EXPLICIT) {
            flags = format == FMT_ATITC_RGB ? TXC_FLAG_RGB : TXC_FLAG_ALPHA;
            const _ATITC_HEADER header{TXC_FORMAT_ATC, kWidth, kHeight, flags, 20};
            ASSERT_EQ(
                ATI_TC_DecodeImage_Seperate_Header(&header, blocks.Data().data(), 1, decoded.data(), &room),
                TXC_OK);
        } else {
            flags = format == FMT_ATITC_RGBA_INTERPOLATED ? 18 : format == FMT_ETC1_RGB8 ? 1 : 2;
            const std::uint32_t codec = format == FMT_ATITC_RGBA_INTERPOLATED ? TXC_FORMAT_ATC
                                        : format == FMT_ETC1_RGB8             ? TXC_FORMAT_ETC1
                                        : format == FMT_3DC_X                 ? TXC_FORMAT_ATI1N
                                                                              : TXC_FORMAT_ATI2N;
            ASSERT_EQ(TxCompressDecode(codec, kWidth, kHeight, flags, blocks.Data().data(), 0, 1,
                                       decoded.data(), room),
                      TXC_OK);
        }
        Bytes expected(pixels * 4, 0);
        const std::size_t step = (flags & 2) != 0 ? 4 : 3;
        for (std::size_t i = 0; i < pixels; ++i) {
            const std::uint8_t* from = decoded.data() + i * step;
            expected[4 * i] = from[0];
            expected[4 * i + 1] = format == FMT_3DC_X ? 0 : from[1];
            expected[4 * i + 2] = format == FMT_3DC_X || format == FMT_3DC_XY ? 0 : from[2];
            expected[4 * i + 3] = step == 4 ? from[3] : 255;
        }
        EXPECT_EQ(Convert(blocks, FMT_RGBA8888), expected);
    }
}

TEST(Compressed, FailedDecodesGiveAZeroedImage) {
    // The codecs refuse to decode an image without columns; scaled up, zeros are what is left.
    struct Row {
        std::uint32_t format;
        const char* message;
    };
    for (const Row& row :
         {Row{FMT_ATITC_RGBA_INTERPOLATED,
              "Error calling TxCompressDecode (texcompress.lib) for ATC_RGBA_INTERPOLATED_ALPHA"},
          Row{FMT_ETC1_RGB8, "Error calling TxCompressDecode (texcompress.lib) for ETC1_RGB8"},
          Row{FMT_3DC_X, "Error calling TxCompressDecode (texcompress.lib) for 3DC_X"},
          Row{FMT_3DC_XY, "Error calling TxCompressDecode (texcompress.lib) for 3DC_XY"}}) {
        std::uint8_t block[16] = {};
        TQonvertImage empty{0, 4, row.format, nullptr, 0, block};
        TestImage destination(2, 2, FMT_RGBA8888);
        destination.Allocate(0xEE);
        EXPECT_EQ(MessagesOf([&] { Qonvert(&empty, destination.Get()); }),
                  (std::vector<std::string>{"m_pSrc->nWidth == 0", row.message}));
        EXPECT_EQ(destination.Data(), Bytes(16, 0));
    }
}

}  // namespace
}  // namespace texconv_test
