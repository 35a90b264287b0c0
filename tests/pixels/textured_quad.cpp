#include "tests/pixels/textured_quad.h"

namespace zorvan {
namespace {

GLuint Compile(GLenum kind, char const* source) {
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    return shader;
}

}  // namespace

void SetUpTexturedQuad() {
    const GLuint program = glCreateProgram();
    glAttachShader(program,
                   Compile(GL_VERTEX_SHADER,
                           "attribute vec2 corner; varying vec2 at;"
                           "void main() { at = corner; gl_Position = vec4(2.0 * corner - 1.0, 0, 1); }"));
    glAttachShader(program, Compile(GL_FRAGMENT_SHADER,
                                    "precision highp float; varying vec2 at; uniform sampler2D image;"
                                    "void main() { gl_FragColor = texture2D(image, at); }"));
    glBindAttribLocation(program, 0, "corner");
    glLinkProgram(program);
    glUseProgram(program);
    static constexpr float kCorners[] = {0, 0, 1, 0, 0, 1, 1, 1};
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kCorners);
    glDisable(GL_DITHER);
}

GLuint BindNewTexture() {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return texture;
}

}  // namespace zorvan
