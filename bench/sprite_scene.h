// Ten thousand textured sprites, and a bare loop that issues the same GL calls from precomputed arrays.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "graphics/device.h"
#include "objects/sprite.h"
#include "objects/texture.h"

namespace zorvan {

class SpriteScene {
  public:
    static constexpr int kWidth = 1280, kHeight = 720;
    static constexpr int kSprites = 10000;

    // Needs a current GL context. Draws one frame, so that the program and the texture exist.
    SpriteScene();
    ~SpriteScene();

    // Clear, update, render and flush. A moving scene shifts its root first, so that every sprite's matrix
    // is computed again.
    void EngineFrame(bool moving);
    // The same GL calls, for the first frame.
    void BareFrame() const;

  private:
    struct Prepared {
        std::array<float, 16> matrix;
        std::array<int32_t, 12> vertices;
        std::array<int32_t, 8> texCoords;
    };
    Prepared Prepare(SpriteGL const& sprite) const;

    std::unique_ptr<GraphicsDeviceGL> device_;
    RefT<TransformNode> root_;
    RefT<TextureGL> texture_;
    std::vector<Prepared> prepared_;
    int frame_ = 0;
};

// Median wall time and median CPU time of this thread, in nanoseconds per call.
struct Times {
    double wall, cpu;
};

// Calls the functions in turn, round after round, so that all of them see the same machine.
std::vector<Times> MedianTimes(int rounds, std::vector<std::function<void()>> const& functions);

}  // namespace zorvan
