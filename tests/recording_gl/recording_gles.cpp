// The OpenGL ES 2.0 functions that the plug-in uses.
#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/recording_gl/gl_objects.h"
#include "tests/recording_gl/recorder.h"

namespace {

using recording_gl::Call;
using recording_gl::Enum;
using recording_gl::Factor;
using recording_gl::Hex;
using recording_gl::Record;
using recording_gl::script;

struct ShaderObject {
    GLenum type = 0;
    std::string source;
};

struct ProgramObject {
    std::string sources;
    bool fromBinary = false;
    bool incomplete = false;  // something that is no compiled shader was attached
};

struct ClientArray {
    bool enabled = false;
    GLint size = 0;
    GLsizei stride = 0;
    void const* data = nullptr;
};

// Names differ by kind, so that a log shows when one kind is taken for another.
constexpr GLuint kFirstShader = 101;
constexpr GLuint kFirstTexture = 201;

std::map<GLuint, ShaderObject> shaders;
std::map<GLuint, ProgramObject> programs;
GLuint lastShader = kFirstShader - 1;
GLuint lastProgram = 0;
GLuint lastTexture = kFirstTexture - 1;
std::array<ClientArray, 8> arrays;
GLenum pendingError = GL_NO_ERROR;

std::optional<std::string> const& ErrorOf(ShaderObject const& shader) {
    return shader.type == GL_VERTEX_SHADER ? script.vertexError : script.fragmentError;
}

bool IsLinked(ProgramObject const& program) {
    return !program.incomplete && !script.linkError;
}

void CopyLog(std::string const& log, GLsizei size, GLsizei* length, GLchar* text) {
    const auto copied = std::min<size_t>(log.size(), static_cast<size_t>(std::max(size - 1, 0)));
    std::memcpy(text, log.data(), copied);
    text[copied] = '\0';
    if (length != nullptr) {
        *length = static_cast<GLsizei>(copied);
    }
}

GLint LocationOf(GLuint program, char const* name) {
    ProgramObject const& object = programs[program];
    const auto found = script.locations.find(name);
    const bool known = object.fromBinary || object.sources.find(name) != std::string::npos;
    return known && found != script.locations.end() ? found->second : -1;
}

size_t BytesPerPixel(GLenum format, GLenum type) {
    return type != GL_UNSIGNED_BYTE ? 2 : format == GL_RGB ? 3 : 4;
}

void CopyBytes(Call* call, void const* data, size_t size) {
    if (call != nullptr && data != nullptr) {
        auto const* bytes = static_cast<uint8_t const*>(data);
        call->bytes.assign(bytes, bytes + size);
    }
}

}  // namespace

void recording_gl::ForgetObjects() {
    shaders.clear();
    programs.clear();
    lastShader = kFirstShader - 1;
    lastProgram = 0;
    lastTexture = kFirstTexture - 1;
    arrays = {};
    pendingError = GL_NO_ERROR;
}

void recording_gl::RaiseScriptedError(char const* function) {
    const auto found = script.errors.find(function);
    if (found != script.errors.end() && !found->second.empty()) {
        if (pendingError == GL_NO_ERROR) {
            pendingError = found->second.front();
        }
        found->second.pop_front();
    }
}

extern "C" {

void glClearStencil(GLint s) {
    Record("glClearStencil", s);
}
void glEnable(GLenum cap) {
    Record("glEnable", Enum{cap});
}
void glDisable(GLenum cap) {
    Record("glDisable", Enum{cap});
}
void glFrontFace(GLenum mode) {
    Record("glFrontFace", Enum{mode});
}
void glDepthFunc(GLenum func) {
    Record("glDepthFunc", Enum{func});
}
void glClearColor(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) {
    Record("glClearColor", red, green, blue, alpha);
}
void glClear(GLbitfield mask) {
    Record("glClear", Hex{mask});
}
void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    Record("glViewport", x, y, width, height);
}
void glFlush() {
    Record("glFlush");
}
void glPixelStorei(GLenum name, GLint value) {
    Record("glPixelStorei", Enum{name}, value);
}
void glBlendEquation(GLenum mode) {
    Record("glBlendEquation", Enum{mode});
}
void glBlendFunc(GLenum source, GLenum destination) {
    Record("glBlendFunc", Factor{source}, Factor{destination});
}

GLenum glGetError() {
    Record("glGetError");
    return std::exchange(pendingError, GL_NO_ERROR);
}

void glGetIntegerv(GLenum name, GLint* value) {
    Record("glGetIntegerv", Enum{name}, value);
    if (name >= GL_RED_BITS && name <= GL_BLUE_BITS) {
        *value = script.colorBits[name - GL_RED_BITS];
    }
}

void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels) {
    const GLenum errorBefore = std::exchange(pendingError, GL_NO_ERROR);
    Record("glReadPixels", x, y, width, height, Enum{format}, Enum{type}, pixels);
    const bool failed = pendingError != GL_NO_ERROR;
    pendingError = errorBefore != GL_NO_ERROR ? errorBefore : pendingError;
    if (script.fillPixels && !failed) {
        auto* bytes = static_cast<uint8_t*>(pixels);
        const size_t size =
            static_cast<size_t>(width) * static_cast<size_t>(height) * BytesPerPixel(format, type);
        for (size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<uint8_t>(i + 1);
        }
    }
}

GLuint glCreateShader(GLenum type) {
    Record("glCreateShader", Enum{type});
    if (script.refuseShaders) {
        return 0;
    }
    shaders[++lastShader].type = type;
    return lastShader;
}

void glShaderSource(GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths) {
    Call* call = Record("glShaderSource", shader, count, strings, lengths);
    for (GLsizei i = 0; i < count; ++i) {
        shaders[shader].source += strings[i];
        if (call != nullptr) {
            call->strings.emplace_back(strings[i]);
        }
    }
}

void glCompileShader(GLuint shader) {
    Record("glCompileShader", shader);
}

void glGetShaderiv(GLuint shader, GLenum name, GLint* value) {
    Record("glGetShaderiv", shader, Enum{name}, value);
    *value = ErrorOf(shaders[shader]) ? GL_FALSE : GL_TRUE;
}

void glGetShaderInfoLog(GLuint shader, GLsizei size, GLsizei* length, GLchar* log) {
    Record("glGetShaderInfoLog", shader, size, length, static_cast<void*>(log));
    CopyLog(ErrorOf(shaders[shader]).value_or(""), size, length, log);
}

void glDeleteShader(GLuint shader) {
    Record("glDeleteShader", shader);
}

GLuint glCreateProgram() {
    Record("glCreateProgram");
    if (script.refusePrograms) {
        return 0;
    }
    programs[++lastProgram] = {};
    return lastProgram;
}

void glAttachShader(GLuint program, GLuint shader) {
    Record("glAttachShader", program, shader);
    const auto found = shaders.find(shader);
    if (found == shaders.end()) {
        programs[program].incomplete = true;
        pendingError = GL_INVALID_VALUE;
    } else {
        programs[program].sources += found->second.source;
    }
}

void glLinkProgram(GLuint program) {
    Record("glLinkProgram", program);
}

void glGetProgramiv(GLuint program, GLenum name, GLint* value) {
    Record("glGetProgramiv", program, Enum{name}, value);
    *value = IsLinked(programs[program]) ? GL_TRUE : GL_FALSE;
}

void glGetProgramInfoLog(GLuint program, GLsizei size, GLsizei* length, GLchar* log) {
    Record("glGetProgramInfoLog", program, size, length, static_cast<void*>(log));
    CopyLog(script.linkError.value_or("a shader is missing"), size, length, log);
}

void glDeleteProgram(GLuint program) {
    Record("glDeleteProgram", program);
}
void glUseProgram(GLuint program) {
    Record("glUseProgram", program);
}

GLint glGetAttribLocation(GLuint program, GLchar const* name) {
    Record("glGetAttribLocation", program, name);
    return LocationOf(program, name);
}

GLint glGetUniformLocation(GLuint program, GLchar const* name) {
    Record("glGetUniformLocation", program, name);
    return LocationOf(program, name);
}

void glUniformMatrix4fv(GLint location, GLsizei count, GLboolean transpose, GLfloat const* value) {
    Call* call = Record("glUniformMatrix4fv", location, count, static_cast<int>(transpose),
                        static_cast<void const*>(value));
    if (call != nullptr) {
        call->floats.assign(value, value + 16 * count);
    }
}

void glUniform4f(GLint location, GLfloat x, GLfloat y, GLfloat z, GLfloat w) {
    Record("glUniform4f", location, x, y, z, w);
}

void glVertexAttribPointer(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                           void const* data) {
    Record("glVertexAttribPointer", index, size, Enum{type}, static_cast<int>(normalized), stride, data);
    if (index < arrays.size()) {
        arrays[index].size = size;
        arrays[index].stride = stride;
        arrays[index].data = data;
    }
}

void glEnableVertexAttribArray(GLuint index) {
    Record("glEnableVertexAttribArray", index);
    if (index < arrays.size()) {
        arrays[index].enabled = true;
    }
}

void glDisableVertexAttribArray(GLuint index) {
    Record("glDisableVertexAttribArray", index);
    if (index < arrays.size()) {
        arrays[index].enabled = false;
    }
}

void glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    Call* call = Record("glDrawArrays", Enum{mode}, first, count);
    if (call == nullptr) {
        return;
    }
    for (GLuint i = 0; i < arrays.size(); ++i) {
        if (arrays[i].enabled && arrays[i].data != nullptr) {
            auto const* values = static_cast<int32_t const*>(arrays[i].data);
            call->arrays[i].assign(values, values + arrays[i].size * (first + count));
        }
    }
}

void glGenTextures(GLsizei count, GLuint* names) {
    Record("glGenTextures", count, names);
    for (GLsizei i = 0; i < count; ++i) {
        names[i] = ++lastTexture;
    }
}

void glDeleteTextures(GLsizei count, GLuint const* names) {
    Record("glDeleteTextures", count, names[0]);
}

void glBindTexture(GLenum target, GLuint texture) {
    Record("glBindTexture", Enum{target}, texture);
}

void glTexParameteri(GLenum target, GLenum name, GLint value) {
    Record("glTexParameteri", Enum{target}, Enum{name}, Enum{static_cast<GLenum>(value)});
}

void glTexImage2D(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
                  GLenum format, GLenum type, void const* data) {
    Call* call = Record("glTexImage2D", Enum{target}, level, Enum{static_cast<GLenum>(internal)}, width,
                        height, border, Enum{format}, Enum{type}, data);
    CopyBytes(call, data,
              static_cast<size_t>(width) * static_cast<size_t>(height) * BytesPerPixel(format, type));
}

void glCompressedTexImage2D(GLenum target, GLint level, GLenum internal, GLsizei width, GLsizei height,
                            GLint border, GLsizei size, void const* data) {
    Call* call = Record("glCompressedTexImage2D", Enum{target}, level, Enum{internal}, width, height, border,
                        size, data);
    CopyBytes(call, data, static_cast<size_t>(size));
}

// Not a function of the library: handed out by eglGetProcAddress.
void glProgramBinaryOES(GLuint program, GLenum format, void const* binary, GLint length) {
    Call* call = Record("glProgramBinaryOES", program, Enum{format}, binary, length);
    CopyBytes(call, binary, static_cast<size_t>(length));
    programs[program].fromBinary = true;
}

}  // extern "C"
