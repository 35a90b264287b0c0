#include "core/image_file.h"

#include <algorithm>

#include "core/file_bytes.h"
#include "core/image_codecs.h"

namespace zorvan {
namespace {

constexpr uint32_t kLargestFile = 512u << 20;

template <size_t kCount>
bool StartsWith(std::vector<uint8_t> const& bytes, uint8_t const (&start)[kCount]) {
    return bytes.size() >= kCount && std::equal(start, start + kCount, bytes.begin());
}

}  // namespace

std::string CheckImageSize(uint64_t width, uint64_t height) {
    if (width >= 1 && height >= 1 && width <= kLargestImageSide && height <= kLargestImageSide &&
        width * height <= kMostImagePixels) {
        return {};
    }
    return "got " + std::to_string(width) + "x" + std::to_string(height) + " pixels, expected at most " +
           std::to_string(kLargestImageSide) + " on a side and " + std::to_string(kMostImagePixels) +
           " together";
}

std::string DecodeImage(std::vector<uint8_t> const& bytes, Image& image) {
    constexpr uint8_t kPng[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    constexpr uint8_t kJpeg[] = {0xFF, 0xD8, 0xFF};
    if (StartsWith(bytes, kPng)) {
        return DecodePng(bytes, image);
    }
    if (StartsWith(bytes, kJpeg)) {
        return DecodeJpeg(bytes, image);
    }
    return "got neither a PNG nor a JPEG image";
}

std::string ReadImage(std::string const& path, Image& image) {
    const FileBytes file = ReadFileBytes(path, kLargestFile);
    return file.error.empty() ? DecodeImage(file.bytes, image) : file.error;
}

std::string WritePng(std::string const& path, Image const& image) {
    std::string bytes;
    std::string error = EncodePng(image, bytes);
    return error.empty() ? WriteFileBytes(path, bytes) : error;
}

}  // namespace zorvan
