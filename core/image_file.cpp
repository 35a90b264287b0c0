#include "core/image_file.h"

#include <algorithm>

#include "core/file_bytes.h"
#include "core/image_codecs.h"
#include "core/memory_budget.h"

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

std::string MissingPixels(uint64_t width, uint64_t height, size_t fileBytes) {
    return "got " + std::to_string(fileBytes) + " bytes in the file, expected data for " +
           std::to_string(width) + "x" + std::to_string(height) + " pixels";
}

std::string TakePixels(uint64_t width, uint64_t height, uint64_t pixelBytes, MemoryClaim* claim) {
    if (claim == nullptr || claim->Take(width * height * pixelBytes)) {
        return {};
    }
    return claim->Budget().Refusal(std::to_string(width) + "x" + std::to_string(height) + " pixels");
}

std::string DecodeImage(std::vector<uint8_t> const& bytes, Image& image, MemoryClaim* claim) {
    constexpr uint8_t kPng[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    constexpr uint8_t kJpeg[] = {0xFF, 0xD8, 0xFF};
    if (StartsWith(bytes, kPng)) {
        return DecodePng(bytes, image, claim);
    }
    if (StartsWith(bytes, kJpeg)) {
        return DecodeJpeg(bytes, image, claim);
    }
    return "got neither a PNG nor a JPEG image";
}

std::string ReadImage(std::string const& path, Image& image, MemoryClaim* claim) {
    const FileBytes file = ReadFileBytes(path, kLargestFile);
    return file.error.empty() ? DecodeImage(file.bytes, image, claim) : file.error;
}

std::string WritePng(std::string const& path, Image const& image) {
    std::string bytes;
    std::string error = EncodePng(image, bytes);
    return error.empty() ? WriteFileBytes(path, bytes) : error;
}

}  // namespace zorvan
