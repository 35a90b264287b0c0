#include "tools/qonvert/jpeg.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <span>

#include <jpeglib.h>

#include <jerror.h>

#include "texconv/qonvert.h"

namespace qonvert {

namespace {

constexpr std::size_t kPieceBytes = 65536;
// Where a picture's size must have come: the library would look for it to the end of the file.
constexpr std::uint64_t kMostHeaderBytes = std::uint64_t{64} << 20;

// What the library calls back into. Its errors come back to the last setjmp; its warnings (damaged
// data that it papered over) are errors too, since the picture is not whole.
struct Decoder {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    jpeg_source_mgr reads{};
    std::jmp_buf escape{};
    char message[JMSG_LENGTH_MAX] = {};
    ByteSource* in = nullptr;
    Bytes buffer = Bytes(kPieceBytes);
    std::exception_ptr thrown;  // by a callback

    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { jpeg_destroy_decompress(&info); }
};

[[noreturn]] void OnError(j_common_ptr common) {
    auto* decoder = static_cast<Decoder*>(common->client_data);
    common->err->format_message(common, decoder->message);
    std::longjmp(decoder->escape, 1);
}

void OnMessage(j_common_ptr common, int level) {
    if (level < 0) {
        OnError(common);
    }
}

void OnStart(j_decompress_ptr) {}

void FillBuffer(Decoder& decoder) {
    const auto count = static_cast<std::size_t>(decoder.in->Ahead(kPieceBytes));
    decoder.in->Take(std::span(decoder.buffer).first(count));
    decoder.reads.next_input_byte = decoder.buffer.data();
    decoder.reads.bytes_in_buffer = count;
}

boolean OnEmpty(j_decompress_ptr info) {
    auto* decoder = static_cast<Decoder*>(info->client_data);
    if (info->image_width == 0 && decoder->in->taken() > kMostHeaderBytes) {
        std::strcpy(decoder->message, "no picture in the first 64 MiB");
        std::longjmp(decoder->escape, 1);
    }
    try {
        FillBuffer(*decoder);
    } catch (...) {
        decoder->thrown = std::current_exception();
    }
    if (decoder->thrown || decoder->reads.bytes_in_buffer == 0) {
        info->err->msg_code = decoder->in->taken() == 0 ? JERR_INPUT_EMPTY : JWRN_JPEG_EOF;
        OnError(reinterpret_cast<j_common_ptr>(info));
    }
    return TRUE;
}

void OnSkip(j_decompress_ptr info, long count) {
    for (auto left = static_cast<std::size_t>(std::max(count, 0L)); left != 0;) {
        if (info->src->bytes_in_buffer == 0) {
            OnEmpty(info);
        }
        const std::size_t part = std::min(left, info->src->bytes_in_buffer);
        info->src->next_input_byte += part;
        info->src->bytes_in_buffer -= part;
        left -= part;
    }
}

void OnEnd(j_decompress_ptr) {}

void Start(Decoder& decoder) {
    decoder.info.err = jpeg_std_error(&decoder.errors);
    decoder.errors.error_exit = OnError;
    decoder.errors.emit_message = OnMessage;
    decoder.info.client_data = &decoder;
    decoder.reads.init_source = OnStart;
    decoder.reads.fill_input_buffer = OnEmpty;
    decoder.reads.skip_input_data = OnSkip;
    decoder.reads.resync_to_restart = jpeg_resync_to_restart;
    decoder.reads.term_source = OnEnd;
}

// Each step holds nothing with a destructor, so that an error may jump out of it.
bool ReadHeader(Decoder& decoder) {
    if (setjmp(decoder.escape) != 0) {
        return false;
    }
    jpeg_create_decompress(&decoder.info);
    decoder.info.client_data = &decoder;
    decoder.info.src = &decoder.reads;
    jpeg_read_header(&decoder.info, TRUE);
    return true;
}

bool ReadRows(Decoder& decoder, unsigned char* out, std::size_t rowBytes) {
    if (setjmp(decoder.escape) != 0) {
        return false;
    }
    // The slow integer transform gives the same bytes on every CPU.
    decoder.info.dct_method = JDCT_ISLOW;
    jpeg_start_decompress(&decoder.info);
    while (decoder.info.output_scanline < decoder.info.output_height) {
        JSAMPROW row = out + rowBytes * decoder.info.output_scanline;
        jpeg_read_scanlines(&decoder.info, &row, 1);
    }
    jpeg_finish_decompress(&decoder.info);
    return true;
}

[[noreturn]] void RejectStream(const Decoder& decoder) {
    if (decoder.thrown) {
        std::rethrow_exception(decoder.thrown);
    }
    if (decoder.errors.msg_code == JERR_OUT_OF_MEMORY) {
        throw std::bad_alloc();
    }
    Reject(FindingNumber::kDamagedStream, "JPEG data", decoder.message, "a whole picture");
}

// A block of 8 x 8 samples takes at least one bit, and with odd sampling factors blocks cover up to
// 256 pixels; so a picture that claims more pixels than that cannot be in the file.
void CheckSizeAgainstFile(std::uint64_t pixels, ByteSource& source) {
    const std::uint64_t least = (pixels + 8 * 256 - 1) / (8 * 256);
    const std::uint64_t fileBytes = source.taken() + source.Ahead(least);
    if (least > fileBytes) {
        Reject(FindingNumber::kDataMissing, "pixels", std::to_string(fileBytes) + " bytes in the file",
               "data for " + std::to_string(pixels) + " pixels");
    }
}

}  // namespace

bool IsJpeg(ByteSpan bytes) {
    return bytes.size() >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

TextureFile ReadJpeg(ByteSource& source, const ReadOptions&, Findings&) {
    Decoder decoder;
    decoder.in = &source;
    Start(decoder);
    FillBuffer(decoder);
    if (source.taken() >= 2 && (decoder.buffer[0] != 0xFF || decoder.buffer[1] != 0xD8)) {
        Reject(FindingNumber::kWrongMagic, "identifier", "other bytes", "FF D8");
    }
    if (!ReadHeader(decoder)) {
        RejectStream(decoder);
    }
    CheckPictureSize(decoder.info.image_width, decoder.info.image_height);
    CheckSizeAgainstFile(std::uint64_t{decoder.info.image_width} * decoder.info.image_height, source);
    if (decoder.info.num_components != 1 && decoder.info.num_components != 3) {
        Reject(FindingNumber::kUnsupportedFormat, "channels", std::to_string(decoder.info.num_components),
               "1 or 3");
    }
    const bool grey = decoder.info.num_components == 1;
    decoder.info.out_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;

    TextureFile texture;
    texture.format = grey ? FMT_L8 : FMT_RGB888;
    texture.width = decoder.info.image_width;
    texture.height = decoder.info.image_height;
    texture.origin = Origin::kTopLeft;
    texture.encoding = decoder.info.progressive_mode ? "progressive" : "baseline";
    const std::size_t rowBytes = std::size_t{texture.width} * (grey ? 1 : 3);
    texture.levels.emplace_back(rowBytes * texture.height);
    if (!ReadRows(decoder, texture.levels.front().data(), rowBytes)) {
        RejectStream(decoder);
    }
    return texture;
}

}  // namespace qonvert
