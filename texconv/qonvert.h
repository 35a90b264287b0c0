/*
 * The texture converter's C interface: one image descriptor in, one out.
 *
 * Qonvert turns an image of any of the 40 pixel formats below into any other, and on the way
 * mirrors, flips, scales or builds a normal map. It knows no files and no GL, starts no
 * threads, keeps no state between calls and may run on several threads on different images.
 *
 * Usable from C and C++.
 */
#ifndef ZORVAN_TEXCONV_QONVERT_H
#define ZORVAN_TEXCONV_QONVERT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Pixel format codes (TQonvertImage::nFormat). 0, 26 and every value above 41 are unsupported.
 * Layouts, masks and lossy rules of every code: docs/formats.md and texconv/format_table.h.
 */
enum TQonvertFormat {
    /* Plain: little-endian pixel words, described by channel masks. */
    FMT_RGBA8888 = 1,
    FMT_RGB888 = 2,
    FMT_RGB565 = 3,
    FMT_RGBA5551 = 4,
    FMT_RGBA4444 = 5,
    FMT_LA88 = 6,
    FMT_L8 = 7,
    FMT_A8 = 8,
    /* Palette: a colour table, then packed indices. */
    FMT_P8_RGBA8888 = 9,
    FMT_P8_RGB888 = 10,
    FMT_P8_RGBA5551 = 11,
    FMT_P8_RGBA4444 = 12,
    FMT_P8_RGB565 = 13,
    FMT_P4_RGBA8888 = 14,
    FMT_P4_RGB888 = 15,
    FMT_P4_RGBA5551 = 16,
    FMT_P4_RGBA4444 = 17,
    FMT_P4_RGB565 = 18,
    FMT_P1_RGBA8888 = 19,
    /* Compressed: 4 x 4 blocks. */
    FMT_ATITC_RGBA_EXPLICIT = 20,
    FMT_ATITC_RGB = 21,
    FMT_ATITC_RGBA_INTERPOLATED = 22,
    FMT_ETC1_RGB8 = 23,
    FMT_3DC_X = 24,
    FMT_3DC_XY = 25,
    /* Float: packed 32-bit IEEE floats or 16-bit half floats. */
    FMT_RGBA32F = 27,
    FMT_RGB32F = 28,
    FMT_LA32F = 29,
    FMT_L32F = 30,
    FMT_A32F = 31,
    FMT_RGBA16F = 32,
    FMT_RGB16F = 33,
    FMT_LA16F = 34,
    FMT_L16F = 35,
    FMT_A16F = 36,
    /* Plain again: swapped bytes and wide luminance (whose channels read and write as 0). */
    FMT_BGRA8888 = 37,
    FMT_L16 = 38,
    FMT_L24 = 39,
    FMT_L24A8 = 40,
    FMT_L32 = 41
};

/* The word that a version query (nMode 2) stores. */
enum { QONVERT_VERSION = 0x00020002 };

/*
 * Optional overrides and options of an image. In words nStride to nMaskAlpha, zero means "the
 * format's own value"; every other word is taken as it stands, zero included. So a zeroed
 * record equals no record except for nBumpmapHeight, which is 10 without a record.
 */
typedef struct _TFormatFlags { /* NOLINT(bugprone-reserved-identifier) */
    /* Bytes from one row to the next; default (bits per pixel * nWidth + 7) / 8. Counts in the
       size of plain and float images. Float pixels stay packed, and a palette destination
       ignores it. */
    uint32_t nStride;
    /* Bits of the little-endian pixel word (or palette entry) that hold each channel. Palette
       destinations, float and compressed images ignore them. */
    uint32_t nMaskRed;
    uint32_t nMaskGreen;
    uint32_t nMaskBlue;
    uint32_t nMaskAlpha;
    /* Orientation: the image is mirrored (flipped) when source and destination disagree on
       zero or nonzero. */
    uint32_t nMirrorX;
    uint32_t nFlipY;
    /* The words below, except nMode, are read from the destination only. */
    /* 1 selects the fast encoder of FMT_ATITC_RGB and FMT_ATITC_RGBA_EXPLICIT. */
    uint32_t nFastCompress;
    /* Filter when the sizes differ: 0, 2 box; 1 point; 3 four samples; 4 cubic; 5 box with a
       message per pixel; any other gives transparent black. */
    uint32_t nScaleFilter;
    /* Height-to-normal kernel: 0 none; 1 diagonal; 2 Sobel; 3 Prewitt; any other gives a flat
       normal map. Ignored between two float formats. */
    uint32_t nBumpmap;
    /* Strength of the slopes in tenths, as a signed number. */
    uint32_t nBumpmapHeight;
    /* Nonzero wraps heights around the image's edges, zero repeats the edge. */
    uint32_t nBumpmapWrap;
    /* In either descriptor: 1 prints no messages; 2 asks for the version only. */
    uint32_t nMode;
} TFormatFlags;

/* One image. The caller fills in every field and owns both pointers. */
typedef struct _TQonvertImage { /* NOLINT(bugprone-reserved-identifier) */
    /* Size in pixels. */
    uint32_t nWidth;
    uint32_t nHeight;
    /* One of TQonvertFormat. */
    uint32_t nFormat;
    /* May be null. */
    TFormatFlags* pFormatFlags;
    /* Bytes at pData. For a destination, see Qonvert. */
    uint32_t nDataSize;
    /* Pixels, any alignment. A null destination pData asks for the size only. */
    uint8_t* pData;
} TQonvertImage;

/*
 * Converts `source` into the caller's buffer `destination->pData`, scaling to the destination's
 * size. Returns 0, whatever happened: problems are lines "QXTextureConverter error: ..." on
 * standard error, unless either nMode is 1.
 *
 * - With a null `destination->pData` only `destination->nDataSize` is written: the bytes that
 *   the destination needs (modulo 2^32).
 * - With nMode 2 in either descriptor the four bytes of QONVERT_VERSION are stored at
 *   `destination->pData`, which must have room for them; nothing is converted.
 * - Otherwise `destination->nDataSize` is the room at pData. Plain formats (except packed
 *   FMT_RGBA8888, which leaves it) set it to height * stride. FMT_ATITC_RGBA_INTERPOLATED, ETC1
 *   and 3Dc set it to the bytes written; the other ATITC codes, palette and float formats
 *   leave it. Where working memory cannot be had it is 0, and no byte is written.
 *
 * Source and destination may share one buffer that is large enough for both.
 *
 * NOT checked: an nDataSize that is smaller than the format needs is reported, but that many
 * bytes are read or written all the same (only block encoders refuse). Bytes beyond both
 * nDataSize and the size that the format needs are neither read (they count as 0) nor written.
 * A null source pData is reported and leaves the destination as it was. The palette quantizer
 * ends the process when it runs out of memory.
 */
__attribute__((visibility("default"))) uint32_t Qonvert(TQonvertImage* source, TQonvertImage* destination);

#ifdef __cplusplus
} /* extern "C" */
#endif

#ifdef __cplusplus
static_assert(sizeof(TFormatFlags) == 52, "thirteen 32-bit words");
static_assert(sizeof(void*) != 4 || sizeof(TQonvertImage) == 24, "six 32-bit words on 32-bit targets");
#else
_Static_assert(sizeof(TFormatFlags) == 52, "thirteen 32-bit words");
_Static_assert(sizeof(void*) != 4 || sizeof(TQonvertImage) == 24, "six 32-bit words on 32-bit targets");
#endif

#endif /* ZORVAN_TEXCONV_QONVERT_H */
