#include "objects/text.h"

#include "core/visitor.h"
#include "graphics/class_container.h"
#include "graphics/device.h"
#include "objects/program.h"
#include "shaders/shader.h"

namespace zorvan {

template class ClassContainerT<TextGL>;

TextGL::TextGL() = default;

TextGL::TextGL(TextGL const& other) : Text(other) {}

TextGL::~TextGL() = default;

Node* TextGL::Clone() {
    return new TextGL(*this);
}

char const* TextGL::GetClassName() {
    return "TextGL";
}

ClassId TextGL::GetClassId() {
    return MakeClassId(u"TextGL");
}

void TextGL::Visit(Visitor& visitor) {
    visitor.VisitTransformNode(*this);
    visitor.VisitChildren(GetChildren());
}

Node* TextGL::CloneDeep() {
    return CloneChildren(*this, new TextGL(*this));
}

uint32_t TextGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"TextGL") || Text::IsKindOf(id);
}

ShaderGL* TextGL::GetGLShader() {
    return shader;
}

void TextGL::SetGLShader(ShaderGL* program) {
    AssignProgram(shader, program);
}

void TextGL::CreateTextShader(unsigned int id, List<unsigned int> const& modes) {
    CreateProgram<TextVertexShaderSource, TextFragmentShaderSource>(shader, id, modes);
}

void TextGL::InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                            bool force) {
    PushEffect(device);
    Text::InternalUpdate(device, time, delta, force);
    const uint32_t key = ProgramKey(device, MakeClassId(u"Text"));
    if (!FindProgram(shader, key)) {
        CreateTextShader(key, device.transferModes);
    }
    PopEffect(device);
}

void TextGL::InternalRender(GraphicsDevice& device) {
    if (shader == nullptr) {
        return;
    }
    device.SetCameraDepth(depth.Get());
    if (!shader->Use()) {
        return;
    }
    auto& deviceGL = static_cast<GraphicsDeviceGL&>(device);
    // The font's glyphs find the program there.
    if (!deviceGL.shaders.Append(shader)) {
        return;
    }
    SetModelViewProjection(deviceGL, *shader, GetWorldMatrix());
    DrawString(device);
    deviceGL.shaders.RemoveLast();
}

void TextGL::DrawString(GraphicsDevice& device) {
    Font* drawer = font.Get().Get();
    if (drawer == nullptr) {
        return;
    }
    ColorT<RealFixed> visible = color.Get();
    visible.alpha = visible.alpha * GetEffectiveOpacity();
    if (hasBox.Get()) {
        drawer->DrawString(device, string.Get(), visible, box.Get(), alignment.Get(), letterSpacing.Get(),
                           lineSpacing.Get());
    } else {
        drawer->DrawString(device, string.Get(), visible, letterSpacing.Get(), lineSpacing.Get());
    }
}

}  // namespace zorvan
