// Source images of the encoders: pixels described by channel masks, gathered into tiles.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// Population count.
constexpr uint32_t NumBitsSet(uint32_t mask) {
    return static_cast<uint32_t>(std::popcount(mask));
}

// Index of the lowest set bit, 32 for an empty mask.
constexpr uint32_t FirstBitSet(uint32_t mask) {
    return static_cast<uint32_t>(std::countr_zero(mask));
}

// One channel of a pixel word.
class ChannelMask {
  public:
    explicit ChannelMask(uint32_t mask) : mask_(mask), bits_(NumBitsSet(mask)), shift_(FirstBitSet(mask)) {}

    uint32_t Bits() const { return bits_; }

    // The channel's value at the bottom of the result; 0 for an empty mask.
    uint32_t Extract(uint32_t word) const { return bits_ == 0 ? 0 : (word & mask_) >> shift_; }
    // A colour channel widened to 8 bits: its bits at the top, then once more below them. A mask
    // wider than 8 bits gives 0.
    uint8_t Widen(uint32_t word) const;

  private:
    uint32_t mask_, bits_, shift_;
};

// What the gathered alphas are.
enum class AlphaDepth {
    kNone,       // not gathered
    kFourBits,   // 0..15
    kEightBits,  // 0..255
};

// How many bytes of a pixel become its word.
enum class PixelFetch {
    kAnySize,         // all bytes that the masks reach, be they the next pixel's
    kTwoToFourBytes,  // those of the pixel, but none of a pixel of another size: its word is 0
};

// An image in the caller's memory. Only bytes of its pixels are ever read, and what masks reach beyond them.
class SourcePixels {
  public:
    // width and height are pixels, pitch is the distance of rows in bytes.
    SourcePixels(const void* pixels, uint32_t maskR, uint32_t maskG, uint32_t maskB, uint32_t maskA,
                 uint32_t width, uint32_t height, uint32_t pitch, AlphaDepth alphaDepth, PixelFetch fetch);

    uint32_t Width() const { return width_; }
    uint32_t Height() const { return height_; }

    // Fills a tile from the 4x4 pixels at (x, y), which lies inside the image. Pixels beyond the
    // right or bottom edge repeat the last column or row.
    void Gather(uint32_t x, uint32_t y, Tile& tile) const;

    // Fills count tiles side by side from (x, y) on, by whole rows where the pixels' bytes are R, G, B
    // and A. Then alphas are gathered whether they are asked for or not.
    void GatherRow(uint32_t x, uint32_t y, size_t count, Tile* tiles) const;

  private:
    uint32_t PixelWord(uint32_t x, uint32_t y) const;
    uint8_t Alpha(uint32_t word) const;

    const uint8_t* pixels_;
    uint32_t width_, height_, pitch_;
    ChannelMask r_, g_, b_, a_;
    uint32_t bytesPerPixel_, bytesRead_;
    AlphaDepth alphaDepth_;
    bool plainBytes_;  // pixels are bytes R, G, B, A
};

}  // namespace zorvan::texcompress
