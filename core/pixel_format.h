// Conversion between images and the plain texture formats.
#pragma once

#include <cstdint>
#include <vector>

#include "core/api.h"
#include "core/image.h"

namespace zorvan {

// Formats 0 to 2 and 4 to 7: those with pixels that stand on their own.
ZORVAN_CORE_API bool IsPlainFormat(uint32_t format);

// Appends the image to bytes in a plain texture format, bottom row first. Channels become the nearest
// value of their width; formats without alpha drop it.
ZORVAN_CORE_API void PackPixels(Image const& image, uint32_t format, std::vector<uint8_t>& bytes);
// The same for PadImage's result, without making it, to where out points: room for TextureDataSize bytes.
void PackPadded(Image const& image, uint32_t format, uint32_t width, uint32_t height, uint8_t* out);

// The image in width x height pixels of a plain texture format, bottom row first. Formats without alpha
// give 255.
ZORVAN_CORE_API Image UnpackPixels(uint8_t const* bytes, uint32_t format, uint32_t width, uint32_t height);

// The image in the bottom left corner of a larger one, whose rest repeats the nearest edge.
ZORVAN_CORE_API Image PadImage(Image const& image, uint32_t width, uint32_t height);

// The next mipmap level: both sides halved, rounded down, not below 1. Each pixel is the mean of the
// area that it covers.
ZORVAN_CORE_API Image HalveImage(Image const& image);

}  // namespace zorvan
