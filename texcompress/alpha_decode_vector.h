// Decoding of alpha and 3Dc blocks on vectors. See vector_types.h for how it is compiled.
#pragma once

#include <cstddef>

#include "texcompress/tile.h"
#include "texcompress/vector_types.h"

namespace zorvan::texcompress {
namespace {

// The palette of an interpolated block is (w0 a0 + w1 a1 + offset) x scale, rounded down. The offsets
// hold the format's rounding and a half that keeps quotients away from whole numbers.
struct RampWeights {
    float w0[8], w1[8], offset[8], scale;
};

constexpr RampWeights kRamps[2] = {
    {{5, 0, 4, 3, 2, 1, 0, 0},
     {0, 5, 1, 2, 3, 4, 0, 0},
     {0.5f, 0.5f, 2.5f, 2.5f, 2.5f, 2.5f, 0.5f, 1275.5f},
     1.0f / 5.0f},
    {{7, 0, 6, 5, 4, 3, 2, 1},
     {0, 7, 1, 2, 3, 4, 5, 6},
     {0.5f, 0.5f, 3.5f, 3.5f, 3.5f, 3.5f, 3.5f, 3.5f},
     1.0f / 7.0f},
};

// An interpolated block's palette and indices.
struct InterpolatedBlock {
    uint32_t entries[8];
    uint32_t indices[2];  // of eight pixels each, 3 bits per pixel

    explicit InterpolatedBlock(const uint8_t* block) {
        const uint32_t word = LoadWord(block);
        const uint32_t a0 = word & 255;
        const uint32_t a1 = word >> 8 & 255;
        const RampWeights& ramp = kRamps[a0 > a1 ? 1 : 0];
        for (int i = 0; i < 8; i += kLanes) {
            const F32 sum = LoadVector<F32>(ramp.w0 + i) * static_cast<float>(a0) +
                            LoadVector<F32>(ramp.w1 + i) * static_cast<float>(a1) +
                            LoadVector<F32>(ramp.offset + i);
            StoreVector(entries + i, ToInt(sum * ramp.scale));
        }
        // Equal ends stand for one value, whatever the indices say.
        const uint64_t bits = a0 == a1 ? 0 : word >> 16 | static_cast<uint64_t>(LoadWord(block + 4)) << 16;
        indices[0] = static_cast<uint32_t>(bits & 0xFFFFFF);
        indices[1] = static_cast<uint32_t>(bits >> 24);
    }

    // Multiplies the palette by a factor and looks the pixels up in it.
    [[gnu::always_inline]] void LookUp(uint32_t factor, uint32_t* pixels) {
        for (uint32_t& entry : entries) {
            entry *= factor;
        }
        LookUpEight(entries, indices[0], pixels);
        LookUpEight(entries, indices[1], pixels + 8);
    }
};

// pixels |= others | constant
[[gnu::always_inline]] inline void JoinPixels(Tile& tile, const Tile& others, uint32_t constant) {
    for (int k = 0; k < 16; k += kLanes) {
        const auto joined = LoadVector<U32>(tile.pixels + k) | LoadVector<U32>(others.pixels + k) | constant;
        StoreVector(tile.pixels + k, joined);
    }
}

inline void DecodeAlphaInterpolatedOnVectors(const uint8_t* blocks, size_t count, size_t stride,
                                             Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        Tile alphas;
        InterpolatedBlock(blocks + i * stride).LookUp(1u << 24, alphas.pixels);
        JoinPixels(tiles[i], alphas, 0);
    }
}

inline void DecodeAti1nOnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        InterpolatedBlock(blocks + i * stride).LookUp(0x010101, tiles[i].pixels);
    }
}

inline void DecodeAti2nOnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        Tile greens;
        InterpolatedBlock(blocks + i * stride).LookUp(1u << 8, greens.pixels);
        InterpolatedBlock(blocks + i * stride + kBlockBytes).LookUp(1, tiles[i].pixels);
        JoinPixels(tiles[i], greens, 0xFF0000);
    }
}

// Each byte of the lower or the upper half behind as many zeros as make a word of them: shorts, then words.
[[gnu::always_inline]] inline Quad BytesToTop(const Bytes16& bytes, bool upperHalf, bool upperQuarter) {
    const Bytes16 zeros{};
    using Shorts8 = uint16_t __attribute__((vector_size(16)));
    const auto shorts = upperHalf ? Shorts8(__builtin_shufflevector(zeros, bytes, 0, 24, 1, 25, 2, 26, 3, 27,
                                                                    4, 28, 5, 29, 6, 30, 7, 31))
                                  : Shorts8(__builtin_shufflevector(zeros, bytes, 0, 16, 1, 17, 2, 18, 3, 19,
                                                                    4, 20, 5, 21, 6, 22, 7, 23));
    const Shorts8 none{};
    return upperQuarter ? Quad(__builtin_shufflevector(none, shorts, 0, 12, 1, 13, 2, 14, 3, 15))
                        : Quad(__builtin_shufflevector(none, shorts, 0, 8, 1, 9, 2, 10, 3, 11));
}

inline void DecodeAlphaExplicitOnVectors(const uint8_t* blocks, size_t count, size_t stride, Tile* tiles) {
    for (size_t i = 0; i < count; ++i) {
        uint64_t nibbles;
        std::memcpy(&nibbles, blocks + i * stride, kBlockBytes);
        // Each alpha is its nibble times 17.
        constexpr uint64_t kEven = 0x0F0F0F0F0F0F0F0F;
        const auto even = Bytes16(Pair{(nibbles & kEven) * 17, 0});
        const auto odd = Bytes16(Pair{(nibbles >> 4 & kEven) * 17, 0});
        const Bytes16 alphas =
            __builtin_shufflevector(even, odd, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        uint32_t* pixels = tiles[i].pixels;
        StoreVector(pixels, Quad(LoadVector<Quad>(pixels) | BytesToTop(alphas, false, false)));
        StoreVector(pixels + 4, Quad(LoadVector<Quad>(pixels + 4) | BytesToTop(alphas, false, true)));
        StoreVector(pixels + 8, Quad(LoadVector<Quad>(pixels + 8) | BytesToTop(alphas, true, false)));
        StoreVector(pixels + 12, Quad(LoadVector<Quad>(pixels + 12) | BytesToTop(alphas, true, true)));
    }
}

}  // namespace
}  // namespace zorvan::texcompress
