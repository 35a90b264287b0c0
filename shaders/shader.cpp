#include "shaders/shader.h"

#include <EGL/egl.h>
#include <GLES2/gl2ext.h>

#include <new>
#include <utility>

#include "core/trace.h"
#include "graphics/class_container.h"

namespace zorvan {
namespace {

// The only binary format that programs are stored in.
constexpr GLenum kBinaryFormat = GL_Z400_BINARY_AMD;
constexpr GLsizei kLogSize = 1024;

// Fetched on first use and kept for the process.
PFNGLPROGRAMBINARYOESPROC glProgramBinaryOES = nullptr;

// A link log is traced as a format of its own, so its percent signs must not ask for arguments.
void TraceVerbatim(char const* log) {
    char format[2 * kLogSize];
    char* end = format;
    for (; *log != '\0'; ++log) {
        if (*log == '%') {
            *end++ = '%';
        }
        *end++ = *log;
    }
    *end = '\0';
    Debug::Trace(format);
}

}  // namespace

template class ClassContainerT<ShaderGL>;

ShaderGL::ShaderGL() = default;

ShaderGL::~ShaderGL() {
    ReleaseGLShader();
}

ShaderGL* ShaderGL::Create(ShaderSource const& vertex, ShaderSource const& fragment) {
    auto* shader = new (std::nothrow) ShaderGL;
    if (shader != nullptr && !shader->Compile(vertex, fragment)) {
        delete shader;
        return nullptr;
    }
    return shader;
}

bool ShaderGL::Load(Deserializer& reader) {
    return properties.Load(reader);
}

char const* ShaderGL::GetClassName() {
    return "ShaderGL";
}

ClassId ShaderGL::GetClassId() {
    return MakeClassId(u"ShaderGL");
}

uint32_t ShaderGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"ShaderGL") || id == MakeClassId(u"Shader");
}

bool ShaderGL::Compile(ShaderSource const& vertex, ShaderSource const& fragment) {
    const GLuint vertexShader = CompileGLShader(GL_VERTEX_SHADER, vertex);
    if (vertexShader == 0) {
        Debug::Trace("hVertexShader = CompileGLShader(GL_VERTEX_SHADER, shaderVertex)\n");
        vertex.Trace();
    }
    const GLuint fragmentShader = CompileGLShader(GL_FRAGMENT_SHADER, fragment);
    if (fragmentShader == 0) {
        Debug::Trace("hFragmentShader = CompileGLShader(GL_FRAGMENT_SHADER, shaderFragment)\n");
        fragment.Trace();
    }
    // A shader that is missing makes the link fail, which is traced too.
    program = glCreateProgram();
    glAttachShader(program, vertexShader);
    glAttachShader(program, fragmentShader);
    glLinkProgram(program);
    glDeleteShader(vertexShader);
    glDeleteShader(fragmentShader);
    return TakeLinkResult();
}

GLuint ShaderGL::CompileGLShader(GLenum type, ShaderSource const& source) {
    const GLuint shader = glCreateShader(type);
    if (shader == 0) {
        return 0;
    }
    glShaderSource(shader, static_cast<GLsizei>(source.Count()), source.Data(), nullptr);
    glCompileShader(shader);
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled != GL_FALSE) {
        return shader;
    }
    char log[kLogSize] = "";
    GLsizei length = 0;
    glGetShaderInfoLog(shader, kLogSize, &length, log);
    Debug::Trace("Shader compile error [%s]", log);
    glDeleteShader(shader);
    return 0;
}

bool ShaderGL::CreateGLShader() {
    ReleaseGLShader();
    program = glCreateProgram();
    if (program == 0) {
        return false;
    }
    if (glProgramBinaryOES == nullptr) {
        glProgramBinaryOES =
            reinterpret_cast<PFNGLPROGRAMBINARYOESPROC>(eglGetProcAddress("glProgramBinaryOES"));
    }
    // Without the extension the program stays unlinked, which the link status tells.
    if (glProgramBinaryOES != nullptr) {
        glProgramBinaryOES(program, kBinaryFormat, binary.Get().data(),
                           static_cast<GLint>(binary.Get().size()));
    }
    if (glGetError() != GL_NO_ERROR) {
        return false;  // the handle stays on purpose
    }
    return TakeLinkResult();
}

bool ShaderGL::TakeLinkResult() {
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked != GL_FALSE) {
        LookupLocations();
        return true;
    }
    char log[kLogSize] = "";
    GLsizei length = 0;
    glGetProgramInfoLog(program, kLogSize, &length, log);
    const GLuint failed = std::exchange(program, 0);
    glDeleteProgram(failed);
    if (failed != 0) {  // nothing to tell about a program that GL did not make
        TraceVerbatim(log);
    }
    return false;
}

GLuint ShaderGL::GetGLShader() {
    if (program == 0 && !CreateGLShader()) {
        return 0;
    }
    return program;
}

bool ShaderGL::Use() {
    if (GetGLShader() == 0) {
        return false;
    }
    glUseProgram(program);
    return true;
}

void ShaderGL::ReleaseGLShader() {
    if (program != 0) {
        glDeleteProgram(program);
        program = 0;
    }
}

void ShaderGL::LookupLocations() {
    positionAttribute = glGetAttribLocation(program, "a_vPosition");
    texCoordAttribute = glGetAttribLocation(program, "a_vTexCoord");
    baseTextureUniform = glGetUniformLocation(program, "u_sBaseTexture");
    modelViewProjUniform = glGetUniformLocation(program, "u_mModelViewProj");
    colorUniform = glGetUniformLocation(program, "u_vColor");
}

}  // namespace zorvan
