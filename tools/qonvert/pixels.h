// The tool's way into the converter: sizes are checked here, since the converter reports nothing.
#pragma once

#include <cstdint>

#include "texconv/qonvert.h"
#include "tools/qonvert/texture_file.h"

namespace qonvert {

// One level of a texture in the converter's layout.
struct Picture {
    std::uint32_t format = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ByteSpan bytes;
};

// What happens to the pixels between source and destination.
struct Steps {
    bool mirrorX = false;
    bool flipY = false;
    bool fastCompress = false;
    std::uint32_t filter = 0;     // TFormatFlags::nScaleFilter
    std::uint32_t normalMap = 0;  // TFormatFlags::nBumpmap
    std::int32_t strengthTenths = 10;
    bool wrap = false;
};

// Throws ToolError (unsupported) for a size that the converter cannot hold or the readers would refuse.
void CheckConvertible(std::uint32_t format, std::uint32_t width, std::uint32_t height);

// Converts into a new buffer of `width` x `height` pixels of `format`. Throws ToolError when the
// picture is too large for the converter, or `source.bytes` is not the size that its format needs.
Bytes ConvertPicture(const Picture& source, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                     const Steps& steps = {});

// ConvertPicture into the caller's buffer, which must have the size that the format needs.
void ConvertPictureInto(const Picture& source, std::uint32_t format, std::uint32_t width,
                        std::uint32_t height, const Steps& steps, std::span<std::uint8_t> out);

// Plain pixels with other channel masks than their format's (0 keeps the format's) as `format`.
Bytes ConvertMaskedPixels(const Picture& source, const std::uint32_t (&masks)[4], std::uint32_t format);

}  // namespace qonvert
