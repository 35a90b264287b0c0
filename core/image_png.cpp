#include <png.h>

#include <cstring>
#include <new>

#include "core/image_codecs.h"

namespace zorvan {
namespace {

// libpng's state for one image, freed on every way out.
struct PngState {
    png_image state{};
    PngState() {
        state.version = PNG_IMAGE_VERSION;
        state.opaque = nullptr;
    }
    PngState(PngState const&) = delete;
    ~PngState() { png_image_free(&state); }

    // The last error behind `what`; throws std::bad_alloc where it is that, of which only the words tell.
    std::string Error(char const* what) const {
        if (std::strstr(state.message, "memory") != nullptr) {
            throw std::bad_alloc();
        }
        return std::string(what) + state.message;
    }
};

// Whether so few bytes can hold the picture that the first chunk, which the library has checked, claims:
// deflate shrinks at most 1032 times.
bool IsInFile(std::vector<uint8_t> const& bytes, uint64_t width, uint64_t height) {
    constexpr size_t kDepth = 24, kColorType = 25;          // in the file
    constexpr uint8_t kChannels[] = {1, 0, 3, 1, 2, 0, 4};  // by colour type
    const uint64_t bits = uint64_t{bytes[kDepth]} * kChannels[bytes[kColorType]];
    return (width * bits + 7) / 8 * height / 1032 <= bytes.size();
}

}  // namespace

std::string DecodePng(std::vector<uint8_t> const& bytes, Image& image, MemoryClaim* claim) {
    PngState png;
    if (png_image_begin_read_from_memory(&png.state, bytes.data(), bytes.size()) == 0) {
        return png.Error("broken PNG image: ");
    }
    std::string error = CheckImageSize(png.state.width, png.state.height);
    if (error.empty() && !IsInFile(bytes, png.state.width, png.state.height)) {
        error = MissingPixels(png.state.width, png.state.height, bytes.size());
    }
    if (error.empty()) {
        error = TakePixels(png.state.width, png.state.height, PNG_IMAGE_PIXEL_SIZE(PNG_FORMAT_RGBA), claim);
    }
    if (!error.empty()) {
        return error;
    }
    png.state.format = PNG_FORMAT_RGBA;
    png.state.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    Image decoded{png.state.width, png.state.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(png.state))};
    if (png_image_finish_read(&png.state, nullptr, decoded.rgba.data(), 0, nullptr) == 0) {
        return png.Error("broken PNG image: ");
    }
    image = std::move(decoded);
    return {};
}

std::string EncodePng(Image const& image, std::string& bytes) {
    std::string error = CheckImageSize(image.width, image.height);
    if (!error.empty()) {
        return error;
    }
    PngState png;
    png.state.width = image.width;
    png.state.height = image.height;
    png.state.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.state);
    bytes.resize(size);
    if (png_image_write_to_memory(&png.state, bytes.data(), &size, 0, image.rgba.data(), 0, nullptr) == 0) {
        return png.Error("cannot write the PNG image: ");
    }
    bytes.resize(size);
    return {};
}

}  // namespace zorvan
