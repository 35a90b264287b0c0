// A font whose glyphs are drawn with GL.
#pragma once

#include "core/class_id.h"
#include "core/font.h"
#include "graphics/api.h"

namespace zorvan {

// Draws each glyph from its page in two passes: the first darkens what lies under the glyph, the second
// adds the coloured glyph. The pages hold coverage in red, green and blue.
class ZORVAN_GL_API FontGL : public Font {
  public:
    FontGL();
    ~FontGL() override;

    // Makes room for a glyph's corners; before it no glyph is drawn.
    bool Initialize() override;
    // Uses the program of the outermost text being drawn; nothing outside a text. Leaves the blend
    // function of the second pass behind.
    void RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& position,
                     ColorT<RealFixed> const& color) override;

    char const* GetClassName();
    ClassId GetClassId();
    uint32_t IsKindOf(ClassId id);

  private:
    [[gnu::visibility("hidden")]] void FillQuad(Glyph const& glyph, Vector2T<RealFixed> const& position);

    List<Vector3T<RealFixed>> glyphVertices;
    List<Vector2T<RealFixed>> glyphTexCoords;
};

static_assert(sizeof(void*) != 4 || sizeof(FontGL) == sizeof(Font) + 2 * 12,
              "two lists behind the core's fields");

}  // namespace zorvan
