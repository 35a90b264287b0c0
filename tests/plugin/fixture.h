// What the tests on the recording GL share: a device, and objects built without scene files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <numeric>

#include "graphics/camera.h"
#include "graphics/device.h"
#include "shaders/shader.h"
#include "tests/plugin/objects.h"
#include "tests/plugin/traces.h"
#include "tests/recording_gl/recording_gl.h"

namespace zorvan {

using Lines = std::vector<std::string>;
using recording_gl::script;

inline std::string Replaced(std::string text, std::string const& from, std::string const& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// Calls that stand in one literal, as in "glClear(0x4500); glFlush()", one on each line.
inline std::string Calls(std::string const& text) {
    return Replaced(text, "; ", "\n");
}

inline std::string TextsOf(std::vector<recording_gl::Call> const& calls) {
    std::string text;
    for (recording_gl::Call const& call : calls) {
        text += (text.empty() ? "" : "\n") + call.text;
    }
    return text;
}

// The calls since the last look.
inline std::string Taken() {
    return TextsOf(recording_gl::TakeCalls());
}

constexpr char kLookUp[] =
    "glGetAttribLocation($p, \"a_vPosition\"); glGetAttribLocation($p, \"a_vTexCoord\"); "
    "glGetUniformLocation($p, \"u_sBaseTexture\"); glGetUniformLocation($p, \"u_mModelViewProj\"); "
    "glGetUniformLocation($p, \"u_vColor\")";

// The calls that build program 2, the first after the device's own, from one text for each shader.
inline const std::string kBuild = Calls(Replaced(
    "glCreateShader(GL_VERTEX_SHADER); glShaderSource(103, 1, *, null); glCompileShader(103); "
    "glGetShaderiv(103, GL_COMPILE_STATUS, *); glCreateShader(GL_FRAGMENT_SHADER); "
    "glShaderSource(104, 1, *, null); glCompileShader(104); glGetShaderiv(104, GL_COMPILE_STATUS, *); "
    "glCreateProgram(); glAttachShader($p, 103); glAttachShader($p, 104); glLinkProgram($p); "
    "glDeleteShader(103); glDeleteShader(104); glGetProgramiv($p, GL_LINK_STATUS, *); " +
        std::string(kLookUp),
    "$p", "2"));

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

    void Update(Node& node) { node.Update(*device, RealFixed{}); }
    static std::vector<uint8_t> Bytes(Texture const& texture) {
        return {texture.pixels.data, texture.pixels.data + texture.pixels.size};
    }

    std::unique_ptr<GraphicsDeviceGL> device = std::make_unique<GraphicsDeviceGL>();
};

// Logs the device operations that bracket a drawing.
class LoggingDevice : public GraphicsDeviceGL {
  public:
    void PushMasks(List<Mask*>& masks) override { Log("PushMasks ", masks.Count()); }
    void PopMasks(List<Mask*>& masks) override { Log("PopMasks ", masks.Count()); }
    void PushCamera(Camera*) override { log += "PushCamera; "; }
    void PopCamera() override { log += "PopCamera; "; }
    void PushCameraDepth(bool depth) override { Log("PushCameraDepth ", depth); }
    void PopCameraDepth(bool depth) override { Log("PopCameraDepth ", depth); }
    void SetCameraDepth(bool depth) override { Log("SetCameraDepth ", depth); }
    std::string log;

  private:
    void Log(char const* name, uint32_t value) { log += name + std::to_string(value) + "; "; }
};

using Elements = std::array<int32_t, 16>;

inline Elements RawElements(Matrix4T<RealFixed> const& matrix) {
    Elements raw;
    std::transform(matrix.m, matrix.m + 16, raw.begin(), [](RealFixed element) { return element.raw; });
    return raw;
}

}  // namespace zorvan
