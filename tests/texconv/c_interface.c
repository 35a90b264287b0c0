/* The header as a C program sees it. */
#include "texconv/qonvert.h"

uint32_t ConvertFromC(const uint8_t* rgb565, uint8_t* rgba);

uint32_t ConvertFromC(const uint8_t* rgb565, uint8_t* rgba) {
    uint8_t pixel[2] = {rgb565[0], rgb565[1]};
    TFormatFlags flags = {0};
    TQonvertImage source = {1, 1, FMT_RGB565, 0, sizeof pixel, pixel};
    TQonvertImage destination = {1, 1, FMT_RGBA8888, &flags, 4, rgba};
    return Qonvert(&source, &destination);
}
