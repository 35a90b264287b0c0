// ATC colour blocks: the colours' encodings, the palette and the decoders.
//
// A block is two words. Word 0 holds colour 0 in its low and colour 1 in its high half, word 1 the
// 2-bit palette index of pixel k at bits 2k and 2k+1. Colour 0 of TXC_FORMAT_ATC has a mode bit above
// five bits per channel; all other colours are RGB565.
#pragma once

#include <array>
#include <cstdint>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// The four colours that a block's indices choose from.
using Palette = std::array<Rgb, 4>;

// Squared distance of two colours, 0..195075.
uint32_t ErrSquared(const Rgb& a, const Rgb& b);

// Luminance 0..255 as the encoders split by it.
uint32_t Luminance(const Rgb& color);

// Nearest RGB565 code: of the truncated code and the one that differs in its lowest bit, per channel
// the one that expands nearer, the truncated one on a tie.
uint32_t Color888To565(const Rgb& color);
// Expands an RGB565 code by repeating each channel's top bits.
Rgb Color565To888(uint32_t code);

// As Color888To565 with five bits per channel and the mode bit in bit 15.
uint32_t Color888To1555(const Rgb& color, bool modeBit);
// Expands the five-bit channels of a 1555 code and returns its mode bit.
bool Color1555To888(uint32_t code, Rgb& color);

// The two colours at 3/8 and 5/8 of the way from first to last.
void DeriveMiddleColors(const Rgb& first, const Rgb& last, Rgb& nearFirst, Rgb& nearLast);
// The colour below medHigh in a palette that begins with black: medHigh less a quarter of high, at
// least 0 per channel.
Rgb DeriveMedLowFromHighAndMedHighColors(const Rgb& high, const Rgb& medHigh);

// Builds the palette of a block. format is TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY.
void SetDecoderColors(uint32_t color0, uint32_t color1, Palette& palette, uint32_t format);

// Decodes one block of TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY.
void DecodeRGBBlock(RgbTile& out, uint32_t indexWord, uint32_t color0, uint32_t color1, uint32_t format);
// Decodes one block of TXC_FORMAT_ATC.
void atiDecodeRGBBlockATITC(RgbTile& out, uint32_t indexWord, uint32_t color0, uint32_t color1);

}  // namespace zorvan::texcompress
