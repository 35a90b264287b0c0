// Places the glyphs of a string: kerning, spacing, line breaks, word wrap and alignment.
#pragma once

#include <string_view>
#include <vector>

#include "core/api.h"
#include "core/geometry.h"
#include "core/glyph.h"
#include "core/text_alignment.h"

namespace zorvan {

// What layout asks of a font; lengths in pixels.
class GlyphSource {
  public:
    // Null for a character that shows nothing and takes no room.
    virtual Glyph const* Find(uint32_t codePoint) const = 0;
    // Added to the advance of left when right follows.
    virtual RealFixed Kerning(Glyph const& left, Glyph const& right) const = 0;

    // From one baseline to the next, and from a line's top to its baseline.
    RealFixed lineHeight, ascent;

  protected:
    ~GlyphSource() = default;
};

struct TextLayoutOptions {
    // Without a box lines start at the origin and break only where the string says so. A box aligns
    // them; its width wraps them at words. A width or height of 0 is a line or a point to align at:
    // width 0 does not wrap. Text that does not fit is not cut.
    bool hasBox = false;
    SizeT<RealFixed> box;
    int32_t alignment = TextAlignment::Left | TextAlignment::Top;
    // Added after each letter but the last of a line, and between lines; pixels, clamped to +-32767.
    int32_t letterSpacing = 0, lineSpacing = 0;

    bool operator==(TextLayoutOptions const&) const = default;
};

// A glyph with ink and its top left corner, from the text's origin, y downwards.
struct PlacedGlyph {
    Glyph const* glyph;
    Vector2T<RealFixed> position;
};

struct TextExtent {
    // Of the widest line, and of all lines with their spacing, in pixels.
    RealFixed width, height;
    uint32_t lines = 0;
};

// Replaces the contents of glyphs, whose memory is used again. Positions are whole pixels; glyphs that
// would lie outside the range of 16.16 are left out. Line breaks are LF, CR, CR LF, U+0085, U+2028 and
// U+2029; tabs stop at every eighth space from the line's start; other control characters show nothing.
ZORVAN_CORE_API TextExtent LayOutText(std::wstring_view text, GlyphSource const& source,
                                      TextLayoutOptions const& options, std::vector<PlacedGlyph>& glyphs);

}  // namespace zorvan
