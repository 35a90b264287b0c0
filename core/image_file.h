// PNG and JPEG files.
#pragma once

#include <string>

#include "core/api.h"
#include "core/image.h"

namespace zorvan {

// Larger images are refused before memory is taken for them.
inline constexpr uint32_t kLargestImageSide = 16384;
inline constexpr uint64_t kMostImagePixels = uint64_t{1} << 26;

class MemoryClaim;

// All three return an error without the file's name, or an empty string.

// Reads a file by its first bytes, not by its name: PNG, or JPEG where the library was built with it. A size
// that cannot be in so few bytes is refused, too. With a claim the pixels must fit into its budget.
ZORVAN_CORE_API std::string ReadImage(std::string const& path, Image& image, MemoryClaim* claim = nullptr);
ZORVAN_CORE_API std::string DecodeImage(std::vector<uint8_t> const& bytes, Image& image,
                                        MemoryClaim* claim = nullptr);

// The same image gives the same bytes. The file is either the old or the whole new one.
ZORVAN_CORE_API std::string WritePng(std::string const& path, Image const& image);

}  // namespace zorvan
