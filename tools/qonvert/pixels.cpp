#include "tools/qonvert/pixels.h"

#include <algorithm>
#include <new>

#include "texconv/format_table.h"
#include "tools/qonvert/finding.h"

namespace qonvert {

namespace {

constexpr std::uint32_t kQuiet = 1;  // TFormatFlags::nMode

bool IsFloat(std::uint32_t format) {
    const auto* info = QXTextureConverter::FindFormat(format);
    return info != nullptr && info->IsFloat();
}

// The converter's sizes are 32-bit words; so must be its working image, of 4 or 16 bytes a pixel. And nothing
// is made that the readers would refuse.
void CheckWorkingSize(std::uint32_t width, std::uint32_t height, std::uint64_t bytesPerPixel) {
    const std::uint64_t most = std::min(kMaxPixels, UINT32_MAX / bytesPerPixel);
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide ||
        std::uint64_t{width} * height > most) {
        throw ToolError(ExitCode::kUnsupported,
                        "a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                            " is not possible; sides are 1 to " + std::to_string(kMaxSide) + ", with up to " +
                            std::to_string(most) + " pixels");
    }
}

void CheckBytes(const char* which, std::uint64_t got, std::uint64_t expected) {
    if (got != expected) {
        throw ToolError(ExitCode::kRuntime, std::string("internal: ") + which + " pixels take " +
                                                std::to_string(got) + " bytes, expected " +
                                                std::to_string(expected));
    }
}

// The converter writes the indices of a palette picture without gaps, but reads each row from a whole
// byte. Where rows end inside a byte, this is the picture as it must be read; else empty.
Bytes IndicesInWholeRows(const Picture& picture) {
    const auto* info = QXTextureConverter::FindFormat(picture.format);
    const std::uint64_t rowBits = std::uint64_t{picture.width} * info->bitsPerPixel;
    if (!info->IsPalette() || rowBits % 8 == 0) {
        return {};
    }
    const std::size_t table = TableBytes(picture.format);
    const std::size_t rowBytes = static_cast<std::size_t>(rowBits + 7) / 8;
    Bytes padded(picture.bytes.begin(), picture.bytes.begin() + table);
    padded.resize(table + rowBytes * picture.height);
    const unsigned mask = (1u << info->bitsPerPixel) - 1;
    for (std::size_t y = 0; y < picture.height; ++y) {
        for (std::size_t bit = 0; bit < rowBits; bit += info->bitsPerPixel) {
            const std::size_t from = y * rowBits + bit;
            const unsigned index = picture.bytes[table + from / 8] >> (from % 8) & mask;
            padded[table + y * rowBytes + bit / 8] |= static_cast<std::uint8_t>(index << (bit % 8));
        }
    }
    return padded;
}

TQonvertImage Describe(const Picture& picture, TFormatFlags& flags) {
    // The converter only reads a source, though its descriptor is the same as a destination's.
    return {picture.width,
            picture.height,
            picture.format,
            &flags,
            static_cast<std::uint32_t>(picture.bytes.size()),
            const_cast<std::uint8_t*>(picture.bytes.data())};
}

// The converter tells by the destination's size alone that it found no memory.
void Convert(TQonvertImage& from, TQonvertImage& to) {
    const std::uint32_t wanted = to.nDataSize;
    Qonvert(&from, &to);
    if (to.nDataSize != wanted) {
        throw std::bad_alloc();
    }
}

}  // namespace

void CheckConvertible(std::uint32_t format, std::uint32_t width, std::uint32_t height) {
    CheckWorkingSize(width, height, IsFloat(format) ? 16 : 4);
}

void ConvertPictureInto(const Picture& source, std::uint32_t format, std::uint32_t width,
                        std::uint32_t height, const Steps& steps, std::span<std::uint8_t> out) {
    const std::uint64_t perPixel = IsFloat(source.format) || IsFloat(format) ? 16 : 4;
    CheckWorkingSize(source.width, source.height, perPixel);
    CheckWorkingSize(width, height, perPixel);
    CheckBytes("source", source.bytes.size(), PictureBytes(source.format, source.width, source.height));
    CheckBytes("destination", out.size(), PictureBytes(format, width, height));

    TFormatFlags sourceFlags{};
    sourceFlags.nMode = kQuiet;
    const Bytes padded = IndicesInWholeRows(source);
    Picture readable = source;
    if (!padded.empty()) {
        readable.bytes = padded;
    }
    TQonvertImage from = Describe(readable, sourceFlags);
    TFormatFlags flags{};
    flags.nMirrorX = steps.mirrorX;
    flags.nFlipY = steps.flipY;
    flags.nFastCompress = steps.fastCompress;
    flags.nScaleFilter = steps.filter;
    flags.nBumpmap = steps.normalMap;
    flags.nBumpmapHeight = static_cast<std::uint32_t>(steps.strengthTenths);
    flags.nBumpmapWrap = steps.wrap;
    flags.nMode = kQuiet;
    TQonvertImage to{width, height, format, &flags, static_cast<std::uint32_t>(out.size()), out.data()};
    Convert(from, to);
}

Bytes ConvertPicture(const Picture& source, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                     const Steps& steps) {
    CheckWorkingSize(width, height, IsFloat(source.format) || IsFloat(format) ? 16 : 4);
    Bytes out(PictureBytes(format, width, height));
    ConvertPictureInto(source, format, width, height, steps, out);
    return out;
}

Bytes ConvertMaskedPixels(const Picture& source, const std::uint32_t (&masks)[4], std::uint32_t format) {
    CheckWorkingSize(source.width, source.height, 4);
    CheckBytes("source", source.bytes.size(), PictureBytes(source.format, source.width, source.height));
    TFormatFlags flags{};
    flags.nMaskRed = masks[0];
    flags.nMaskGreen = masks[1];
    flags.nMaskBlue = masks[2];
    flags.nMaskAlpha = masks[3];
    flags.nMode = kQuiet;
    TQonvertImage from = Describe(source, flags);
    Bytes out(PictureBytes(format, source.width, source.height));
    TQonvertImage to{source.width, source.height, format, nullptr, static_cast<std::uint32_t>(out.size()),
                     out.data()};
    Convert(from, to);
    return out;
}

}  // namespace qonvert
