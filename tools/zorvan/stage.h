// The host of a scene: plug-in, context, device and scene together.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/graphics_device.h"
#include "core/image.h"
#include "tools/zorvan/gl_context.h"
#include "tools/zorvan/loaded_scene.h"
#include "tools/zorvan/result.h"
#include "tools/zorvan/statistics.h"
#include "tools/zorvan/values.h"

namespace CLI {
class App;
}

namespace zorvan::tool {

struct StageOptions : SceneSource {
    // What is left empty comes from the scene file, and 640x480 where it says no size.
    std::optional<PixelSize> size;
    std::optional<ColorT<RealFixed>> background;
    std::optional<Camera2D> camera2D;
    SurfaceFormat surface = SurfaceFormat::Rgb888;
    // The surface has this many times the pixels in each direction; pictures average them.
    int supersample = 1;
    // Unpacks ATITC textures before GL gets them.
    bool decodeAtitc = false;

    // Adds the options that every verb with a surface shares.
    void AddTo(CLI::App& app);
    // The same without those that only make sense for pictures.
    void AddToViewer(CLI::App& app);
};

// A scene on a surface.
class Stage {
  public:
    // On an off-screen surface unless a maker says otherwise.
    static Result<std::unique_ptr<Stage>> Open(StageOptions const& options,
                                               ContextMaker const& makeContext = {});

    Stage(Stage const&) = delete;
    Stage& operator=(Stage const&) = delete;
    ~Stage();

    // Updates and renders the scene at a time in seconds.
    FrameTimes Draw(RealFixed time);
    // Nodes at a point of the picture as last drawn, in pixels from its top left, in drawing order.
    List<Node*> Select(Vector2T<RealFixed> const& point);
    // Loads the scene file again; after a failure everything is as it was.
    Status Reload();
    // After a change of the surface's size.
    void Resize(PixelSize const& size);
    // What the screen-space camera shows, in scene units, in place of all of it; ignored where the scene is
    // shown without that camera.
    void SetCameraView(std::optional<RectangleT<RealFixed>> const& view) { cameraView_ = view; }
    // Reads the surface back as a picture.
    Result<Image> Read() const;
    // Reads a part of the picture, in pixels from its top left, without alpha.
    Result<Image> ReadArea(RectangleT<int> const& area);

    LoadedScene& GetLoaded() { return *loaded_; }
    PixelSize GetSize() const { return size_; }
    Camera2D const& GetCamera2D() const { return camera2D_; }
    GraphicsDevice& GetDevice() { return *device_; }
    // Names and texts about EGL, GL and the plug-in.
    std::vector<std::pair<std::string, std::string>> DescribeGl() const;

  private:
    Stage() = default;
    Status Prepare(ContextMaker const& makeContext);
    // Sets up what the scene file decides: background, camera, textures.
    Status ApplyScene();
    void PushCamera();

    StageOptions options_;
    std::unique_ptr<GlContext> context_;
    std::unique_ptr<LoadedScene> loaded_;
    std::unique_ptr<GraphicsDevice> device_;
    PixelSize size_;  // of pictures
    int supersample_ = 1;
    Camera2D camera2D_;
    std::optional<RectangleT<RealFixed>> cameraView_;
    std::optional<RealFixed> lastTime_;
};

}  // namespace zorvan::tool
