// What the tests on the recording GL share: a device, expected calls, and the engine's traces.
#pragma once

#include <algorithm>
#include <regex>
#include <tuple>
#include <utility>

#include "core/trace.h"
#include "graphics/camera.h"
#include "graphics/device.h"
#include "shaders/shader.h"
#include "tests/plugin/objects.h"
#include "tests/recording_gl/recorder.h"

namespace zorvan {

using Lines = std::vector<std::string>;
using recording_gl::script;
using recording_gl::TakeLog;

inline std::string Replaced(std::string text, std::string const& from, std::string const& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// Calls that stand in one literal, as in "Clear(0x4500); UseProgram($)", one on each line, with a value for
// $.
inline std::string Calls(std::string const& text, std::string const& value = "") {
    return Replaced(Replaced(text, "; ", "\n"), "$", value);
}

// Of matrices and arrays only the first elements.
inline std::string Brief(std::string const& log) {
    return std::regex_replace(log, std::regex("\\[(\\S+)[^\\]]*\\]"), "[$1]");
}

constexpr char kLookUp[] =
    "GetAttribLocation($, \"a_vPosition\"); GetAttribLocation($, \"a_vTexCoord\"); "
    "GetUniformLocation($, \"u_sBaseTexture\"); GetUniformLocation($, \"u_mModelViewProj\"); "
    "GetUniformLocation($, \"u_vColor\")";

// The calls that build a program from one vertex text and fragment texts, when all programs before it were
// built so.
inline std::string Built(int program, int fragments = 1) {
    const std::string text =
        "CreateShader(VERTEX_SHADER); ShaderSource(@v, 1, *, null); CompileShader(@v); GetShaderiv(@v, "
        "COMPILE_STATUS, *); CreateShader(FRAGMENT_SHADER); ShaderSource(@f, " +
        std::to_string(fragments) +
        ", *, null); CompileShader(@f); GetShaderiv(@f, COMPILE_STATUS, *); CreateProgram(); AttachShader($, "
        "@v); AttachShader($, @f); LinkProgram($); DeleteShader(@v); DeleteShader(@f); GetProgramiv($, "
        "LINK_STATUS, *); ";
    return Calls(Replaced(Replaced(text + kLookUp, "@v", std::to_string(99 + 2 * program)), "@f",
                          std::to_string(100 + 2 * program)),
                 std::to_string(program));
}

// Collects what the engine traces while it lives.
class Traces {
  public:
    Traces() {
        Debug::SetSink(
            [](void* texts, std::string_view text) { static_cast<Lines*>(texts)->emplace_back(text); },
            &texts_);
    }
    ~Traces() { Debug::SetSink(nullptr, nullptr); }
    Traces(Traces const&) = delete;
    Lines Take() { return std::exchange(texts_, {}); }

  private:
    Lines texts_;
};

// A set-up device; the log starts empty. The device's own program is number 1.
class RecordedTest : public testing::Test {
  protected:
    explicit RecordedTest(GraphicsDeviceGL* made = new GraphicsDeviceGL) : device(made) {
        recording_gl::Reset();
        device->Initialize(nullptr, DeviceFormat::Rgba8888, {640, 480});
        TakeLog();
    }
    ~RecordedTest() override {
        Shader::ReleaseAll();
        const std::unique_ptr<ShaderGL> solid(device->solidShader);
        device.reset();
    }
    void Update(Node& node) { node.Update(*device, RealFixed{}); }
    std::string Draw(Node& node) {
        TakeLog();
        node.Render(*device);
        return TakeLog();
    }

    std::unique_ptr<GraphicsDeviceGL> device;
    Traces traces;
};

// An object that says when it is deleted.
template <typename Base>
class Mortal : public Base {
  public:
    explicit Mortal(bool& dead) : dead_(dead) {}
    ~Mortal() override { dead_ = true; }

  private:
    bool& dead_;
};

using Elements = std::array<int32_t, 16>;

inline Elements RawElements(Matrix4T<RealFixed> const& matrix) {
    Elements raw;
    std::transform(matrix.m, matrix.m + 16, raw.begin(), [](RealFixed element) { return element.raw; });
    return raw;
}

}  // namespace zorvan
