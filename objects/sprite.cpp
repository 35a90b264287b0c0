#include "objects/sprite.h"

#include "core/visitor.h"
#include "graphics/class_container.h"
#include "graphics/device.h"
#include "objects/program.h"
#include "objects/texture.h"
#include "shaders/shader.h"
#include "shaders/transfer_modes.h"

namespace zorvan {
namespace {

constexpr uint32_t kCorners = 4;

void SetBlendState(uint32_t transferMode) {
    if (transferMode < kTransferModeCount) {
        glBlendEquation(eTransferModeBlendEquation[transferMode]);
        const BlendFactors factors = eTransferModeBlendFunc[transferMode];
        glBlendFunc(factors.source, factors.destination);
    } else {
        glBlendEquation(GL_FUNC_ADD);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
}

}  // namespace

template class ClassContainerT<SpriteGL>;

SpriteGL::SpriteGL() = default;

SpriteGL::SpriteGL(SpriteGL const& other) : Sprite(other) {}

SpriteGL::~SpriteGL() = default;

Node* SpriteGL::Clone() {
    return new SpriteGL(*this);
}

char const* SpriteGL::GetClassName() {
    return "SpriteGL";
}

ClassId SpriteGL::GetClassId() {
    return MakeClassId(u"SpriteGL");
}

void SpriteGL::Visit(Visitor& visitor) {
    visitor.VisitTransformNode(*this);
    visitor.VisitChildren(GetChildren());
}

Node* SpriteGL::CloneDeep() {
    return CloneChildren(*this, new SpriteGL(*this));
}

uint32_t SpriteGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"SpriteGL") || Sprite::IsKindOf(id);
}

bool SpriteGL::Load(Deserializer& reader) {
    if (!Sprite::Load(reader)) {
        return false;
    }
    const RealFixed zero;
    const RealFixed right = RealFixed::FromInt(width.Get());
    const RealFixed bottom = RealFixed::FromInt(height.Get());
    vertices.Clear();
    vertices.Append({zero, zero, zero});
    vertices.Append({zero, bottom, zero});
    vertices.Append({right, zero, zero});
    vertices.Append({right, bottom, zero});
    // A hair inside the texture's left and bottom edge, and only there.
    constexpr RealFixed kInset = RealFixed::FromRaw(6);
    constexpr RealFixed kEdge = kOne<RealFixed>;
    texCoords.Clear();
    texCoords.Append({kInset, kEdge});
    texCoords.Append({kInset, kInset});
    texCoords.Append({kEdge, kEdge});
    texCoords.Append({kEdge, kInset});
    return true;
}

void SpriteGL::SetTexture(Texture* texture) {
    Sprite::SetTexture(texture);
    Texture const* current = GetTexture();
    if (current == nullptr || !texCoords.Resize(kCorners)) {
        return;
    }
    const RealFixed u =
        RealFixed::FromInt(current->usedWidth.Get()) / RealFixed::FromInt(current->width.Get());
    const RealFixed v =
        RealFixed::FromInt(current->usedHeight.Get()) / RealFixed::FromInt(current->height.Get());
    const RealFixed zero;
    texCoords[0] = {zero, v};
    texCoords[1] = {zero, zero};
    texCoords[2] = {u, v};
    texCoords[3] = {u, zero};
}

ShaderGL* SpriteGL::GetGLShader() {
    return shader;
}

void SpriteGL::SetGLShader(ShaderGL* program) {
    AssignProgram(shader, program);
}

void SpriteGL::CreateSpriteShader(unsigned int id, List<unsigned int> const& modes) {
    CreateProgram<SpriteVertexShaderSource, SpriteFragmentShaderSource>(shader, id, modes);
}

void SpriteGL::CreateSolidShader(unsigned int id, List<unsigned int> const& modes) {
    CreateProgram<SolidVertexShaderSource, SolidFragmentShaderSource>(shader, id, modes);
}

void SpriteGL::InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                              bool force) {
    PushEffect(device);
    Sprite::InternalUpdate(device, time, delta, force);
    const bool textured = GetTexture() != nullptr;
    const uint32_t key = ProgramKey(device, textured ? MakeClassId(u"Sprite") : MakeClassId(u"Solid"));
    if (!FindProgram(shader, key)) {
        if (textured) {
            CreateSpriteShader(key, device.transferModes);
        } else {
            CreateSolidShader(key, device.transferModes);
        }
    }
    PopEffect(device);
}

void SpriteGL::InternalRender(GraphicsDevice& device) {
    if (shader == nullptr) {
        return;
    }
    device.SetCameraDepth(depth.Get());
    device.PushMasks(GetMasks());
    if (shader->Use()) {
        SetModelViewProjection(static_cast<GraphicsDeviceGL&>(device), *shader, GetWorldMatrix());
        // A copy that was never loaded has no corners for GL to read.
        if (vertices.Count() == kCorners && (GetTexture() == nullptr || texCoords.Count() == kCorners)) {
            Draw(*shader);
        }
    }
    device.PopMasks(GetMasks());
}

void SpriteGL::Draw(ShaderGL const& program) {
    EnableVertexArray(program.positionAttribute, 3, vertices.Data());
    SetBlendState(transferMode.Get());
    const float visible = GetEffectiveOpacity().ToFloat();
    auto* texture = static_cast<TextureGL*>(GetTexture());
    if (texture == nullptr) {
        const ColorT<RealFixed>& fill = color.Get();
        glUniform4f(program.colorUniform, fill.red.ToFloat(), fill.green.ToFloat(), fill.blue.ToFloat(),
                    fill.alpha.ToFloat() * visible);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, kCorners);
    } else {
        // Sampled on texture unit 0, which the sampler uniform starts with.
        glBindTexture(GL_TEXTURE_2D, texture->GetGLTexture());
        EnableTexCoordArray(program, texCoords);
        glUniform4f(program.colorUniform, 1.0f, 1.0f, 1.0f, visible);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, kCorners);
        DisableTexCoordArray(program);
    }
    DisableVertexArray(program.positionAttribute);
}

}  // namespace zorvan
