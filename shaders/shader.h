// A GL program, shared through the core's registry.
#pragma once

#include <GLES2/gl2.h>

#include "core/class_id.h"
#include "core/shader.h"
#include "graphics/api.h"
#include "shaders/shader_source.h"

namespace zorvan {

// Built from source by Compile, or on first use from the binary that the core loaded. Every program
// uses the same attribute and uniform names; their locations are looked up once after linking. All
// operations belong on the GL thread. Errors are traced.
class ZORVAN_GL_API ShaderGL : public Shader {
  public:
    ShaderGL();
    ~ShaderGL() override;

    // Null when the program cannot be built. Nobody holds a reference to the new program yet.
    static ShaderGL* Create(ShaderSource const& vertex, ShaderSource const& fragment);

    bool Load(Deserializer& reader) override;
    // For a fresh object: an earlier program is not released.
    virtual bool Compile(ShaderSource const& vertex, ShaderSource const& fragment);

    char const* GetClassName();
    ClassId GetClassId();
    uint32_t IsKindOf(ClassId id);

    // A shader object of GL_VERTEX_SHADER or GL_FRAGMENT_SHADER, or 0.
    GLuint CompileGLShader(GLenum type, ShaderSource const& source);
    // Builds the program from the binary. When GL refuses the binary with an error the handle stays in
    // program, unusable; when it does not link the handle is deleted.
    bool CreateGLShader();
    // The program, made from the binary if there is none yet; 0 when that just failed.
    GLuint GetGLShader();
    // Makes the program current; false without one.
    bool Use();
    void ReleaseGLShader();
    void LookupLocations();

    GLuint program = 0;  // 0: none
    // Valid while there is a linked program; -1 for names that it does not use.
    GLint colorUniform = -1;          // u_vColor
    GLint positionAttribute = -1;     // a_vPosition
    GLint modelViewProjUniform = -1;  // u_mModelViewProj
    GLint baseTextureUniform = -1;    // u_sBaseTexture
    GLint texCoordAttribute = -1;     // a_vTexCoord

  private:
    [[gnu::visibility("hidden")]] bool TakeLinkResult();
};

static_assert(sizeof(void*) != 4 || sizeof(ShaderGL) == sizeof(Shader) + 6 * 4,
              "six 32-bit fields behind the core's");

}  // namespace zorvan
