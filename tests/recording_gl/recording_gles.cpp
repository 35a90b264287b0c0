// The OpenGL ES 2.0 functions that the plug-in uses.
#include <algorithm>
#include <numeric>
#include <utility>

#include "tests/recording_gl/recorder.h"

namespace {

using recording_gl::Call;
using recording_gl::pendingError;
using recording_gl::script;

// The names that programs know; the place in this list is the location.
constexpr char const* kNames[] = {"a_vPosition", "a_vTexCoord", "u_sBaseTexture", "u_mModelViewProj",
                                  "u_vColor"};

struct ClientArray {
    bool enabled = false;
    GLint size = 0;
    int32_t const* data = nullptr;
};

// Names differ by kind, so that a log shows when one kind is taken for another.
struct Objects {
    std::map<GLuint, std::pair<GLenum, std::string>> shaders;  // type and source, from 101 on
    std::map<GLuint, std::string> programs;                    // sources, from 1 on
    GLuint lastTexture = 200;
    std::array<ClientArray, 8> arrays;
} objects;

template <typename T>
GLuint Create(std::map<GLuint, T>& kind, size_t first, T const& object) {
    const auto name = static_cast<GLuint>(first + kind.size());
    return script.refuseObjects ? 0 : kind.emplace(name, object).first->first;
}

template <typename T, typename Count>
void Copy(Call* call, std::vector<T> Call::*member, void const* data, Count count) {
    if (call != nullptr && data != nullptr) {
        (call->*member).assign(static_cast<T const*>(data), static_cast<T const*>(data) + count);
    }
}

void SetSource(Call* call, GLuint shader, std::vector<std::string> const& strings) {
    if (call != nullptr) {
        call->strings = strings;
    }
    objects.shaders[shader].second = std::accumulate(strings.begin(), strings.end(), std::string());
}

void LoadBinary(Call* call, GLuint program, void const* binary, GLint length) {
    Copy(call, &Call::bytes, binary, length);
    objects.programs[program] = std::accumulate(std::begin(kNames), std::end(kNames), std::string());
}

std::optional<std::string> const& ErrorOf(GLuint shader) {
    return objects.shaders[shader].first == GL_VERTEX_SHADER ? script.vertexError : script.fragmentError;
}

void CopyLog(std::optional<std::string> const& log, GLsizei size, GLsizei* length, GLchar* text) {
    *length = static_cast<GLsizei>(log.value_or("").copy(text, static_cast<size_t>(size - 1)));
    text[*length] = '\0';
}

// -1 for a name that the program's sources do not contain.
GLint LocationOf(GLuint program, char const* name) {
    const auto place =
        std::find(std::begin(kNames), std::end(kNames), std::string(name)) - std::begin(kNames);
    return objects.programs[program].find(name) == std::string::npos ? -1 : static_cast<GLint>(place);
}

void SetArray(GLuint index, GLint size, void const* data) {
    ClientArray& array = objects.arrays[index % 8];
    array = {array.enabled, size, static_cast<int32_t const*>(data)};
}

void CopyArrays(Call* call, GLsizei vertices) {
    for (uint32_t i = 0; call != nullptr && i < objects.arrays.size(); ++i) {
        ClientArray const& array = objects.arrays[i];
        if (array.enabled && array.data != nullptr) {
            call->arrays[i].assign(array.data, array.data + array.size * vertices);
        }
    }
}

size_t ImageSize(GLsizei width, GLsizei height, GLenum format, GLenum type) {
    const size_t pixel = type != GL_UNSIGNED_BYTE ? 2 : format == GL_RGB ? 3 : 4;
    return pixel * static_cast<size_t>(width) * static_cast<size_t>(height);
}

}  // namespace

void recording_gl::ForgetObjects() {
    objects = {};
}

LOGGED(glClearStencil, (GLint s), s)
LOGGED(glEnable, (GLenum cap), cap)
LOGGED(glDisable, (GLenum cap), cap)
LOGGED(glFrontFace, (GLenum mode), mode)
LOGGED(glDepthFunc, (GLenum func), func)
LOGGED(glClearColor, (GLfloat r, GLfloat g, GLfloat b, GLfloat a), r, g, b, a)
LOGGED(glClear, (GLbitfield mask), mask)
LOGGED(glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), x, y, width, height)
LOGGED(glFlush, ())
LOGGED(glPixelStorei, (GLenum name, GLint value), name, value)
LOGGED(glBlendEquation, (GLenum mode), mode)
LOGGED(glBlendFunc, (GLenum source, GLenum destination), source, destination)
LOGGED(glCompileShader, (GLuint shader), shader)
LOGGED(glDeleteShader, (GLuint shader), shader)
LOGGED(glLinkProgram, (GLuint program), program)
LOGGED(glDeleteProgram, (GLuint program), program)
LOGGED(glUseProgram, (GLuint program), program)
LOGGED(glUniform4f, (GLint location, GLfloat x, GLfloat y, GLfloat z, GLfloat w), location, x, y, z, w)
LOGGED(glDeleteTextures, (GLsizei count, GLuint const* names), count, names[0])
LOGGED(glBindTexture, (GLenum target, GLuint texture), target, texture)
LOGGED(glTexParameteri, (GLenum target, GLenum name, GLint value), target, name, value)

ANSWERED(GLenum, glGetError, (), std::exchange(pendingError, GL_NO_ERROR))
ANSWERED(void, glGetIntegerv, (GLenum name, GLint* value), *value = script.colorBits.at(name - GL_RED_BITS),
         name, value)
ANSWERED(GLuint, glCreateShader, (GLenum type), Create(objects.shaders, 101, {type, std::string()}), type)
ANSWERED(void, glShaderSource,
         (GLuint shader, GLsizei count, GLchar const* const* strings, GLint const* lengths),
         SetSource(call, shader, {strings, strings + count}), shader, count, strings, lengths)
ANSWERED(void, glGetShaderiv, (GLuint shader, GLenum name, GLint* value), *value = !ErrorOf(shader), shader,
         name, value)
ANSWERED(void, glGetShaderInfoLog, (GLuint shader, GLsizei size, GLsizei* length, GLchar* log),
         CopyLog(ErrorOf(shader), size, length, log), shader, size, length, log)
ANSWERED(GLuint, glCreateProgram, (), Create(objects.programs, 1, std::string()))
ANSWERED(void, glAttachShader, (GLuint program, GLuint shader),
         objects.programs[program] += objects.shaders[shader].second, program, shader)
ANSWERED(void, glGetProgramiv, (GLuint program, GLenum name, GLint* value), *value = !script.linkError,
         program, name, value)
ANSWERED(void, glGetProgramInfoLog, (GLuint program, GLsizei size, GLsizei* length, GLchar* log),
         CopyLog(script.linkError, size, length, log), program, size, length, log)
ANSWERED(GLint, glGetAttribLocation, (GLuint program, GLchar const* name), LocationOf(program, name), program,
         name)
ANSWERED(GLint, glGetUniformLocation, (GLuint program, GLchar const* name), LocationOf(program, name),
         program, name)
ANSWERED(void, glUniformMatrix4fv, (GLint location, GLsizei count, GLboolean transpose, GLfloat const* value),
         Copy(call, &Call::floats, value, 16 * count), location, count, transpose, value)
ANSWERED(void, glVertexAttribPointer,
         (GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, void const* data),
         SetArray(index, size, data), index, size, type, normalized, stride, data)
ANSWERED(void, glEnableVertexAttribArray, (GLuint index), objects.arrays[index % 8].enabled = true, index)
ANSWERED(void, glDisableVertexAttribArray, (GLuint index), objects.arrays[index % 8].enabled = false, index)
ANSWERED(void, glDrawArrays, (GLenum mode, GLint first, GLsizei count), CopyArrays(call, first + count), mode,
         first, count)
ANSWERED(void, glGenTextures, (GLsizei count, GLuint* names),
         std::generate_n(names, count, [] { return ++objects.lastTexture; }), count, names)
ANSWERED(void, glTexImage2D,
         (GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
          GLenum format, GLenum type, void const* data),
         Copy(call, &Call::bytes, data, ImageSize(width, height, format, type)), target, level, internal,
         width, height, border, format, type, data)
ANSWERED(void, glCompressedTexImage2D,
         (GLenum target, GLint level, GLenum internal, GLsizei width, GLsizei height, GLint border,
          GLsizei size, void const* data),
         Copy(call, &Call::bytes, data, size), target, level, internal, width, height, border, size, data)
// Not a function of the library: handed out by eglGetProcAddress. A binary has every name.
ANSWERED(void, glProgramBinaryOES, (GLuint program, GLenum format, void const* binary, GLint length),
         LoadBinary(call, program, binary, length), program, format, binary, length)

// Writes the bytes 1, 2, 3, ... unless it fails.
extern "C" void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type,
                             void* pixels) {
    const GLenum errorBefore = std::exchange(pendingError, GL_NO_ERROR);
    recording_gl::Record("glReadPixels", x, y, width, height, format, type, pixels);
    if (pendingError == GL_NO_ERROR) {
        auto* const bytes = static_cast<uint8_t*>(pixels);
        std::iota(bytes, bytes + ImageSize(width, height, format, type), uint8_t{1});
    }
    pendingError = errorBefore != GL_NO_ERROR ? errorBefore : pendingError;
}
