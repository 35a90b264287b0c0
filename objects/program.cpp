#include "objects/program.h"

#include "core/transfer_mode.h"

namespace zorvan {

uint32_t ProgramKey(GraphicsDevice const& device, ClassId kind) {
    const uint32_t parent = device.effectKeys.IsEmpty() ? kEffectKeyBasis : device.effectKeys.Last();
    return (parent * kEffectKeyPrime) ^ kind;
}

void AssignProgram(ShaderGL*& slot, ShaderGL* program) {
    Retain(program);
    Release(slot);
    slot = program;
}

bool FindProgram(ShaderGL*& slot, uint32_t key) {
    if (slot != nullptr && slot->identifier.Get() == key) {
        return true;
    }
    auto* found = static_cast<ShaderGL*>(Shader::Find(key));
    if (found != nullptr) {
        AssignProgram(slot, found);
    }
    return found != nullptr;
}

void RegisterProgram(ShaderGL& program, uint32_t key) {
    program.identifier.Set(key);
    Shader::Add(&program);
}

void SetModelViewProjection(GraphicsDeviceGL& device, ShaderGL const& program,
                            Matrix4T<RealFixed> const& world) {
    Matrix4T<RealFixed> product;
    Multiply(product, world, device.GetViewMatrix());
    Multiply(product, product, device.GetProjectionMatrix());
    GLfloat elements[16];
    for (int i = 0; i < 16; ++i) {
        elements[i] = product[i].ToFloat();
    }
    glUniformMatrix4fv(program.modelViewProjUniform, 1, GL_FALSE, elements);
}

void EnableVertexArray(GLint attribute, GLint components, void const* data) {
    const auto index = static_cast<GLuint>(attribute);
    glVertexAttribPointer(index, components, GL_FIXED, GL_FALSE, 0, data);
    glEnableVertexAttribArray(index);
}

void DisableVertexArray(GLint attribute) {
    glDisableVertexAttribArray(static_cast<GLuint>(attribute));
}

void EnableTexCoordArray(ShaderGL const& program, List<Vector2T<RealFixed>> const& texCoords) {
    if (program.texCoordAttribute != -1) {
        EnableVertexArray(program.texCoordAttribute, 2, texCoords.Data());
    }
}

void DisableTexCoordArray(ShaderGL const& program) {
    if (program.texCoordAttribute != -1) {
        DisableVertexArray(program.texCoordAttribute);
    }
}

}  // namespace zorvan
