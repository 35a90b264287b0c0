#include "texcompress/source_pixels.h"

#include <algorithm>

namespace zorvan::texcompress {

uint8_t ChannelMask::Widen(uint32_t word) const {
    if (bits_ > 8) {
        return 0;
    }
    const uint32_t value = Extract(word) << (8 - bits_) & 0xFF;
    return static_cast<uint8_t>(value | value >> bits_);
}

SourcePixels::SourcePixels(const void* pixels, uint32_t maskR, uint32_t maskG, uint32_t maskB, uint32_t maskA,
                           uint32_t width, uint32_t height, uint32_t pitch, AlphaDepth alphaDepth,
                           PixelFetch fetch)
    : pixels_(static_cast<const uint8_t*>(pixels)),
      width_(width),
      height_(height),
      pitch_(pitch),
      r_(maskR),
      g_(maskG),
      b_(maskB),
      a_(maskA),
      bytesPerPixel_((r_.Bits() + g_.Bits() + b_.Bits() + a_.Bits() + 7) / 8),
      bytesRead_(static_cast<uint32_t>(std::bit_width(maskR | maskG | maskB | maskA) + 7) / 8),
      alphaDepth_(alphaDepth),
      plainBytes_(maskR == 0xFFu && maskG == 0xFF00u && maskB == 0xFF0000u && maskA == 0xFF000000u) {
    if (fetch == PixelFetch::kTwoToFourBytes) {
        bytesRead_ = bytesPerPixel_ >= 2 && bytesPerPixel_ <= 4 ? bytesPerPixel_ : 0;
    }
}

uint32_t SourcePixels::PixelWord(uint32_t x, uint32_t y) const {
    const uint8_t* pixel =
        pixels_ + static_cast<size_t>(y) * pitch_ + static_cast<size_t>(x) * bytesPerPixel_;
    uint32_t word = 0;
    for (uint32_t i = 0; i < bytesRead_; ++i) {
        word |= static_cast<uint32_t>(pixel[i]) << (8 * i);
    }
    return word;
}

uint8_t SourcePixels::Alpha(uint32_t word) const {
    const bool eightBits = alphaDepth_ == AlphaDepth::kEightBits;
    const uint8_t opaque = eightBits ? 255 : 15;
    const uint32_t value = a_.Extract(word);
    switch (a_.Bits()) {
        case 0:
            return opaque;
        case 1:
            return value != 0 ? opaque : 0;
        case 4:
            return static_cast<uint8_t>(eightBits ? value << 4 | value : value);
        case 8:
            return static_cast<uint8_t>(eightBits ? value : value >> 4);
        default:
            return 0;
    }
}

void SourcePixels::Gather(uint32_t x, uint32_t y, Tile& tile) const {
    for (uint32_t k = 0; k < kTilePixels; ++k) {
        // The distances to the edges are compared, as x and y may be near the end of their range.
        const uint32_t column = x + std::min(k % kTileSize, width_ - 1 - x);
        const uint32_t row = y + std::min(k / kTileSize, height_ - 1 - y);
        const uint32_t word = PixelWord(column, row);
        const uint32_t alpha = alphaDepth_ == AlphaDepth::kNone ? 0 : Alpha(word);
        tile.pixels[k] = r_.Widen(word) | static_cast<uint32_t>(g_.Widen(word)) << 8 |
                         static_cast<uint32_t>(b_.Widen(word)) << 16 | alpha << 24;
    }
}

void SourcePixels::GatherRow(uint32_t x, uint32_t y, size_t count, Tile* tiles) const {
    const bool wholeRows = plainBytes_ && height_ - y >= kTileSize;
    const size_t wholeTiles = wholeRows ? std::min<size_t>(count, (width_ - x) / kTileSize) : 0;
    const uint8_t* corner = pixels_ + static_cast<size_t>(y) * pitch_ + static_cast<size_t>(x) * 4;
    for (size_t i = 0; i < wholeTiles; ++i) {
        for (uint32_t k = 0; k < kTilePixels; ++k) {
            const size_t row = k / kTileSize;
            const size_t column = i * kTileSize + k % kTileSize;
            tiles[i].pixels[k] = LoadWord(corner + row * pitch_ + column * 4);
        }
        if (alphaDepth_ == AlphaDepth::kFourBits) {
            for (uint32_t& word : tiles[i].pixels) {
                word = (word & 0xFFFFFF) | (word >> 4 & 0xF000000);
            }
        }
    }
    for (size_t i = wholeTiles; i < count; ++i) {
        Gather(x + static_cast<uint32_t>(i) * kTileSize, y, tiles[i]);
    }
}

}  // namespace zorvan::texcompress
