// Writing of decoded tiles by whole rows of four pixels. See vector_types.h for how it is compiled.
#ifndef ZORVAN_TEXCOMPRESS_SCATTER_VECTOR_H
#define ZORVAN_TEXCOMPRESS_SCATTER_VECTOR_H

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

/// Stores four pixels of three bytes, and nothing beyond them.
[[gnu::always_inline]] inline void StoreTriples(uint8_t* bytes, const Quad& pixels) {
#ifdef __SSSE3__
    constexpr char kDrop = -1;
    const __m128i packed =
        _mm_shuffle_epi8(LoadVector<__m128i>(&pixels),
                         _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kDrop, kDrop, kDrop, kDrop));
    std::memcpy(bytes, &packed, 12);
#else
    uint64_t pairs[2];
    std::memcpy(pairs, &pixels, sizeof(pairs));
    for (uint64_t& pair : pairs) {
        pair = (pair & 0xFFFFFF) | (pair >> 8 & 0xFFFFFF000000);
    }
    const uint64_t first = pairs[0] | pairs[1] << 48;
    std::memcpy(bytes, &first, 8);
    StoreWord(bytes + 8, static_cast<uint32_t>(pairs[1] >> 16));
#endif
}

template <uint32_t BytesPerPixel, bool Swap>
inline void ScatterWholeTiles(const Tile* tiles, size_t count, uint8_t* corner, size_t pitch) {
    for (size_t row = 0; row < kTileSize; ++row) {
        uint8_t* bytes = corner + row * pitch;
        for (size_t i = 0; i < count; ++i) {
            auto pixels = LoadVector<Quad>(tiles[i].pixels + row * kTileSize);
            if (Swap) {
                pixels = SwapRedAndBlue(pixels);
            }
            if (BytesPerPixel == 4) {
                StoreVector(bytes, pixels);
            } else {
                StoreTriples(bytes, pixels);
            }
            bytes += kTileSize * BytesPerPixel;
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
        swap ? ScatterWholeTiles<4, true>(tiles, whole, corner, pitch)
             : ScatterWholeTiles<4, false>(tiles, whole, corner, pitch);
    } else {
        swap ? ScatterWholeTiles<3, true>(tiles, whole, corner, pitch)
             : ScatterWholeTiles<3, false>(tiles, whole, corner, pitch);
    }
    for (size_t i = whole; i < count; ++i) {
        ScatterTile(tiles[i], target, x + static_cast<uint32_t>(i) * kTileSize, y);
    }
}

}  // namespace
}  // namespace zorvan::texcompress

#endif  // ZORVAN_TEXCOMPRESS_SCATTER_VECTOR_H
