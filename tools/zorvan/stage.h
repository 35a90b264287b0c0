// The host of a scene: plug-in, context, device and scene together.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/image.h"
#include "core/scene.h"
#include "tools/zorvan/egl_context.h"
#include "tools/zorvan/plugin.h"
#include "tools/zorvan/result.h"
#include "tools/zorvan/statistics.h"
#include "tools/zorvan/values.h"

namespace CLI {
class App;
}

namespace zorvan::tool {

struct StageOptions {
    std::string scene;   // path of the scene file
    std::string plugin;  // path of the plug-in; empty for the default
    // What is left empty comes from the scene file, and 640x480 where it says no size.
    std::optional<PixelSize> size;
    std::optional<ColorT<RealFixed>> background;
    std::optional<Camera2D> camera2D;
    SurfaceFormat surface = SurfaceFormat::Rgb888;
    // The surface has this many times the pixels in each direction; pictures average them.
    int supersample = 1;

    // Adds the options that every verb with a surface shares.
    void AddTo(CLI::App& app);
};

// A scene as loaded, without any surface.
class LoadedScene {
  public:
    // Loads the plug-in, registers its classes and loads the scene file.
    static Result<std::unique_ptr<LoadedScene>> Open(std::string const& file, std::string const& plugin);

    LoadedScene(LoadedScene const&) = delete;
    LoadedScene& operator=(LoadedScene const&) = delete;
    ~LoadedScene();

    Scene& GetScene() { return *scene_; }
    // Of all textures as loaded; a texture drops its pixels when it has given them to GL.
    uint64_t GetTextureBytes() const { return textureBytes_; }
    Plugin const& GetPlugin() const { return *plugin_; }
    // Destroys scene and programs, in this order; before the device and its context go.
    void Unload();

  private:
    LoadedScene() = default;

    // Destroyed from the last to the first: the plug-in goes last, after all that it made.
    std::unique_ptr<Plugin> plugin_;
    std::unique_ptr<ClassRegistry> registry_;
    std::unique_ptr<Scene> scene_;
    uint64_t textureBytes_ = 0;
};

// A scene on a surface.
class Stage {
  public:
    static Result<std::unique_ptr<Stage>> Open(StageOptions const& options);

    Stage(Stage const&) = delete;
    Stage& operator=(Stage const&) = delete;
    ~Stage();

    // Updates and renders the scene at a time in seconds.
    FrameTimes Draw(RealFixed time);
    // Reads the surface back as a picture.
    Result<Image> Read() const;

    LoadedScene& GetLoaded() { return *loaded_; }
    PixelSize GetSize() const { return size_; }
    // Names and texts about EGL, GL and the plug-in.
    std::vector<std::pair<std::string, std::string>> DescribeGl() const;

  private:
    Stage() = default;
    Status Prepare(StageOptions const& options);

    std::unique_ptr<EglContext> context_;
    std::unique_ptr<LoadedScene> loaded_;
    std::unique_ptr<GraphicsDevice> device_;
    PixelSize size_;  // of pictures
    int supersample_ = 1;
    Camera2D camera2D_;
    std::optional<RealFixed> lastTime_;
};

}  // namespace zorvan::tool
