#include "tests/qonvert/samples.h"

#ifdef QONVERT_JPEG
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace qonvert {

Bytes JpegSample(std::uint32_t width, std::uint32_t height, bool grey) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &out, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = grey ? 1 : 3;
    info.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    jpeg_start_compress(&info, TRUE);
    Bytes row(std::size_t{width} * info.input_components);
    while (info.next_scanline < height) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = static_cast<std::uint8_t>(i * 5 + info.next_scanline * 9);
        }
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    Bytes bytes(out, out + size);
    jpeg_destroy_compress(&info);
    std::free(out);
    return bytes;
}

}  // namespace qonvert
#endif
