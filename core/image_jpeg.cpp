#include <csetjmp>
#include <cstdio>
#include <new>

#include <jerror.h>
#include <jpeglib.h>

#include "core/image_codecs.h"

namespace zorvan {
namespace {

// libjpeg reports errors by a call that must not return; warnings, such as a file that ends early, are
// errors too.
struct ErrorState {
    jpeg_error_mgr manager;
    std::jmp_buf back;
    char message[JMSG_LENGTH_MAX];
};

void OnError(j_common_ptr info) {
    auto* state = reinterpret_cast<ErrorState*>(info->err);
    info->err->format_message(info, state->message);
    std::longjmp(state->back, 1);
}

void OnMessage(j_common_ptr info, int level) {
    if (level < 0) {
        OnError(info);
    }
}

// The two steps that may jump: nothing in them has a destructor.
bool ReadHeader(jpeg_decompress_struct& info, ErrorState& state, uint8_t const* bytes, size_t size) {
    if (setjmp(state.back) != 0) {
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes, static_cast<unsigned long>(size));
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_EXT_RGBA;
    return true;
}

bool ReadRows(jpeg_decompress_struct& info, ErrorState& state, uint8_t* rgba) {
    if (setjmp(state.back) != 0) {
        return false;
    }
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = rgba + size_t{info.output_scanline} * info.output_width * 4;
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    return true;
}

struct Decoder {
    jpeg_decompress_struct info{};
    ErrorState state{};
    Decoder() {
        info.err = jpeg_std_error(&state.manager);
        state.manager.error_exit = OnError;
        state.manager.emit_message = OnMessage;
    }
    Decoder(Decoder const&) = delete;
    ~Decoder() { jpeg_destroy_decompress(&info); }
};

// A block of 8 x 8 samples takes at least one bit, and with odd sampling factors blocks cover up to 256
// pixels.
bool IsInFile(jpeg_decompress_struct const& info, size_t fileBytes) {
    return uint64_t{info.image_width} * info.image_height <= uint64_t{fileBytes} * 8 * 256;
}

// The decoded pixel, and with several scans the coefficients of all samples, which wait for the last one.
uint64_t BytesPerPixel(jpeg_decompress_struct& info) {
    const bool waits = jpeg_has_multiple_scans(&info) != 0;
    return 4 + (waits ? sizeof(JCOEF) * static_cast<unsigned>(info.num_components) : 0);
}

}  // namespace

std::string DecodeJpeg(std::vector<uint8_t> const& bytes, Image& image, MemoryClaim* claim) {
    Decoder decoder;
    const auto broken = [&] {
        if (decoder.state.manager.msg_code == JERR_OUT_OF_MEMORY) {
            throw std::bad_alloc();
        }
        return std::string("broken or unsupported JPEG image: ") + decoder.state.message;
    };
    if (!ReadHeader(decoder.info, decoder.state, bytes.data(), bytes.size())) {
        return broken();
    }
    jpeg_decompress_struct& info = decoder.info;
    std::string error = CheckImageSize(info.image_width, info.image_height);
    if (error.empty() && !IsInFile(info, bytes.size())) {
        error = MissingPixels(info.image_width, info.image_height, bytes.size());
    }
    if (error.empty()) {
        error = TakePixels(info.image_width, info.image_height, BytesPerPixel(info), claim);
    }
    if (!error.empty()) {
        return error;
    }
    Image decoded{info.image_width, info.image_height, {}};
    decoded.rgba.resize(size_t{decoded.width} * decoded.height * 4);
    if (!ReadRows(decoder.info, decoder.state, decoded.rgba.data())) {
        return broken();
    }
    image = std::move(decoded);
    return {};
}

}  // namespace zorvan
