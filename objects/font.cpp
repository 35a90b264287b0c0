#include "objects/font.h"

#include "graphics/class_container.h"
#include "graphics/device.h"
#include "objects/program.h"
#include "objects/texture.h"

namespace zorvan {
namespace {

constexpr uint32_t kCorners = 4;

}  // namespace

template class ClassContainerT<FontGL>;

FontGL::FontGL() = default;

FontGL::~FontGL() = default;

char const* FontGL::GetClassName() {
    return "FontGL";
}

ClassId FontGL::GetClassId() {
    return MakeClassId(u"FontGL");
}

uint32_t FontGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"FontGL") || id == MakeClassId(u"Font");
}

bool FontGL::Initialize() {
    if (!Font::Initialize()) {
        return false;
    }
    // A list that cannot grow is no failure: RenderGlyph then draws nothing.
    glyphVertices.Resize(kCorners);
    glyphTexCoords.Resize(kCorners);
    return true;
}

void FontGL::RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& position,
                         ColorT<RealFixed> const& color) {
    List<ShaderGL*> const& programs = static_cast<GraphicsDeviceGL&>(device).shaders;
    const bool ready = glyphVertices.Count() == kCorners && glyphTexCoords.Count() == kCorners;
    if (programs.IsEmpty() || !ready || glyph->page < 0 ||
        static_cast<size_t>(glyph->page) >= pages_.size()) {
        return;
    }
    auto* page = static_cast<TextureGL*>(pages_[static_cast<size_t>(glyph->page)].Get());
    if (page == nullptr) {
        return;
    }
    FillQuad(*glyph, position);
    ShaderGL const& program = *programs[0];
    EnableVertexArray(program.positionAttribute, 3, glyphVertices.Data());
    glBindTexture(GL_TEXTURE_2D, page->GetGLTexture());
    EnableTexCoordArray(program, glyphTexCoords);

    const float red = color.red.ToFloat();
    const float green = color.green.ToFloat();
    const float blue = color.blue.ToFloat();
    glUniform4f(program.colorUniform, red, green, blue, 1.0f);
    glBlendFunc(GL_ZERO, GL_ONE_MINUS_SRC_COLOR);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, kCorners);

    glUniform4f(program.colorUniform, red, green, blue, color.alpha.ToFloat());
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, kCorners);

    DisableTexCoordArray(program);
    DisableVertexArray(program.positionAttribute);
}

void FontGL::FillQuad(Glyph const& glyph, Vector2T<RealFixed> const& position) {
    const RealFixed zero;
    const RealFixed right = position.x + RealFixed::FromInt(glyph.width);
    const RealFixed bottom = position.y + RealFixed::FromInt(glyph.height);
    glyphVertices[0] = {position.x, position.y, zero};
    glyphVertices[1] = {position.x, bottom, zero};
    glyphVertices[2] = {right, position.y, zero};
    glyphVertices[3] = {right, bottom, zero};
    glyphTexCoords[0] = {glyph.uLeft, glyph.vBottom};
    glyphTexCoords[1] = {glyph.uLeft, glyph.vTop};
    glyphTexCoords[2] = {glyph.uRight, glyph.vBottom};
    glyphTexCoords[3] = {glyph.uRight, glyph.vTop};
}

}  // namespace zorvan
