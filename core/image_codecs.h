// One image format each. All return an error or an empty string; they throw std::bad_alloc.
#pragma once

#include <string>
#include <vector>

#include "core/image.h"

namespace zorvan {

class MemoryClaim;

std::string DecodePng(std::vector<uint8_t> const& bytes, Image& image, MemoryClaim* claim);
std::string EncodePng(Image const& image, std::string& bytes);
std::string DecodeJpeg(std::vector<uint8_t> const& bytes, Image& image, MemoryClaim* claim);

// What to say about a size that is too large, or empty.
std::string CheckImageSize(uint64_t width, uint64_t height);

// What to say about a size for which the file has too few bytes.
std::string MissingPixels(uint64_t width, uint64_t height, size_t fileBytes);

// Takes what decoding needs while it runs, bytes per pixel, and says so when that does not fit. A decoder
// calls it before it takes memory; without a claim all fits.
std::string TakePixels(uint64_t width, uint64_t height, uint64_t pixelBytes, MemoryClaim* claim);

}  // namespace zorvan
