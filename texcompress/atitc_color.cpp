#include "texcompress/atitc_color.h"

#include <algorithm>
#include <cstdlib>

#include "texcompress/texcompress.h"

namespace zorvan::texcompress {
namespace {

constexpr Rgb kBlack{0, 0, 0};

// Widens a code of 4 < bits < 8 bits to 8 by repeating its top bits.
constexpr uint8_t ExpandCode(uint32_t code, uint32_t bits) {
    return static_cast<uint8_t>(code << (8 - bits) | code >> (2 * bits - 8));
}

// The code of the given width whose expansion is nearest to an 8-bit value. The alternative to the
// truncated code differs only in the lowest bit and keeps the low bits of the truncated code's
// expansion, so it is an approximation of the neighbouring code.
constexpr uint32_t NearestCode(uint32_t value, uint32_t bits) {
    const uint32_t lowestBit = 1u << (8 - bits);
    const uint32_t fieldMask = 0x100u - lowestBit;
    const uint32_t truncated = (value & fieldMask) | value >> bits;
    const uint32_t alternative = truncated ^ lowestBit;
    const auto distance = [value](uint32_t other) {
        return std::abs(static_cast<int>(value) - static_cast<int>(other));
    };
    return (distance(alternative) < distance(truncated) ? alternative : value) >> (8 - bits);
}

// Whether two RGB565 colours tell the legacy decoder to use black: only where colour 0 is brighter
// than colour 1 by more than quantization can explain.
bool IsLegacyBlackMode(const Rgb& c0, const Rgb& c1) {
    const uint32_t floor0 = (19u * (c0.r & 0xF8u) + 38u * (c0.g & 0xFCu) + 7u * (c0.b & 0xF8u)) >> 6;
    const uint32_t ceiling1 = (19u * (c1.r | 7u) + 38u * (c1.g | 3u) + 7u * (c1.b | 7u)) >> 6;
    return floor0 > ceiling1;
}

void SetNormalPalette(const Rgb& c0, const Rgb& c1, Palette& palette) {
    palette[0] = c0;
    DeriveMiddleColors(c0, c1, palette[1], palette[2]);
    palette[3] = c1;
}

void SetBlackPalette(const Rgb& medHigh, const Rgb& high, Palette& palette) {
    palette = {kBlack, DeriveMedLowFromHighAndMedHighColors(high, medHigh), medHigh, high};
}

}  // namespace

uint32_t ErrSquared(const Rgb& a, const Rgb& b) {
    const int dr = a.r - b.r;
    const int dg = a.g - b.g;
    const int db = a.b - b.b;
    return static_cast<uint32_t>(dr * dr + dg * dg + db * db);
}

uint32_t Luminance(const Rgb& color) {
    return (19u * color.r + 38u * color.g + 7u * color.b) >> 6;
}

uint32_t Color888To565(const Rgb& color) {
    return NearestCode(color.r, 5) << 11 | NearestCode(color.g, 6) << 5 | NearestCode(color.b, 5);
}

Rgb Color565To888(uint32_t code) {
    return {ExpandCode(code >> 11 & 31, 5), ExpandCode(code >> 5 & 63, 6), ExpandCode(code & 31, 5)};
}

uint32_t Color888To1555(const Rgb& color, bool modeBit) {
    return (modeBit ? 0x8000u : 0u) | NearestCode(color.r, 5) << 10 | NearestCode(color.g, 5) << 5 |
           NearestCode(color.b, 5);
}

bool Color1555To888(uint32_t code, Rgb& color) {
    color = {ExpandCode(code >> 10 & 31, 5), ExpandCode(code >> 5 & 31, 5), ExpandCode(code & 31, 5)};
    return (code & 0x8000u) != 0;
}

void DeriveMiddleColors(const Rgb& first, const Rgb& last, Rgb& nearFirst, Rgb& nearLast) {
    const auto blend = [](uint32_t major, uint32_t minor) {
        return static_cast<uint8_t>((5 * major + 3 * minor) >> 3);
    };
    nearFirst = {blend(first.r, last.r), blend(first.g, last.g), blend(first.b, last.b)};
    nearLast = {blend(last.r, first.r), blend(last.g, first.g), blend(last.b, first.b)};
}

Rgb DeriveMedLowFromHighAndMedHighColors(const Rgb& high, const Rgb& medHigh) {
    const auto lower = [](int value, int above) {
        return static_cast<uint8_t>(std::max(0, value - above / 4));
    };
    return {lower(medHigh.r, high.r), lower(medHigh.g, high.g), lower(medHigh.b, high.b)};
}

void SetDecoderColors(uint32_t color0, uint32_t color1, Palette& palette, uint32_t format) {
    const Rgb c1 = Color565To888(color1);
    if (format == TXC_FORMAT_ATC) {
        Rgb c0;
        if (Color1555To888(color0, c0)) {
            SetBlackPalette(c0, c1, palette);
        } else {
            SetNormalPalette(c0, c1, palette);
        }
        return;
    }
    const Rgb c0 = Color565To888(color0);
    if (IsLegacyBlackMode(c0, c1)) {
        SetBlackPalette(c1, c0, palette);
    } else {
        SetNormalPalette(c0, c1, palette);
    }
}

void DecodeRGBBlock(RgbTile& out, uint32_t indexWord, uint32_t color0, uint32_t color1, uint32_t format) {
    Palette palette;
    SetDecoderColors(color0, color1, palette, format);
    for (Rgb& pixel : out) {
        pixel = palette[indexWord & 3];
        indexWord >>= 2;
    }
}

void atiDecodeRGBBlockATITC(RgbTile& out, uint32_t indexWord, uint32_t color0, uint32_t color1) {
    DecodeRGBBlock(out, indexWord, color0, color1, TXC_FORMAT_ATC);
}

}  // namespace zorvan::texcompress
