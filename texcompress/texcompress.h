/* The block codecs' interface: whole images to and from ATC, ETC1 and 3Dc blocks. C and C++.
 *
 * Every entry point works from memory to memory on the caller's thread, allocates nothing, keeps no
 * state between calls and takes no locks; calls from several threads are independent. The caller owns
 * every buffer; none is kept after the call. Buffers handed to one call must not overlap.
 *
 * Sizes are bytes, dimensions are pixels, all 32-bit unsigned. Blocks cover 4x4 pixels and are stored
 * in raster order without padding; a partial block at the right or bottom edge repeats the image's
 * last column or row. Bytes per block: 8, and 16 for TXC_FORMAT_ATI2N and for ATC and ETC1 with
 * TXC_FLAG_ALPHA, where an 8-byte alpha block precedes each colour block.
 *
 * Every entry point returns a TXC_OK or TXC_ERR_ status. All checks come before any output: a call that
 * returns an error other than TXC_ERR_LOW_QUALITY has changed neither output, header nor size word,
 * except that a size query stores 0 for a format that it does not accept.
 *
 * Nowhere checked: null pointers where none is offered as a query, the length of any source buffer,
 * and flag bits that are not listed here (they are ignored). */
#ifndef ZORVAN_TEXCOMPRESS_TEXCOMPRESS_H
#define ZORVAN_TEXCOMPRESS_TEXCOMPRESS_H

#include <stdint.h>

#if defined(__GNUC__)
#define TXC_API __attribute__((visibility("default")))
#else
#define TXC_API
#endif

/* Format codes. */
#define TXC_FORMAT_ATC_LEGACY 0xCCC40001u /* ATC with both end colours RGB565; ATI_TC entry points only */
#define TXC_FORMAT_ATC 0xCCC40002u        /* ATC as in AMD_compressed_ATC_texture */
#define TXC_FORMAT_ETC1 0xEC000001u       /* ETC1 as in OES_compressed_ETC1_RGB8_texture, big-endian words */
#define TXC_FORMAT_ATI1N 0x31495441u      /* "ATI1": 3Dc with one channel */
#define TXC_FORMAT_ATI2N 0x32495441u      /* "ATI2": 3Dc with two channels */

/* Flag bits. TXC_FLAG_RGB and TXC_FLAG_ALPHA exclude each other when encoding; decoders do not check. */
#define TXC_FLAG_RGB 1u                 /* opaque colour */
#define TXC_FLAG_ALPHA 2u               /* alpha blocks present; decoded pixels have 4 bytes instead of 3 */
#define TXC_FLAG_INTERPOLATED_ALPHA 16u /* alpha blocks interpolate two 8-bit values; else 4 bits a pixel */

/* Byte order of decoded pixels: where channels 0 and 2 go. Channel 1 goes to byte 1, alpha to byte 3. */
#define TXC_ORDER_RGB 1u /* channel 0 at byte 0, channel 2 at byte 2 */
#define TXC_ORDER_BGR 2u /* channel 2 at byte 0, channel 0 at byte 2 */

/* Status codes. */
#define TXC_OK 0u
#define TXC_ERR_BUFFER_TOO_SMALL 2u /* the output buffer holds fewer bytes than needed */
#define TXC_ERR_BAD_FLAGS 3u        /* TXC_FLAG_RGB and TXC_FLAG_ALPHA together */
#define TXC_ERR_BAD_FORMAT 4u       /* this entry point does not accept the format code */
#define TXC_ERR_BAD_ORDER 5u        /* the byte order is neither TXC_ORDER_RGB nor TXC_ORDER_BGR */
#define TXC_ERR_LOW_QUALITY 6u      /* the fast encoder finished, but the error is above its limits */

#ifdef __cplusplus
extern "C" {
#endif

/* What the ATI_TC encoders write and the ATI_TC decoders read: 20 bytes, host byte order. There is no
 * magic number; nFormat is the only identification. */
typedef struct _ATITC_HEADER { /* NOLINT(bugprone-reserved-identifier) */
    uint32_t nFormat;          /* TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY */
    uint32_t nWidth;           /* pixels */
    uint32_t nHeight;          /* pixels */
    uint32_t nFlags;           /* the flags given to the encoder */
    uint32_t nDataOffset;      /* 20: bytes from the header to the blocks where both share one buffer */
} _ATITC_HEADER;               /* NOLINT(bugprone-reserved-identifier) */

/* Source pixels of the encoders: src points at the top left pixel, rows are pitch bytes apart. The four
 * masks describe a little-endian 32-bit word; pixels are (set bits of all masks + 7) / 8 bytes apart. Of
 * the word, only the bytes that the masks reach are read: masks with gaps may reach into the next pixel,
 * for the last one beyond the image. A channel of up to 8 bits is widened to 8 by one repetition of its
 * bits; a wider one gives 0. Alpha is read only with TXC_FLAG_ALPHA, from a mask of 0 bits (opaque), 1, 4
 * or 8 bits; any other width gives 0. */

/* Encodes one image as TXC_FORMAT_ATC, _ETC1, _ATI1N (the red channel) or _ATI2N (red and green).
 * *dstSize holds the capacity of dst on entry and the bytes written on success, which are those that
 * TxCompressQueryEncodeBufferSize gives for one level. flags: TXC_FLAG_ALPHA adds alpha blocks to ATC
 * and ETC1, of the kind that TXC_FLAG_INTERPOLATED_ALPHA chooses; 3Dc ignores both.
 * Fails with TXC_ERR_BAD_FLAGS, TXC_ERR_BAD_FORMAT or TXC_ERR_BUFFER_TOO_SMALL, tested in this order. */
TXC_API uint32_t TxCompressEncode(const void* src, uint32_t maskR, uint32_t maskG, uint32_t maskB,
                                  uint32_t maskA, uint32_t width, uint32_t height, uint32_t pitch,
                                  uint32_t flags, uint32_t format, void* dst, uint32_t* dstSize);

/* Decodes mip level `level` (0 is the base of width x height) of levels that lie back to back from src,
 * into packed pixels of 3 bytes, or 4 with TXC_FLAG_ALPHA. Level sizes are halved and at least 1.
 * dstSize is the capacity of dst. 3Dc decoded with TXC_FLAG_ALPHA has 0 in byte 3.
 * Fails with TXC_ERR_BAD_FORMAT, TXC_ERR_BUFFER_TOO_SMALL or TXC_ERR_BAD_ORDER, tested in this order.
 * Not checked: that a level beyond the last exists (the blocks after the last level are read). */
TXC_API uint32_t TxCompressDecode(uint32_t format, uint32_t width, uint32_t height, uint32_t flags,
                                  const void* src, uint32_t level, uint32_t order, void* dst,
                                  uint32_t dstSize);

/* TxCompressDecode with format, width, height and flags taken from the four 32-bit words at record
 * (host byte order, any alignment), the first four fields of an _ATITC_HEADER. */
TXC_API uint32_t TxCompressDecodeFileData(const void* record, const void* src, uint32_t level, uint32_t order,
                                          void* dst, uint32_t dstSize);

/* Stores in *size the compressed size of the first `levels` mip levels; more levels than the chain has
 * (256 x 64 has 9) count as the whole chain. Sizes above 32 bits wrap; such images cannot be encoded.
 * Fails with TXC_ERR_BAD_FORMAT, having stored 0. */
TXC_API uint32_t TxCompressQueryEncodeBufferSize(uint32_t width, uint32_t height, uint32_t levels,
                                                 uint32_t flags, uint32_t format, uint32_t* size);

/* Stores in *size the decoded size width x height x 3, or x 4 for ATC and ETC1 when hasAlpha is not 0.
 * Sizes above 32 bits wrap. Fails with TXC_ERR_BAD_FORMAT, having stored 0. */
TXC_API uint32_t TxCompressQueryDecodeBufferSize(uint32_t width, uint32_t height, uint32_t format,
                                                 uint32_t hasAlpha, uint32_t* size);

/* Encodes one image as TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY, with explicit 4-bit alpha where
 * TXC_FLAG_ALPHA is set, and fills all five fields of *header. *dstSize is the capacity of dst and is
 * left as it is. A null dst asks for the size only: it is stored in *dstSize, header is not touched.
 * Sides are signed 32-bit numbers here: an image with a side of 2^31 or more has no blocks. Where its size,
 * which wraps, is within *dstSize, the header is filled, nothing is encoded, and TXC_OK comes back: callers
 * that may meet such sides check them first. Blocks that do not fit are refused, wrapped or not.
 * Fails with TXC_ERR_BAD_FLAGS, TXC_ERR_BAD_FORMAT or TXC_ERR_BUFFER_TOO_SMALL, tested in this order. */
TXC_API uint32_t ATI_TC_EncodeImage_Seperate_Header(const void* src, uint32_t maskR, uint32_t maskG,
                                                    uint32_t maskB, uint32_t maskA, uint32_t width,
                                                    uint32_t height, uint32_t pitch, uint32_t flags,
                                                    uint32_t format, _ATITC_HEADER* header, void* dst,
                                                    uint32_t* dstSize);

/* As ATI_TC_EncodeImage_Seperate_Header, with one split of each block in place of the full search.
 * Pixels must have 2, 3 or 4 bytes, all others read as 0; bits beyond a pixel's bytes are 0. Returns
 * TXC_ERR_LOW_QUALITY, after complete output, when the mean squared error of the blocks (sums over 16 pixels
 * and 3 channels, mean rounded down) is above 249 or the largest above 3699. */
TXC_API uint32_t ATI_TC_EncodeImageFast_Seperate_Header(const void* src, uint32_t maskR, uint32_t maskG,
                                                        uint32_t maskB, uint32_t maskA, uint32_t width,
                                                        uint32_t height, uint32_t pitch, uint32_t flags,
                                                        uint32_t format, _ATITC_HEADER* header, void* dst,
                                                        uint32_t* dstSize);

/* ATI_TC_EncodeImage_Seperate_Header with the header at buffer and the blocks 20 bytes after it.
 * Beware: the size word that it uses is not *dstSize but dstSize[-20], the word 80 bytes before it.
 * That word is the capacity for the blocks alone, without the header, and grows by 20 in every call,
 * whatever the call returns. *dstSize itself is neither read nor written; dstSize must therefore point
 * into an array with at least twenty words before it. Prefer the form with a separate header. */
TXC_API uint32_t ATI_TC_EncodeImage(const void* src, uint32_t maskR, uint32_t maskG, uint32_t maskB,
                                    uint32_t maskA, uint32_t width, uint32_t height, uint32_t pitch,
                                    uint32_t flags, uint32_t format, void* buffer, uint32_t* dstSize);

/* Decodes blocks of TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY as *header describes them (nDataOffset is
 * not used) into packed pixels of 3 bytes, or 4 with TXC_FLAG_ALPHA in nFlags; alpha blocks are always
 * explicit. *dstSize is the capacity of dst and is left as it is. A null dst asks for the size only,
 * which is stored in *dstSize.
 * Fails with TXC_ERR_BAD_FORMAT, TXC_ERR_BUFFER_TOO_SMALL or TXC_ERR_BAD_ORDER, tested in this order. */
TXC_API uint32_t ATI_TC_DecodeImage_Seperate_Header(const _ATITC_HEADER* header, const void* src,
                                                    uint32_t order, void* dst, uint32_t* dstSize);

/* ATI_TC_DecodeImage_Seperate_Header with the header at buffer (any alignment) and the blocks
 * nDataOffset bytes after it. Not checked: that nDataOffset lies inside the buffer. */
TXC_API uint32_t ATI_TC_DecodeImage(const void* buffer, uint32_t order, void* dst, uint32_t* dstSize);

#ifdef __cplusplus
}
#endif

#endif /* ZORVAN_TEXCOMPRESS_TEXCOMPRESS_H */
