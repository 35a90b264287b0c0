#include "core/font.h"

namespace zorvan {

Font::Font() = default;

Font::~Font() = default;

bool Font::Initialize() {
    return true;
}

void Font::DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                      int letterSpacing, int lineSpacing) {
    Vector2T<RealFixed> pen{RealFixed{}, ascent};
    for (wchar_t c : text.View()) {
        if (c == L'\n') {
            pen = {RealFixed{}, pen.y + lineHeight + RealFixed::FromInt(lineSpacing)};
            continue;
        }
        Glyph const* glyph = FindGlyph(static_cast<uint32_t>(c));
        if (glyph == nullptr) {
            continue;
        }
        RenderGlyph(device, glyph, {pen.x + glyph->offsetX, pen.y + glyph->offsetY}, color);
        pen.x += glyph->advance + RealFixed::FromInt(letterSpacing);
    }
}

void Font::DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                      SizeT<RealFixed> const&, int, int letterSpacing, int lineSpacing) {
    Font::DrawString(device, text, color, letterSpacing, lineSpacing);
}

uint32_t Font::GenerateID() {
    static int32_t last = 0;
    return static_cast<uint32_t>(Atomic::Increment(last));
}

void Font::AddPage(Texture* page) {
    pages_.emplace_back(page);
}

void Font::AddGlyph(uint32_t codePoint, Glyph const& glyph) {
    glyphs_[codePoint] = glyph;
}

Glyph const* Font::FindGlyph(uint32_t codePoint) const {
    const auto found = glyphs_.find(codePoint);
    return found == glyphs_.end() ? nullptr : &found->second;
}

}  // namespace zorvan
