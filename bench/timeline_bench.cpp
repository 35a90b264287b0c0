// A thousand timelines, nested fifty deep, each with a camera, a depth flag, a mask, a track and a sprite
// that it moves: whole frames beside a bare loop that issues the same GL calls from precomputed arrays. They
// take turns frame by frame; medians are compared.
#include <GLES2/gl2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/allocation_count.h"
#include "bench/gl_context.h"
#include "bench/sprite_scene.h"
#include "core/class_registry.h"
#include "core/json_reader.h"
#include "graphics/camera.h"
#include "graphics/plugin.h"
#include "objects/timeline.h"
#include "shaders/shader.h"

namespace zorvan::bench {
namespace {

constexpr int kSurface = 1024;
constexpr int kChains = 20, kDepth = 50;
constexpr size_t kTimelines = size_t{kChains} * kDepth;
constexpr size_t kCallsPerSprite = 9;
constexpr size_t kCalls = kTimelines * kCallsPerSprite + 2;  // clear and flush
constexpr int32_t kSide = 16 << 16;
constexpr int32_t kCorners[12] = {0, 0, 0, 0, kSide, 0, kSide, 0, 0, kSide, kSide, 0};

// A timeline with others inside, in the scene format.
std::string TimelineText(int chain, int depth) {
    const std::string place = std::to_string(chain * 50) + ", " + std::to_string(depth * 20) + ", 0]";
    return R"({"class": "Timeline", "length": 60, "mode": "ping-pong", "masks": 1, "depth": )" +
           std::string(depth % 2 == 0 ? "true" : "false") +
           R"(, "camera": {"orthographic": true, "viewRectangle": [0, 0, 1024, 1024], "nearPlane": -1, "farPlane": 1},
              "tracks": [{"node": "sprite", "property": "position", "keys": [
                {"frame": 0, "value": [0, 0, 0]}, {"frame": 60, "value": [)" +
           place + R"(}]}], "children": [{"class": "Sprite", "name": "sprite", "width": 16, "height": 16})" +
           (depth + 1 < kDepth ? ", " + TimelineText(chain, depth + 1) : "") + "]}";
}

class TimelineScene {
  public:
    // Needs a current GL context. Draws one frame, so that the program exists.
    TimelineScene() {
        ::Initialize(&registry_);
        device_.Initialize(nullptr, DeviceFormat::Rgba8888, {kSurface, kSurface});
        JsonReader reader(registry_);
        for (int chain = 0; chain < kChains; ++chain) {
            reader.Parse(TimelineText(chain, 0));
            Node* timeline = LoadNode(reader);
            if (timeline == nullptr) {
                std::fprintf(stderr, "%s\n", reader.Error().c_str());
                std::exit(EXIT_FAILURE);
            }
            root_->Attach(timeline);
            reader.Finish();
        }
        EngineFrame(false);
        for (Node* timeline : root_->GetChildren()) {
            Prepare(*static_cast<TimelineGL*>(timeline));
        }
    }
    ~TimelineScene() {
        root_ = {};
        delete device_.solidShader;
        Shader::ReleaseAll();
    }

    // Clear, update, render and flush. In a moving scene each frame is a new one for every track.
    void EngineFrame(bool moving) {
        time_ += RealFixed::FromRaw(moving ? 65536 / 30 : 0);
        device_.Clear();
        root_->Update(device_, time_);
        root_->Render(device_);
        device_.Present();
    }
    // The same GL calls, for the first frame.
    void BareFrame() const {
        const auto position = static_cast<GLuint>(program_->positionAttribute);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        for (std::array<float, 16> const& matrix : matrices_) {
            glUseProgram(program_->program);
            glUniformMatrix4fv(program_->modelViewProjUniform, 1, GL_FALSE, matrix.data());
            glVertexAttribPointer(position, 3, GL_FIXED, GL_FALSE, 0, kCorners);
            glEnableVertexAttribArray(position);
            glBlendEquation(GL_FUNC_ADD);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            glUniform4f(program_->colorUniform, 1, 1, 1, 1);
            glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
            glDisableVertexAttribArray(position);
        }
        glFlush();
    }

  private:
    void Prepare(TimelineGL& timeline) {
        auto const& camera = static_cast<CameraGL const&>(*timeline.GetCamera());
        auto& sprite = static_cast<SpriteGL&>(*timeline.GetChildren()[0]);
        const Matrix4T<RealFixed> product =
            sprite.GetWorldMatrix() * camera.GetViewMatrix() * camera.GetProjectionMatrix();
        std::transform(product.m, product.m + 16, matrices_.emplace_back().begin(),
                       [](RealFixed element) { return element.ToFloat(); });
        program_ = sprite.GetGLShader();
        if (timeline.GetChildren().Count() > 1) {
            Prepare(static_cast<TimelineGL&>(*timeline.GetChildren()[1]));
        }
    }

    ClassRegistry registry_;
    GraphicsDeviceGL device_;
    RefT<TransformNode> root_{new TransformNode};
    RealFixed time_;
    std::vector<std::array<float, 16>> matrices_;
    ShaderGL const* program_ = nullptr;
};

void Print(char const* name, double nanoseconds, double bare, uint64_t allocations) {
    std::printf(
        "%-12s %9.1f us/frame %12.0f calls/s %8.1f ns/timeline %7.3f of the bare loop %6llu "
        "allocations/frame\n",
        name, nanoseconds / 1e3, static_cast<double>(kCalls) * 1e9 / nanoseconds,
        nanoseconds / static_cast<double>(kTimelines), nanoseconds / bare,
        static_cast<unsigned long long>(allocations));
}

int Run(int frames) {
    if (!MakeContextCurrent(kSurface, kSurface)) {
        return EXIT_FAILURE;
    }
    TimelineScene scene;
    const std::vector<std::function<void()>> functions = {[&scene] {
                                                              scene.BareFrame();
                                                              FinishDrawing();
                                                          },
                                                          [&scene] {
                                                              scene.EngineFrame(false);
                                                              FinishDrawing();
                                                          },
                                                          [&scene] {
                                                              scene.EngineFrame(true);
                                                              FinishDrawing();
                                                          }};
    const std::vector<Times> times = MedianTimes(frames, functions);
    std::printf("%zu timelines with a sprite each, %zu GL calls per frame, %d frames\n", kTimelines, kCalls,
                frames);
    constexpr char const* kNames[] = {"bare loop", "still scene", "moving scene"};
    for (size_t i = 0; i < functions.size(); ++i) {
        const uint64_t before = AllocationCount();
        functions[i]();
        Print(kNames[i], times[i].wall, times[0].wall, AllocationCount() - before);
    }
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace zorvan::bench

// Usage: timeline_gl_bench [FRAMES] or timeline_cpu_bench [FRAMES]
int main(int count, char** arguments) {
    return zorvan::bench::Run(count > 1 ? std::max(std::atoi(arguments[1]), 1) : 51);
}
