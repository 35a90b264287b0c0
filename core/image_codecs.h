// One image format each. All return an error or an empty string; they throw std::bad_alloc.
#pragma once

#include <string>
#include <vector>

#include "core/image.h"

namespace zorvan {

std::string DecodePng(std::vector<uint8_t> const& bytes, Image& image);
std::string EncodePng(Image const& image, std::string& bytes);
std::string DecodeJpeg(std::vector<uint8_t> const& bytes, Image& image);

// What to say about a size that is too large, or empty.
std::string CheckImageSize(uint64_t width, uint64_t height);

}  // namespace zorvan
