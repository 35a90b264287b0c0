// The TxCompress entry points: ATC, ETC1 and 3Dc images without a header.
#include <array>
#include <cstring>
#include <optional>

#include "texcompress/block_kernels.h"
#include "texcompress/image_drivers.h"
#include "texcompress/image_sizes.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {
namespace {

// What an image's format and flags come to.
struct ImageCodec {
    BlockLayout layout;
    bool alphaBlocks;
    EncodeKernel encodeColor, encodeAlpha;
    DecodeKernel decodeColor, decodeAlpha;
};

// The codec of a format; nothing for a format that these entry points do not accept.
std::optional<ImageCodec> FindCodec(uint32_t format, uint32_t flags) {
    const BlockKernels& kernels = SelectBlockKernels();
    const bool alpha = (flags & TXC_FLAG_ALPHA) != 0;
    const bool interpolated = (flags & TXC_FLAG_INTERPOLATED_ALPHA) != 0;
    const EncodeKernel encodeAlpha =
        interpolated ? kernels.encodeAlphaInterpolated : kernels.encodeAlphaExplicit8;
    const DecodeKernel decodeAlpha =
        interpolated ? kernels.decodeAlphaInterpolated : kernels.decodeAlphaExplicit;
    switch (format) {
        case TXC_FORMAT_ATC:
            return ImageCodec{ColorLayout(alpha), alpha,      kernels.encodeAtc, encodeAlpha,
                              kernels.decodeAtc,  decodeAlpha};
        case TXC_FORMAT_ETC1:
            return ImageCodec{ColorLayout(alpha), alpha,      kernels.encodeEtc1, encodeAlpha,
                              kernels.decodeEtc1, decodeAlpha};
        case TXC_FORMAT_ATI1N:
            return ImageCodec{{kBlockBytes, 0},    false,  kernels.encodeAti1n, nullptr,
                              kernels.decodeAti1n, nullptr};
        case TXC_FORMAT_ATI2N:
            return ImageCodec{{2 * kBlockBytes, 0}, false,  kernels.encodeAti2n, nullptr,
                              kernels.decodeAti2n,  nullptr};
        default:
            return std::nullopt;
    }
}

uint32_t Decode(uint32_t format, uint32_t width, uint32_t height, uint32_t flags, const void* src,
                uint32_t level, uint32_t order, void* dst, uint32_t dstSize) {
    const std::optional<ImageCodec> codec = FindCodec(format, flags);
    if (!codec) {
        return TXC_ERR_BAD_FORMAT;
    }
    const PixelTarget target{static_cast<uint8_t*>(dst), LevelExtent(width, level),
                             LevelExtent(height, level), (flags & TXC_FLAG_ALPHA) != 0 ? 4u : 3u, order};
    if (!Fits(uint64_t{target.width} * target.height, target.bytesPerPixel, dstSize)) {
        return TXC_ERR_BUFFER_TOO_SMALL;
    }
    if (order != TXC_ORDER_RGB && order != TXC_ORDER_BGR) {
        return TXC_ERR_BAD_ORDER;
    }
    const size_t blockBytes = codec->layout.blockBytes;
    const auto* blocks =
        static_cast<const uint8_t*>(src) + ChainBytes<size_t>(width, height, level, blockBytes);
    DecodeTiles(SelectBlockKernels().scatter, blocks, blockBytes, target,
                [&](const uint8_t* run, size_t count, Tile* tiles) {
                    codec->decodeColor(run + codec->layout.colorOffset, count, blockBytes, tiles);
                    if (codec->alphaBlocks) {
                        codec->decodeAlpha(run, count, blockBytes, tiles);
                    }
                });
    return TXC_OK;
}

}  // namespace
}  // namespace zorvan::texcompress

using namespace zorvan::texcompress;

uint32_t TxCompressEncode(const void* src, uint32_t maskR, uint32_t maskG, uint32_t maskB, uint32_t maskA,
                          uint32_t width, uint32_t height, uint32_t pitch, uint32_t flags, uint32_t format,
                          void* dst, uint32_t* dstSize) {
    constexpr uint32_t kExclusive = TXC_FLAG_RGB | TXC_FLAG_ALPHA;
    if ((flags & kExclusive) == kExclusive) {
        return TXC_ERR_BAD_FLAGS;
    }
    const std::optional<ImageCodec> codec = FindCodec(format, flags);
    if (!codec) {
        return TXC_ERR_BAD_FORMAT;
    }
    // The size may have wrapped, the number of blocks has not.
    const size_t blockBytes = codec->layout.blockBytes;
    const auto needed = ChainBytes<uint32_t>(width, height, 1, blockBytes);
    if (needed > *dstSize || !Fits(BlockCount(width, height), blockBytes, *dstSize)) {
        return TXC_ERR_BUFFER_TOO_SMALL;
    }
    *dstSize = needed;

    const SourcePixels source(src, maskR, maskG, maskB, maskA, width, height, pitch,
                              codec->alphaBlocks ? AlphaDepth::kEightBits : AlphaDepth::kNone,
                              PixelFetch::kAnySize);
    EncodeTiles(SelectBlockKernels().gather, source, blockBytes, dst,
                [&](const Tile* tiles, size_t count, uint8_t* run) {
                    if (codec->alphaBlocks) {
                        codec->encodeAlpha(tiles, count, run, blockBytes);
                    }
                    codec->encodeColor(tiles, count, run + codec->layout.colorOffset, blockBytes);
                });
    return TXC_OK;
}

uint32_t TxCompressDecode(uint32_t format, uint32_t width, uint32_t height, uint32_t flags, const void* src,
                          uint32_t level, uint32_t order, void* dst, uint32_t dstSize) {
    return Decode(format, width, height, flags, src, level, order, dst, dstSize);
}

uint32_t TxCompressDecodeFileData(const void* record, const void* src, uint32_t level, uint32_t order,
                                  void* dst, uint32_t dstSize) {
    std::array<uint32_t, 4> words;
    std::memcpy(words.data(), record, sizeof(words));
    const auto [format, width, height, flags] = words;
    return Decode(format, width, height, flags, src, level, order, dst, dstSize);
}

uint32_t TxCompressQueryEncodeBufferSize(uint32_t width, uint32_t height, uint32_t levels, uint32_t flags,
                                         uint32_t format, uint32_t* size) {
    *size = 0;
    const std::optional<ImageCodec> codec = FindCodec(format, flags);
    if (!codec) {
        return TXC_ERR_BAD_FORMAT;
    }
    *size = ChainBytes<uint32_t>(width, height, levels, codec->layout.blockBytes);
    return TXC_OK;
}

uint32_t TxCompressQueryDecodeBufferSize(uint32_t width, uint32_t height, uint32_t format, uint32_t hasAlpha,
                                         uint32_t* size) {
    switch (format) {
        case TXC_FORMAT_ATC:
        case TXC_FORMAT_ETC1:
            *size = width * height * (hasAlpha != 0 ? 4 : 3);
            return TXC_OK;
        case TXC_FORMAT_ATI1N:
        case TXC_FORMAT_ATI2N:
            *size = width * height * 3;
            return TXC_OK;
        default:
            *size = 0;
            return TXC_ERR_BAD_FORMAT;
    }
}
