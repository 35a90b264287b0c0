#include "tools/qonvert/jpeg.h"

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include "texconv/qonvert.h"

namespace qonvert {

namespace {

// What the library calls back into. Its errors come back to the last setjmp; its warnings (damaged
// data that it papered over) are errors too, since the picture is not whole.
struct Decoder {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    std::jmp_buf escape{};
    char message[JMSG_LENGTH_MAX] = {};

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

void Start(Decoder& decoder) {
    decoder.info.err = jpeg_std_error(&decoder.errors);
    decoder.errors.error_exit = OnError;
    decoder.errors.emit_message = OnMessage;
    decoder.info.client_data = &decoder;
}

// Each step holds nothing with a destructor, so that an error may jump out of it.
bool ReadHeader(Decoder& decoder, const unsigned char* bytes, unsigned long size) {
    if (setjmp(decoder.escape) != 0) {
        return false;
    }
    jpeg_create_decompress(&decoder.info);
    decoder.info.client_data = &decoder;
    jpeg_mem_src(&decoder.info, bytes, size);
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
    Reject(FindingNumber::kDamagedStream, "JPEG data", decoder.message, "a whole picture");
}

// A block of 8 x 8 samples takes at least one bit, and with odd sampling factors blocks cover up to
// 256 pixels; so a picture that claims more pixels than that cannot be in the file.
void CheckSizeAgainstFile(std::uint64_t pixels, std::uint64_t fileBytes) {
    const std::uint64_t most = fileBytes * 8 * 256;
    if (pixels > most) {
        Reject(FindingNumber::kDataMissing, "pixels", std::to_string(fileBytes) + " bytes in the file",
               "data for " + std::to_string(pixels) + " pixels");
    }
}

}  // namespace

bool IsJpeg(ByteSpan bytes) {
    return bytes.size() >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

TextureFile ReadJpeg(ByteSpan bytes, const ReadOptions&, Findings&) {
    if (bytes.size() >= 2 && (bytes[0] != 0xFF || bytes[1] != 0xD8)) {
        Reject(FindingNumber::kWrongMagic, "identifier", "other bytes", "FF D8");
    }
    Decoder decoder;
    Start(decoder);
    if (!ReadHeader(decoder, bytes.data(), static_cast<unsigned long>(bytes.size()))) {
        RejectStream(decoder);
    }
    CheckPictureSize(decoder.info.image_width, decoder.info.image_height);
    CheckSizeAgainstFile(std::uint64_t{decoder.info.image_width} * decoder.info.image_height, bytes.size());
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
