// Writing of decoded tiles by whole rows of four pixels. See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/pixel_target.h"
#include "texcompress/texcompress.h"
#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

[[gnu::always_inline]] inline Quad SwapRedAndBlue(const Quad& pixels) {
    return (pixels & static_cast<int32_t>(0xFF00FF00)) | (pixels >> 16 & 255) | (pixels & 255) << 16;
}

// Two pixels of three bytes in the lower six bytes of either half.
[[gnu::always_inline]] inline Pair PackTriples(const Quad& pixels) {
    return (Pair(pixels) & 0xFFFFFF) | (Pair(pixels) >> 8 & 0xFFFFFF000000);
}

// Stores four pixels of three bytes, and nothing beyond them.
[[gnu::always_inline]] inline void StoreTriples(uint8_t* bytes, const Quad& pixels) {
    const Pair packed = PackTriples(pixels);
    const uint64_t first = packed[0] | packed[1] << 48;
    std::memcpy(bytes, &first, 8);
    StoreWord(bytes + 8, static_cast<uint32_t>(packed[1] >> 16));
}

// Stores four times four pixels of three bytes.
[[gnu::always_inline]] inline void StoreTriples(uint8_t* bytes, const Quad (&pixels)[4]) {
#ifdef __SSSE3__
    const auto order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    __m128i packed[4];
    for (int i = 0; i < 4; ++i) {
        packed[i] = _mm_shuffle_epi8(LoadVector<__m128i>(&pixels[i]), order);
    }
    StoreVector(bytes, _mm_or_si128(packed[0], _mm_slli_si128(packed[1], 12)));
    StoreVector(bytes + 16, _mm_or_si128(_mm_srli_si128(packed[1], 4), _mm_slli_si128(packed[2], 8)));
    StoreVector(bytes + 32, _mm_or_si128(_mm_srli_si128(packed[2], 8), _mm_slli_si128(packed[3], 4)));
#else
    const Pair packed[4] = {PackTriples(pixels[0]), PackTriples(pixels[1]), PackTriples(pixels[2]),
                            PackTriples(pixels[3])};
    // The first and the fifth six bytes, the second and the sixth, and so on; these make three words each.
    const Pair first = __builtin_shufflevector(packed[0], packed[2], 0, 2);
    const Pair second = __builtin_shufflevector(packed[0], packed[2], 1, 3);
    const Pair third = __builtin_shufflevector(packed[1], packed[3], 0, 2);
    const Pair fourth = __builtin_shufflevector(packed[1], packed[3], 1, 3);
    const Pair words[3] = {first | second << 48, second >> 16 | third << 32, third >> 32 | fourth << 16};
    StoreVector(bytes, Pair(__builtin_shufflevector(words[0], words[1], 0, 2)));
    StoreVector(bytes + 16, Pair(__builtin_shufflevector(words[2], words[0], 0, 3)));
    StoreVector(bytes + 32, Pair(__builtin_shufflevector(words[1], words[2], 1, 3)));
#endif
}

// Four pixels of a tile's row in the target's order.
template <bool Swap>
[[gnu::always_inline]] inline Quad PixelsOfRow(const Tile& tile, size_t row) {
    const auto pixels = LoadVector<Quad>(tile.pixels + row * kTileSize);
    return Swap ? SwapRedAndBlue(pixels) : pixels;
}

template <bool Swap>
inline void ScatterTriples(const Tile* tiles, size_t count, uint8_t* corner, size_t pitch) {
    for (size_t row = 0; row < kTileSize; ++row) {
        uint8_t* bytes = corner + row * pitch;
        size_t i = 0;
        for (; i + 4 <= count; i += 4) {
            const Quad pixels[4] = {PixelsOfRow<Swap>(tiles[i], row), PixelsOfRow<Swap>(tiles[i + 1], row),
                                    PixelsOfRow<Swap>(tiles[i + 2], row),
                                    PixelsOfRow<Swap>(tiles[i + 3], row)};
            StoreTriples(bytes + 12 * i, pixels);
        }
        for (; i < count; ++i) {
            StoreTriples(bytes + 12 * i, PixelsOfRow<Swap>(tiles[i], row));
        }
    }
}

template <bool Swap>
inline void ScatterQuads(const Tile* tiles, size_t count, uint8_t* corner, size_t pitch) {
    for (size_t row = 0; row < kTileSize; ++row) {
        for (size_t i = 0; i < count; ++i) {
            StoreVector(corner + row * pitch + 16 * i, PixelsOfRow<Swap>(tiles[i], row));
        }
    }
}

inline void ScatterRows(const Tile* tiles, size_t count, const PixelTarget& target, uint32_t x, uint32_t y) {
    const size_t inside = target.height - y < kTileSize ? 0 : (target.width - x) / kTileSize;
    const size_t whole = inside < count ? inside : count;
    const size_t pitch = static_cast<size_t>(target.width) * target.bytesPerPixel;
    uint8_t* corner = target.pixels + y * pitch + static_cast<size_t>(x) * target.bytesPerPixel;
    const bool swap = target.order == TXC_ORDER_BGR;
    if (target.bytesPerPixel == 4) {
        swap ? ScatterQuads<true>(tiles, whole, corner, pitch)
             : ScatterQuads<false>(tiles, whole, corner, pitch);
    } else {
        swap ? ScatterTriples<true>(tiles, whole, corner, pitch)
             : ScatterTriples<false>(tiles, whole, corner, pitch);
    }
    for (size_t i = whole; i < count; ++i) {
        ScatterTile(tiles[i], target, x + static_cast<uint32_t>(i) * kTileSize, y);
    }
}

}  // namespace
}  // namespace zorvan::texcompress
