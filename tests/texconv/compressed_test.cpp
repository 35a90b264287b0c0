// Block formats: what the converter hands to the codecs and what it makes of their answers.
#include "tests/texconv/support.h"
#include "texcompress/texcompress.h"

namespace texconv_test {
namespace {

constexpr std::uint32_t kWidth = 7;
constexpr std::uint32_t kHeight = 5;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

// How each format reaches the codecs. ATITC without interpolated alpha has entry points of its own, which
// take empty images.
struct BlockFormat {
    std::uint32_t format, codec, encodeFlags, decodeFlags;
    std::uint32_t channels;  // of R, G, B that survive decoding
    const char* name;        // in messages
    bool Atitc() const { return encodeFlags == 1 || encodeFlags == 2; }
    std::string EncodeError() const {
        if (Atitc()) {
            return "ATI_TC_Encode returned an error trying to encode the image";
        }
        const bool library = format == FMT_ATITC_RGBA_INTERPOLATED;
        return std::string("TxCompressEncode ") + (library ? "(texcompress.lib) " : "") +
               "returned an error trying to encode the image using " +
               (format == FMT_ETC1_RGB8 ? "ETC" : name);
    }
};

const BlockFormat kBlockFormats[] = {
    {FMT_ATITC_RGBA_EXPLICIT, TXC_FORMAT_ATC, 2, 2, 3, nullptr},
    {FMT_ATITC_RGB, TXC_FORMAT_ATC, 1, 1, 3, nullptr},
    {FMT_ATITC_RGBA_INTERPOLATED, TXC_FORMAT_ATC, 18, 18, 3, "ATC_RGBA_INTERPOLATED_ALPHA"},
    {FMT_ETC1_RGB8, TXC_FORMAT_ETC1, 0, 1, 3, "ETC1_RGB8"},
    {FMT_3DC_X, TXC_FORMAT_ATI1N, 0, 2, 1, "3DC_X"},
    {FMT_3DC_XY, TXC_FORMAT_ATI2N, 0, 2, 2, "3DC_XY"},
};

// Noise: the fast encoder complains about its quality.
TestImage Picture() {
    return {kWidth, kHeight, FMT_RGBA8888, Random(12).Fill(kPixels * 4)};
}

Bytes EncodedDirectly(const BlockFormat& to, std::uint32_t size, bool fast) {
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
        const std::uint32_t size = TestImage(kWidth, kHeight, to.format).Size();
        for (const std::uint32_t fast : {0u, 1u, 2u}) {  // only 1 asks for the fast encoder
            TestImage roomy(kWidth, kHeight, to.format, Bytes(size + 8, 0xEE), Flags{.fast = fast});
            const bool complains = to.Atitc() && fast == 1;
            EXPECT_EQ(MessagesOf([&] { Qonvert(Picture().Get(), roomy.Get()); }),
                      Messages(complains ? 1 : 0, "Fast ATI_TC_Encode returned a low quality error"));
            Bytes expected = EncodedDirectly(to, size, complains);
            expected.insert(expected.end(), 8, 0xEE);
            EXPECT_EQ(roomy.Data(), expected);
            EXPECT_EQ(roomy.DataSize(), to.Atitc() ? size + 8 : size);
        }
        // One byte short: the encoders refuse.
        TestImage tight(kWidth, kHeight, to.format, Bytes(size - 1, 0xEE));
        EXPECT_EQ(MessagesOf([&] { Qonvert(Picture().Get(), tight.Get()); }),
                  (Messages{"m_pDst->nDataSize is to small", to.EncodeError()}));
        EXPECT_EQ(tight.Data(), Bytes(size - 1, 0xEE));
    }
}

TEST(Compressed, DecodersGiveTheirRows) {
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
        Messages messages{"m_pSrc->nWidth == 0"};
        if (from.name != nullptr) {
            messages.push_back(std::string("Error calling TxCompressDecode (texcompress.lib) for ") +
                               from.name);
        }
        TestImage zeros(2, 2, FMT_RGBA8888, Bytes(16, 0xEE));
        EXPECT_EQ(MessagesOf([&] { Qonvert(TestImage(0, 4, from.format, {9}).Get(), zeros.Get()); }),
                  messages);
        EXPECT_EQ(zeros.Data(), Bytes(16, 0));
    }
}

}  // namespace
}  // namespace texconv_test
