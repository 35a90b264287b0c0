// The OpenGL ES 2.0 functions that the plug-in uses.
#include <algorithm>
#include <iomanip>
#include <iterator>
#include <numeric>
#include <sstream>
#include <utility>

#include "tests/recording_gl/recorder.h"

namespace {

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

// "[1 2 3]".
template <typename T>
std::string List(T const* values, GLsizei count) {
    std::ostringstream text;
    std::copy(values, values + count, std::ostream_iterator<T>(text << std::setprecision(10), " "));
    return '[' + text.str().substr(0, text.str().size() - 1) + ']';
}

std::string Elements(GLfloat const* matrix) {
    std::array<double, 16> raw;
    std::transform(matrix, matrix + 16, raw.begin(), [](GLfloat element) { return element * 65536.0; });
    return List(raw.data(), 16);
}

std::string Arrays(GLsizei vertices) {
    std::string text;
    for (size_t i = 0; i < objects.arrays.size(); ++i) {
        ClientArray const& array = objects.arrays[i];
        if (array.enabled && array.data != nullptr) {
            text += (text.empty() ? "" : " ") + std::to_string(i) + List(array.data, array.size * vertices);
        }
    }
    return text;
}

std::string Data(void const* bytes, size_t size) {
    return bytes == nullptr
               ? "null"
               : std::to_string(size) + '@' + std::to_string(*static_cast<uint8_t const*>(bytes));
}

template <typename Count>
std::string Joined(GLchar const* const* strings, Count count) {
    return std::accumulate(strings, strings + count, std::string(),
                           [](std::string const& all, char const* text) { return all + text + '#'; });
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

size_t ImageSize(GLsizei width, GLsizei height, GLenum format, GLenum type) {
    const size_t pixel = type != GL_UNSIGNED_BYTE ? 2 : format == GL_RGB ? 3 : 4;
    return pixel * static_cast<size_t>(width) * static_cast<size_t>(height);
}

// With the bytes 1, 2, 3, ... unless the call fails.
void Fill(void* pixels, size_t size) {
    auto* const bytes = static_cast<uint8_t*>(pixels);
    std::iota(bytes, bytes + (recording_gl::raised ? 0 : size), uint8_t{1});
}

}  // namespace

void recording_gl::ForgetObjects() {
    objects = {};
}

std::string recording_gl::SourceOf(uint32_t shader) {
    return objects.shaders[shader].second;
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
         objects.shaders[shader].second = Joined(strings, count), shader, count, strings, lengths)
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
LOGGED(glUniformMatrix4fv, (GLint location, GLsizei count, GLboolean transpose, GLfloat const* value),
       location, count, transpose, Elements(value))
ANSWERED(void, glVertexAttribPointer,
         (GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, void const* data),
         SetArray(index, size, data), index, size, type, normalized, stride, data)
ANSWERED(void, glEnableVertexAttribArray, (GLuint index), objects.arrays[index % 8].enabled = true, index)
ANSWERED(void, glDisableVertexAttribArray, (GLuint index), objects.arrays[index % 8].enabled = false, index)
LOGGED(glDrawArrays, (GLenum mode, GLint first, GLsizei count), mode, first, count, Arrays(first + count))
ANSWERED(void, glGenTextures, (GLsizei count, GLuint* names),
         std::generate_n(names, count, [] { return ++objects.lastTexture; }), count, names)
LOGGED(glTexImage2D,
       (GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height, GLint border,
        GLenum format, GLenum type, void const* data),
       target, level, internal, width, height, border, format, type,
       Data(data, ImageSize(width, height, format, type)))
LOGGED(glCompressedTexImage2D,
       (GLenum target, GLint level, GLenum internal, GLsizei width, GLsizei height, GLint border,
        GLsizei size, void const* data),
       target, level, internal, width, height, border, size, Data(data, static_cast<size_t>(size)))
// Not a function of the library: handed out by eglGetProcAddress. A binary has every name.
ANSWERED(void, glProgramBinaryOES, (GLuint program, GLenum format, void const* binary, GLint length),
         objects.programs[program] = Joined(kNames, std::size(kNames)), program, format,
         Data(binary, static_cast<size_t>(length)), length)

ANSWERED(void, glReadPixels,
         (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),
         Fill(pixels, ImageSize(width, height, format, type)), x, y, width, height, format, type, pixels)
