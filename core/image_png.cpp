#include <png.h>

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
};

}  // namespace

std::string DecodePng(std::vector<uint8_t> const& bytes, Image& image) {
    PngState png;
    if (png_image_begin_read_from_memory(&png.state, bytes.data(), bytes.size()) == 0) {
        return std::string("broken PNG image: ") + png.state.message;
    }
    std::string error = CheckImageSize(png.state.width, png.state.height);
    if (!error.empty()) {
        return error;
    }
    png.state.format = PNG_FORMAT_RGBA;
    png.state.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    Image decoded{png.state.width, png.state.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(png.state))};
    if (png_image_finish_read(&png.state, nullptr, decoded.rgba.data(), 0, nullptr) == 0) {
        return std::string("broken PNG image: ") + png.state.message;
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
        return std::string("cannot write the PNG image: ") + png.state.message;
    }
    bytes.resize(size);
    return {};
}

}  // namespace zorvan
