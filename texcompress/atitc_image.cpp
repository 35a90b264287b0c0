// The ATI_TC entry points: ATC images with explicit alpha and an _ATITC_HEADER.
#include <algorithm>
#include <array>
#include <cstring>

#include "texcompress/block_kernels.h"
#include "texcompress/image_drivers.h"
#include "texcompress/image_sizes.h"
#include "texcompress/texcompress.h"

namespace zorvan::texcompress {
namespace {

constexpr uint32_t kHeaderBytes = sizeof(_ATITC_HEADER);
static_assert(kHeaderBytes == 20);

// Words by which ATI_TC_EncodeImage moves its size pointer back.
constexpr int kSizeWordOffset = 20;

// The fast encoder's limits: squared errors of blocks, the mean and the largest.
constexpr uint64_t kMeanErrorLimit = 249;
constexpr uint32_t kLargestErrorLimit = 3699;

bool IsAtcFormat(uint32_t format) {
    return format == TXC_FORMAT_ATC || format == TXC_FORMAT_ATC_LEGACY;
}

bool HasAlpha(uint32_t flags) {
    return (flags & TXC_FLAG_ALPHA) != 0;
}

// Compressed size by the interface's signed 32-bit arithmetic: dimensions from 2^31 on are negative.
uint32_t CompressedBytes(uint32_t width, uint32_t height, size_t blockBytes) {
    const int32_t columns = static_cast<int32_t>(width + 3) / 4;
    const int32_t rows = static_cast<int32_t>(height + 3) / 4;
    return static_cast<uint32_t>(rows) * static_cast<uint32_t>(columns) * static_cast<uint32_t>(blockBytes);
}

// A dimension as the encoders' loops see it: nothing to visit where it is negative.
uint32_t VisitedExtent(uint32_t extent) {
    return static_cast<int32_t>(extent) < 0 ? 0 : extent;
}

// The arguments that the two encoders share.
struct EncodeRequest {
    const void* src;
    uint32_t maskR, maskG, maskB, maskA;
    uint32_t width, height, pitch, flags, format;
    void* header;  // of any alignment
    void* dst;
    uint32_t* dstSize;
};

// Checks the request, writes the header and encodes the blocks. encodeColor(tiles, count, blocks,
// stride) encodes a run of colour blocks. A size query ends in TXC_OK, too.
template <typename EncodeColor>
uint32_t Encode(const EncodeRequest& request, PixelFetch fetch, EncodeColor encodeColor) {
    constexpr uint32_t kExclusive = TXC_FLAG_RGB | TXC_FLAG_ALPHA;
    if ((request.flags & kExclusive) == kExclusive) {
        return TXC_ERR_BAD_FLAGS;
    }
    if (!IsAtcFormat(request.format)) {
        return TXC_ERR_BAD_FORMAT;
    }
    const bool alpha = HasAlpha(request.flags);
    const BlockLayout layout = ColorLayout(alpha);
    const uint32_t needed = CompressedBytes(request.width, request.height, layout.blockBytes);
    if (request.dst == nullptr) {
        *request.dstSize = needed;
        return TXC_OK;
    }
    // The size may have wrapped, the number of blocks has not.
    const uint32_t width = VisitedExtent(request.width);
    const uint32_t height = VisitedExtent(request.height);
    if (needed > *request.dstSize || !Fits(BlockCount(width, height), layout.blockBytes, *request.dstSize)) {
        return TXC_ERR_BUFFER_TOO_SMALL;
    }

    const _ATITC_HEADER header{request.format, request.width, request.height, request.flags, kHeaderBytes};
    std::memcpy(request.header, &header, sizeof(header));

    const BlockKernels& kernels = SelectBlockKernels();
    const SourcePixels source(request.src, request.maskR, request.maskG, request.maskB, request.maskA, width,
                              height, request.pitch, alpha ? AlphaDepth::kFourBits : AlphaDepth::kNone,
                              fetch);
    EncodeTiles(kernels.gather, source, layout.blockBytes, request.dst,
                [&](const Tile* tiles, size_t count, uint8_t* run) {
                    if (alpha) {
                        kernels.encodeAlphaExplicit4(tiles, count, run, layout.blockBytes);
                    }
                    encodeColor(tiles, count, run + layout.colorOffset, layout.blockBytes);
                });
    return TXC_OK;
}

uint32_t EncodeFully(const EncodeRequest& request) {
    const BlockKernels& kernels = SelectBlockKernels();
    return Encode(request, PixelFetch::kAnySize,
                  request.format == TXC_FORMAT_ATC ? kernels.encodeAtc : kernels.encodeAtcLegacy);
}

uint32_t EncodeFast(const EncodeRequest& request) {
    const BlockKernels& kernels = SelectBlockKernels();
    const MeasuringEncodeKernel kernel =
        request.format == TXC_FORMAT_ATC ? kernels.encodeAtcFast : kernels.encodeAtcLegacyFast;
    uint64_t sum = 0;
    uint64_t blocks = 0;
    uint32_t largest = 0;
    const auto encodeColor = [&](const Tile* tiles, size_t count, uint8_t* run, size_t stride) {
        std::array<uint32_t, kBatchTiles> errors;
        kernel(tiles, count, run, stride, errors.data());
        for (size_t i = 0; i < count; ++i) {
            sum += errors[i];
            largest = std::max(largest, errors[i]);
        }
        blocks += count;
    };
    const uint32_t status = Encode(request, PixelFetch::kTwoToFourBytes, encodeColor);
    if (status != TXC_OK || blocks == 0) {
        return status;
    }
    return sum / blocks > kMeanErrorLimit || largest > kLargestErrorLimit ? TXC_ERR_LOW_QUALITY : TXC_OK;
}

uint32_t Decode(const _ATITC_HEADER& header, const void* src, uint32_t order, void* dst, uint32_t* dstSize) {
    const bool alpha = HasAlpha(header.nFlags);
    const uint32_t bytesPerPixel = alpha ? 4 : 3;
    if (!IsAtcFormat(header.nFormat)) {
        return TXC_ERR_BAD_FORMAT;
    }
    if (dst == nullptr) {
        *dstSize = header.nWidth * header.nHeight * bytesPerPixel;
        return TXC_OK;
    }
    if (!Fits(uint64_t{header.nWidth} * header.nHeight, bytesPerPixel, *dstSize)) {
        return TXC_ERR_BUFFER_TOO_SMALL;
    }
    if (order != TXC_ORDER_RGB && order != TXC_ORDER_BGR) {
        return TXC_ERR_BAD_ORDER;
    }
    const BlockKernels& kernels = SelectBlockKernels();
    const DecodeKernel decodeColor =
        header.nFormat == TXC_FORMAT_ATC ? kernels.decodeAtc : kernels.decodeAtcLegacy;
    const BlockLayout layout = ColorLayout(alpha);
    const PixelTarget target{static_cast<uint8_t*>(dst), header.nWidth, header.nHeight, bytesPerPixel, order};
    const auto decodeTiles = [&](const uint8_t* run, size_t count, Tile* tiles) {
        decodeColor(run + layout.colorOffset, count, layout.blockBytes, tiles);
        if (alpha) {
            kernels.decodeAlphaExplicit(run, count, layout.blockBytes, tiles);
        }
    };
    DecodeTiles(kernels.scatter, static_cast<const uint8_t*>(src), layout.blockBytes, target, decodeTiles);
    return TXC_OK;
}

}  // namespace
}  // namespace zorvan::texcompress

using namespace zorvan::texcompress;

uint32_t ATI_TC_EncodeImage_Seperate_Header(const void* src, uint32_t maskR, uint32_t maskG, uint32_t maskB,
                                            uint32_t maskA, uint32_t width, uint32_t height, uint32_t pitch,
                                            uint32_t flags, uint32_t format, _ATITC_HEADER* header, void* dst,
                                            uint32_t* dstSize) {
    return EncodeFully(
        {src, maskR, maskG, maskB, maskA, width, height, pitch, flags, format, header, dst, dstSize});
}

uint32_t ATI_TC_EncodeImageFast_Seperate_Header(const void* src, uint32_t maskR, uint32_t maskG,
                                                uint32_t maskB, uint32_t maskA, uint32_t width,
                                                uint32_t height, uint32_t pitch, uint32_t flags,
                                                uint32_t format, _ATITC_HEADER* header, void* dst,
                                                uint32_t* dstSize) {
    return EncodeFast(
        {src, maskR, maskG, maskB, maskA, width, height, pitch, flags, format, header, dst, dstSize});
}

uint32_t ATI_TC_EncodeImage(const void* src, uint32_t maskR, uint32_t maskG, uint32_t maskB, uint32_t maskA,
                            uint32_t width, uint32_t height, uint32_t pitch, uint32_t flags, uint32_t format,
                            void* buffer, uint32_t* dstSize) {
    // Callers rely on the size word lying that far before the one they pass.
    uint32_t* sizeWord = dstSize - kSizeWordOffset;
    const uint32_t status = EncodeFully({src, maskR, maskG, maskB, maskA, width, height, pitch, flags, format,
                                         buffer, static_cast<uint8_t*>(buffer) + kHeaderBytes, sizeWord});
    *sizeWord += kHeaderBytes;
    return status;
}

uint32_t ATI_TC_DecodeImage_Seperate_Header(const _ATITC_HEADER* header, const void* src, uint32_t order,
                                            void* dst, uint32_t* dstSize) {
    return Decode(*header, src, order, dst, dstSize);
}

uint32_t ATI_TC_DecodeImage(const void* buffer, uint32_t order, void* dst, uint32_t* dstSize) {
    _ATITC_HEADER header;
    std::memcpy(&header, buffer, sizeof(header));
    return Decode(header, static_cast<const uint8_t*>(buffer) + header.nDataOffset, order, dst, dstSize);
}
