// Glyphs on texture pages, and the layout of strings.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/api.h"
#include "core/geometry.h"
#include "core/mstring.h"
#include "core/referenced.h"
#include "core/serializer.h"
#include "core/texture.h"

namespace zorvan {

class GraphicsDevice;

// One glyph: its size in pixels, its page and its place there in texture coordinates. vBottom belongs
// to the glyph's visual top: pages are stored bottom-up.
struct Glyph {
    uint16_t width = 0, height = 0;
    int16_t page = 0;
    RealFixed uLeft, vTop, uRight, vBottom;
    // Offset of the box's top left corner from the pen, y downwards from the baseline, and the way to
    // the next pen position; in pixels.
    RealFixed offsetX, offsetY, advance;
};

// The order of the virtual operations is part of the binary interface with the plug-in.
class ZORVAN_CORE_API Font : public Referenced {
  public:
    Font();
    Font(Font const&) = delete;
    ~Font() override;

    // Prepares the font for drawing; call it once, after the glyphs were added.
    virtual bool Initialize();
    // Draws a string from the origin of the current transform, y downwards. Spacings in pixels.
    virtual void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text,
                            ColorT<RealFixed> const& color, int letterSpacing, int lineSpacing);
    // The same inside a box.
    virtual void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text,
                            ColorT<RealFixed> const& color, SizeT<RealFixed> const& box, int alignment,
                            int letterSpacing, int lineSpacing);
    // A number that no other font of this process has.
    virtual uint32_t GenerateID();
    // Draws one glyph with its top left corner at position.
    virtual void RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& position,
                             ColorT<RealFixed> const& color) = 0;

    // Takes a reference to a page of glyphs.
    void AddPage(Texture* page);
    void AddGlyph(uint32_t codePoint, Glyph const& glyph);
    // Null for a code point that the font does not have.
    Glyph const* FindGlyph(uint32_t codePoint) const;

    // Under which the scene's texts refer to this font.
    std::string name;
    // From one baseline to the next, and from a line's top to its baseline; in pixels.
    RealFixed lineHeight, ascent;

  protected:
    std::vector<RefT<Texture>> pages_;

  private:
    std::unordered_map<uint32_t, Glyph> glyphs_;
};

}  // namespace zorvan
