// PNG and JPEG files by their libraries, kinds included that the tools never write.
#include <png.h>

#include <cstdio>
#include <cstdlib>

#include "fuzz/seeds/seeds.h"
#ifdef QONVERT_JPEG
#include <jpeglib.h>
#endif

namespace zorvan::fuzz {

namespace {

[[noreturn]] void FailPng(png_structp, char const* message) {
    throw std::runtime_error(std::string("PNG: ") + message);
}

void AppendPng(png_structp png, png_bytep bytes, png_size_t count) {
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

}  // namespace

Bytes PngFile(PngKind const& kind, uint32_t width, uint32_t height) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, FailPng, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, AppendPng, nullptr);
    png_set_IHDR(png, info, width, height, kind.depth, kind.type,
                 kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (kind.type == PNG_COLOR_TYPE_PALETTE) {
        png_color table[256];
        png_byte alpha[2] = {0, 128};
        for (int i = 0; i < 256; ++i) {
            table[i] = {static_cast<png_byte>(i), static_cast<png_byte>(255 - i),
                        static_cast<png_byte>(3 * i)};
        }
        png_set_PLTE(png, info, table, 1 << kind.depth);
        png_set_tRNS(png, info, alpha, 2, nullptr);
    } else if ((kind.type & PNG_COLOR_MASK_ALPHA) == 0 && kind.interlaced) {
        png_color_16 color{};
        color.gray = color.red = 1;
        png_set_tRNS(png, info, nullptr, 0, &color);
    }
    png_set_gAMA(png, info, 0.5);
    png_write_info(png, info);
    const Bytes rows = SeedInput().Noise(png_get_rowbytes(png, info) * height, 5).bytes;
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass) {
        for (uint32_t y = 0; y < height; ++y) {
            png_write_row(png, rows.data() + y * png_get_rowbytes(png, info));
        }
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

#ifdef QONVERT_JPEG
Bytes JpegFile(uint32_t width, uint32_t height, bool grey, bool progressive) {
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
    if (progressive) {
        jpeg_simple_progression(&info);
    }
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < height) {
        Bytes row = SeedInput().Noise(size_t{width} * 3, info.next_scanline).bytes;
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    Bytes file(out, out + size);
    jpeg_destroy_compress(&info);
    std::free(out);
    return file;
}
#else
Bytes JpegFile(uint32_t, uint32_t, bool, bool) {
    return {};
}
#endif

}  // namespace zorvan::fuzz
