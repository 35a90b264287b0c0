// Glyphs out of a font file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/api.h"

namespace zorvan {

// A glyph as the rasteriser makes it, in whole pixels.
struct GlyphBitmap {
    int width = 0, height = 0;
    // From the pen to the left edge, and from the baseline up to the top edge.
    int left = 0, top = 0;
    int advance = 0;
    // Rows from the top, without padding; 255 is full.
    std::vector<uint8_t> coverage;
};

// One face of a font at one size. The file is read at once and closed.
class ZORVAN_CORE_API FontFile {
  public:
    static constexpr int kMostPixels = 512;
    // Width and height of a glyph: what fits on a page with a free pixel all around.
    static constexpr int kMostGlyphSide = 2046;

    // size is the height of the em square, 1 to kMostPixels. Null after a failure, with one line that names
    // the file; always null in builds without font support.
    static std::unique_ptr<FontFile> Open(std::string const& path, int size, std::string& error);
    virtual ~FontFile();

    // 0, the glyph for missing characters, when the font does not have it.
    virtual uint32_t GlyphIndex(uint32_t codePoint) const = 0;
    // False when the file's data for the glyph is damaged or too large; error then names file and glyph.
    virtual bool Rasterise(uint32_t index, GlyphBitmap& bitmap, std::string& error) = 0;
    // In pixels, added between the two glyphs.
    virtual int Kerning(uint32_t left, uint32_t right) const = 0;

    // From one baseline to the next, and from a line's top to its baseline; in pixels.
    int lineHeight = 0, ascent = 0;
};

}  // namespace zorvan
