// One glyph of a font on its page.
#pragma once

#include <cstdint>

#include "core/fixed.h"

namespace zorvan {

// Its size in pixels, its page and its place there in texture coordinates. vBottom belongs to the glyph's
// visual top: pages are stored bottom-up. The order of the members is part of the binary interface with the
// plug-in.
struct Glyph {
    uint16_t width = 0, height = 0;
    int16_t page = 0;
    RealFixed uLeft, vTop, uRight, vBottom;
    // Offset of the box's top left corner from the pen, y downwards from the baseline, and the way to
    // the next pen position; in pixels.
    RealFixed offsetX, offsetY, advance;
    // The glyph's number in its font: what kerning pairs name. 0 is the glyph for missing characters.
    uint32_t index = 0;
};

}  // namespace zorvan
