// What a descriptor says about its image: properties, sizes and limits.
#include <algorithm>

#include "texconv/image.h"

namespace QXTextureConverter {

namespace {

// Words that replace a table value only where nonzero.
std::uint32_t Override(std::uint32_t word, std::uint32_t tableValue) {
    return word != 0 ? word : tableValue;
}

std::uint32_t BlockCount(const TQonvertImage& image) {
    const std::uint64_t columns = (std::uint64_t{image.nWidth} + 3) / 4;
    const std::uint64_t rows = (std::uint64_t{image.nHeight} + 3) / 4;
    return static_cast<std::uint32_t>(columns * rows);
}

// Unpadded indices after the colour table. The bit count may pass 64 bits; the low 35 bits that
// the result needs survive that.
std::uint32_t PaletteImageSize(const FormatInfo& format, const TQonvertImage& image) {
    const std::uint64_t indexBits = std::uint64_t{image.nWidth} * image.nHeight * format.bitsPerPixel;
    const std::uint64_t tableBits = std::uint64_t{format.paletteBits} << format.bitsPerPixel;
    return static_cast<std::uint32_t>((indexBits + 7) / 8 + tableBits / 8);
}

}  // namespace

std::uint32_t CImage::ImgInfo(const TQonvertImage* image, TInfo what) {
    if (image == nullptr) {
        return 0;
    }
    static constexpr FormatInfo kUnsupported{};
    const FormatInfo* format = FindFormat(image->nFormat);
    if (format == nullptr) {
        Verbose("ImgInfo unsupported pInput->nFormat");
        format = &kUnsupported;
    }
    static constexpr TFormatFlags kNoFlags{};
    const bool present = image->pFormatFlags != nullptr;
    const TFormatFlags& flags = present ? *image->pFormatFlags : kNoFlags;

    switch (what) {
        case INFO_BPP:
            return format->bitsPerPixel;
        case INFO_ALPHA:
            return format->alpha;
        case INFO_PALETTE_BITS:
            return format->paletteBits;
        case INFO_COMPRESSED:
            return format->IsCompressed();
        case INFO_FLOAT:
            return format->IsFloat();
        case INFO_STRIDE: {
            const std::uint64_t bits = std::uint64_t{format->bitsPerPixel} * image->nWidth;
            return Override(flags.nStride, static_cast<std::uint32_t>((bits + 7) / 8));
        }
        case INFO_MASK_R:
            return Override(flags.nMaskRed, format->masks.red);
        case INFO_MASK_G:
            return Override(flags.nMaskGreen, format->masks.green);
        case INFO_MASK_B:
            return Override(flags.nMaskBlue, format->masks.blue);
        case INFO_MASK_A:
            return Override(flags.nMaskAlpha, format->masks.alpha);
        case INFO_MIRROR_X:
            return flags.nMirrorX;
        case INFO_FLIP_Y:
            return flags.nFlipY;
        case INFO_FAST_COMPRESS:
            return flags.nFastCompress;
        case INFO_SCALE_FILTER:
            return flags.nScaleFilter;
        case INFO_BUMPMAP:
            return flags.nBumpmap;
        case INFO_BUMPMAP_HEIGHT:
            return present ? flags.nBumpmapHeight : 10;
        case INFO_BUMPMAP_WRAP:
            return flags.nBumpmapWrap;
        case INFO_MODE:
            return flags.nMode;
    }
    Verbose("ImgInfo missing info field");
    return 0;
}

std::uint32_t CImage::ImgSize(const TQonvertImage* image) {
    const FormatInfo* format = image != nullptr ? FindFormat(image->nFormat) : nullptr;
    if (format == nullptr) {
        Verbose("ImgSize missing format");
        return 0;
    }
    switch (format->formatClass) {
        case FormatClass::kCompressed:
            return BlockCount(*image) * (2 * format->bitsPerPixel);  // sixteen pixels a block
        case FormatClass::kPalette:
            return PaletteImageSize(*format, *image);
        case FormatClass::kPlain:
        case FormatClass::kFloat:
            break;
    }
    return image->nHeight * ImgInfo(image, INFO_STRIDE);
}

std::uint64_t CImage::DataLimit(const TQonvertImage* image) {
    return std::max(image->nDataSize, FindFormat(image->nFormat) != nullptr ? ImgSize(image) : 0);
}

ChannelMasks CImage::Masks(const TQonvertImage* image) {
    return {ImgInfo(image, INFO_MASK_R), ImgInfo(image, INFO_MASK_G), ImgInfo(image, INFO_MASK_B),
            ImgInfo(image, INFO_MASK_A)};
}

}  // namespace QXTextureConverter
