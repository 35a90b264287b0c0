#include "texconv/block_rows.h"

#include <algorithm>
#include <cstring>

#include "texcompress/texcompress.h"
#include "texconv/qonvert.h"
#include "texconv/row_kernels.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kBlockSide = 4;
constexpr std::uint32_t kHeaderBytes = 20;
static_assert(sizeof(_ATITC_HEADER) == kHeaderBytes);

// How a codec is asked for a format's pixels, and which of its channels count.
struct BlockDecoder {
    std::uint32_t format;
    std::uint32_t codecFormat;
    std::uint32_t flags;
    bool atitc;  // has an entry point of its own
    WordLayout pixels;
    const char* refused;
};

constexpr WordLayout kRgba(detail::kRgba8888, 4);
constexpr WordLayout kRgb(detail::kRgb888, 3);
constexpr const char* kAtitcRefused = "Can't decode ATITC input image";

constexpr BlockDecoder kDecoders[] = {
    {FMT_ATITC_RGBA_EXPLICIT, TXC_FORMAT_ATC, TXC_FLAG_ALPHA, true, kRgba, kAtitcRefused},
    {FMT_ATITC_RGB, TXC_FORMAT_ATC, TXC_FLAG_RGB, true, kRgb, kAtitcRefused},
    {FMT_ATITC_RGBA_INTERPOLATED, TXC_FORMAT_ATC, TXC_FLAG_ALPHA | TXC_FLAG_INTERPOLATED_ALPHA, false, kRgba,
     "Error calling TxCompressDecode (texcompress.lib) for ATC_RGBA_INTERPOLATED_ALPHA"},
    {FMT_ETC1_RGB8, TXC_FORMAT_ETC1, TXC_FLAG_RGB, false, kRgb,
     "Error calling TxCompressDecode (texcompress.lib) for ETC1_RGB8"},
    {FMT_3DC_X, TXC_FORMAT_ATI1N, TXC_FLAG_ALPHA, false, WordLayout({0xFF, 0, 0, 0xFF000000}, 4),
     "Error calling TxCompressDecode (texcompress.lib) for 3DC_X"},
    {FMT_3DC_XY, TXC_FORMAT_ATI2N, TXC_FLAG_ALPHA, false, WordLayout({0xFF, 0xFF00, 0, 0xFF000000}, 4),
     "Error calling TxCompressDecode (texcompress.lib) for 3DC_XY"},
};

const BlockDecoder& DecoderOf(const FormatInfo& format) {
    return *std::find_if(std::begin(kDecoders), std::end(kDecoders),
                         [&](const BlockDecoder& decoder) { return decoder.format == format.code; });
}

std::uint32_t Decode(const BlockDecoder& decoder, const std::uint8_t* blocks, std::uint32_t width,
                     std::uint32_t height, std::uint8_t* pixels) {
    std::uint32_t size = width * height * decoder.pixels.bytes;
    if (decoder.atitc) {
        const _ATITC_HEADER header{decoder.codecFormat, width, height, decoder.flags, kHeaderBytes};
        return ATI_TC_DecodeImage_Seperate_Header(&header, blocks, TXC_ORDER_RGB, pixels, &size);
    }
    return TxCompressDecode(decoder.codecFormat, width, height, decoder.flags, blocks, 0, TXC_ORDER_RGB,
                            pixels, size);
}

class BlockSource : public RowSource {
  public:
    BlockSource(const FormatInfo& format, const std::uint8_t* blocks, std::uint32_t width,
                std::uint32_t height)
        : m_decoder(DecoderOf(format)),
          m_blocks(blocks),
          m_width(width),
          m_height(height),
          m_rowBytes(std::size_t{width} * m_decoder.pixels.bytes),
          m_blockRowBytes((std::size_t{width} + kBlockSide - 1) / kBlockSide * 2 * format.bitsPerPixel),
          m_pixels(AllocateRow(width, m_decoder.pixels.bytes * kBlockSide)) {}

    void Read(std::uint32_t y, std::uint8_t* to) override {
        if (const std::uint32_t blockRow = y / kBlockSide; blockRow != m_blockRow) {
            m_blockRow = blockRow;
            // An image of its own, of a size that no codec refuses.
            const std::uint32_t height = std::min(m_height - blockRow * kBlockSide, kBlockSide);
            Decode(m_decoder, m_blocks + blockRow * m_blockRowBytes, m_width, height, m_pixels.get());
        }
        m_kernels.unpack(m_decoder.pixels, m_pixels.get() + y % kBlockSide * m_rowBytes, m_width, to);
    }

  private:
    static constexpr std::uint32_t kNoBlockRow = UINT32_MAX;

    const RowKernels& m_kernels = SelectRowKernels();
    const BlockDecoder& m_decoder;
    const std::uint8_t* m_blocks;
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::size_t m_rowBytes;
    std::size_t m_blockRowBytes;
    RowMemory m_pixels;  // of the decoded row of blocks
    std::uint32_t m_blockRow = kNoBlockRow;
};

}  // namespace

const char* RefusedBlocks(const FormatInfo& format, std::uint32_t width, std::uint32_t height) {
    if (width != 0 && height != 0) {
        return nullptr;
    }
    const BlockDecoder& decoder = DecoderOf(format);
    std::uint8_t none = 0;
    return Decode(decoder, &none, width, height, &none) != TXC_OK ? decoder.refused : nullptr;
}

RowSourcePointer BlockRows(const FormatInfo& format, const std::uint8_t* blocks, std::uint32_t width,
                           std::uint32_t height) {
    return std::make_unique<BlockSource>(format, blocks, width, height);
}

}  // namespace QXTextureConverter
