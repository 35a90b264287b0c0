// What sprites and texts share: choosing, making and feeding their GL programs.
#pragma once

#include <cstdint>
#include <new>

#include "core/class_id.h"
#include "core/list.h"
#include "graphics/device.h"
#include "shaders/shader.h"
#include "shaders/shader_source.h"

namespace zorvan {

// Identifier of the program for one kind of object under the transfer modes in force.
uint32_t ProgramKey(GraphicsDevice const& device, ClassId kind);

// Makes slot hold a counted reference to program, which may be null, and gives back the old one's.
void AssignProgram(ShaderGL*& slot, ShaderGL* program);

// Finds the program that slot does not hold yet; false when it must be made.
bool FindProgram(ShaderGL*& slot, uint32_t key);

// Sets the program's identifier and registers it.
void RegisterProgram(ShaderGL& program, uint32_t key);

// Builds and registers a program under a key and puts it into slot; without success the slot keeps what
// it has.
template <typename VertexSource, typename FragmentSource>
void CreateProgram(ShaderGL*& slot, uint32_t key, List<unsigned int> const& modes) {
    auto* program = new (std::nothrow) ShaderGL;
    if (program == nullptr) {
        return;
    }
    const VertexSource vertex;
    const FragmentSource fragment(modes);
    if (!program->Compile(vertex, fragment)) {
        delete program;
        return;
    }
    RegisterProgram(*program, key);
    AssignProgram(slot, program);
}

// Hands the program world, then the device's view, then its projection, as floats.
void SetModelViewProjection(GraphicsDeviceGL& device, ShaderGL const& program,
                            Matrix4T<RealFixed> const& world);

// Hands GL an array of fixed-point vectors, tightly packed, and enables it.
void EnableVertexArray(GLint attribute, GLint components, void const* data);
void DisableVertexArray(GLint attribute);
// The same for texture coordinates, which a program need not have.
void EnableTexCoordArray(ShaderGL const& program, List<Vector2T<RealFixed>> const& texCoords);
void DisableTexCoordArray(ShaderGL const& program);

}  // namespace zorvan
