// What the tests on the recording GL share: a device, and objects built without scene files.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "graphics/camera.h"
#include "graphics/device.h"
#include "objects/sprite.h"
#include "objects/texture.h"
#include "shaders/shader.h"
#include "tests/empty_reader.h"
#include "tests/plugin/traces.h"
#include "tests/recording_gl/recording_gl.h"

namespace zorvan {

using Lines = std::vector<std::string>;

inline void AppendLines(Lines& lines, Lines const& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

// The calls that build a program from one vertex text and fragmentCount fragment texts.
inline Lines BuildLines(int program, int vertexShader, size_t fragmentCount = 1) {
    const std::string p = std::to_string(program);
    const std::string v = std::to_string(vertexShader);
    const std::string f = std::to_string(vertexShader + 1);
    return {"glCreateShader(GL_VERTEX_SHADER)",
            "glShaderSource(" + v + ", 1, *, null)",
            "glCompileShader(" + v + ")",
            "glGetShaderiv(" + v + ", GL_COMPILE_STATUS, *)",
            "glCreateShader(GL_FRAGMENT_SHADER)",
            "glShaderSource(" + f + ", " + std::to_string(fragmentCount) + ", *, null)",
            "glCompileShader(" + f + ")",
            "glGetShaderiv(" + f + ", GL_COMPILE_STATUS, *)",
            "glCreateProgram()",
            "glAttachShader(" + p + ", " + v + ")",
            "glAttachShader(" + p + ", " + f + ")",
            "glLinkProgram(" + p + ")",
            "glDeleteShader(" + v + ")",
            "glDeleteShader(" + f + ")",
            "glGetProgramiv(" + p + ", GL_LINK_STATUS, *)",
            "glGetAttribLocation(" + p + ", \"a_vPosition\")",
            "glGetAttribLocation(" + p + ", \"a_vTexCoord\")",
            "glGetUniformLocation(" + p + ", \"u_sBaseTexture\")",
            "glGetUniformLocation(" + p + ", \"u_mModelViewProj\")",
            "glGetUniformLocation(" + p + ", \"u_vColor\")"};
}

// Of the device's own solid program: those of the tests come after.
inline constexpr int kNextProgram = 2;
inline constexpr int kNextShader = 103;

class RecordedTest : public testing::Test {
  protected:
    RecordedTest() {
        recording_gl::Reset();
        device->Initialize(nullptr, DeviceFormat::Rgba8888, {640, 480});
        recording_gl::TakeCalls();
    }
    ~RecordedTest() override {
        Shader::ReleaseAll();
        ShaderGL* solid = device->solidShader;
        device.reset();
        delete solid;
    }

    // The calls since the last look.
    static Lines Taken() { return recording_gl::TakeLines(); }

    static RefT<SpriteGL> MakeSprite(int width, int height) {
        RefT<SpriteGL> sprite(new SpriteGL);
        sprite->width.Set(width);
        sprite->height.Set(height);
        EmptyReader reader;
        EXPECT_TRUE(sprite->Load(reader));
        return sprite;
    }

    // A texture of complete levels, its bytes counting up from 0.
    static RefT<TextureGL> MakeTexture(uint32_t format, int width, int height, uint32_t levels = 1) {
        RefT<TextureGL> texture(new TextureGL);
        texture->format.Set(format);
        texture->width.Set(width);
        texture->height.Set(height);
        texture->usedWidth.Set(width);
        texture->usedHeight.Set(height);
        List<TextureLevel> table;
        uint32_t offset = 0;
        for (uint32_t i = 0; i < levels; ++i) {
            const auto w = static_cast<uint32_t>(width) >> i;
            const auto h = static_cast<uint32_t>(height) >> i;
            const uint32_t size = TextureDataSize(format, w, h);
            table.Append({w, h, offset, size});
            offset += size;
        }
        EXPECT_TRUE(texture->SizePixelStore(offset));
        for (uint32_t i = 0; i < offset; ++i) {
            texture->pixels.data[i] = static_cast<uint8_t>(i);
        }
        texture->levels = table;
        return texture;
    }

    std::unique_ptr<GraphicsDeviceGL> device = std::make_unique<GraphicsDeviceGL>();
};

constexpr RealFixed Real(int value) {
    return RealFixed::FromInt(value);
}

inline std::array<int32_t, 16> RawElements(Matrix4T<RealFixed> const& matrix) {
    std::array<int32_t, 16> raw;
    for (size_t i = 0; i < raw.size(); ++i) {
        raw[i] = matrix.m[i].raw;
    }
    return raw;
}

}  // namespace zorvan
