// Textures that hold the glyphs of font files: coverage in RGB, alpha 255, rows bottom-up.
#pragma once

#include "core/font_file.h"
#include "core/geometry.h"
#include "core/referenced.h"
#include "core/texture.h"

namespace zorvan {

class ClassRegistry;

// A page without glyphs: no coverage anywhere. Null when out of memory or without a back end.
RefT<Texture> MakeGlyphPage(ClassRegistry& registry, SizeT<int> const& size);

// Copies a glyph's coverage to the rectangle of its size whose lower left corner is there.
void CopyToPage(GlyphBitmap const& bitmap, Vector2T<int> corner, Texture& page);

}  // namespace zorvan
