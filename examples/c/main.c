/* Makes a picture, converts it with Qonvert, and compresses it with the codec interface.
 *
 *   cmake -B build -DCMAKE_PREFIX_PATH=<where zorvan is installed> && cmake --build build && build/texture
 *   cc main.c $(pkg-config --cflags --libs zorvan) -o texture && ./texture
 */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include "texcompress/texcompress.h"
#include "texconv/qonvert.h"

enum { WIDTH = 64, HEIGHT = 48 };

/* Red grows to the right, green downwards. */
static void paint(uint8_t* rgba) {
    for (int y = 0; y < HEIGHT; ++y) {
        for (int x = 0; x < WIDTH; ++x) {
            uint8_t* pixel = rgba + 4 * (y * WIDTH + x);
            pixel[0] = (uint8_t)(255 * x / (WIDTH - 1));
            pixel[1] = (uint8_t)(255 * y / (HEIGHT - 1));
            pixel[2] = 128;
            pixel[3] = 255;
        }
    }
}

/* Converts to `format` at half the size; returns the pixels, to be freed, and their size. */
static uint8_t* convert(TQonvertImage* source, uint32_t format, uint32_t* size) {
    TQonvertImage half = {.nWidth = WIDTH / 2, .nHeight = HEIGHT / 2, .nFormat = format};
    Qonvert(source, &half); /* no pData: asks for the size */
    *size = half.nDataSize;
    half.pData = malloc(half.nDataSize);
    if (half.pData != NULL) {
        Qonvert(source, &half);
    }
    return half.pData;
}

/* Compresses the whole picture as ETC1. */
static uint8_t* compress(const uint8_t* rgba, uint32_t* size) {
    if (TxCompressQueryEncodeBufferSize(WIDTH, HEIGHT, 1, 0, TXC_FORMAT_ETC1, size) != TXC_OK) {
        return NULL;
    }
    uint8_t* blocks = malloc(*size);
    if (blocks != NULL && TxCompressEncode(rgba, 0xFF, 0xFF00, 0xFF0000, 0xFF000000, WIDTH, HEIGHT, 4 * WIDTH,
                                           0, TXC_FORMAT_ETC1, blocks, size) != TXC_OK) {
        free(blocks);
        return NULL;
    }
    return blocks;
}

int main(void) {
    static uint8_t rgba[4 * WIDTH * HEIGHT];
    paint(rgba);
    TQonvertImage source = {WIDTH, HEIGHT, FMT_RGBA8888, NULL, sizeof rgba, rgba};

    uint32_t converted_size = 0;
    uint32_t compressed_size = 0;
    uint8_t* converted = convert(&source, FMT_RGB565, &converted_size);
    uint8_t* compressed = compress(rgba, &compressed_size);
    const int good = converted != NULL && compressed != NULL;
    if (good) {
        printf("%d x %d RGB565: %u bytes, first pixel 0x%04x\n", WIDTH / 2, HEIGHT / 2,
               (unsigned)converted_size, (unsigned)(converted[0] | converted[1] << 8));
        printf("%d x %d ETC1: %u bytes\n", WIDTH, HEIGHT, (unsigned)compressed_size);
    } else {
        fputs("cannot convert\n", stderr);
    }
    free(converted);
    free(compressed);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
