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

}  // namespace

std::string DecodePng(std::vector<uint8_t> const& bytes, Image& image) {
    PngState png;
    if (png_image_begin_read_from_memory(&png.state, bytes.data(), bytes.size()) == 0) {
        return png.Error("broken PNG image: ");
    }
    std::string error = CheckImageSize(png.state.width, png.state.height);
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
