// A scene file with the plug-in that made its objects.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/scene.h"
#include "tools/zorvan/plugin.h"
#include "tools/zorvan/result.h"
#include "tools/zorvan/values.h"

namespace zorvan::tool {

// Where a scene and the classes of its objects come from, and how much memory it may take.
struct SceneSource {
    std::string scene;   // path of the scene file
    std::string plugin;  // path of the plug-in; empty for the default
    std::optional<MemorySize> memoryLimit;

    // Adds the options for plug-in and limit.
    void AddSourceOptions(CLI::App& app);
    // In bytes, the default where nothing is given.
    uint64_t MemoryLimit() const;
};

// A scene as loaded, without any surface.
class LoadedScene {
  public:
    // Loads the plug-in, registers its classes and loads the scene file.
    static Result<std::unique_ptr<LoadedScene>> Open(SceneSource const& source);
    // Loads a scene file in place of the present one, which stays when that fails.
    Status Replace(std::string const& file);

    LoadedScene(LoadedScene const&) = delete;
    LoadedScene& operator=(LoadedScene const&) = delete;
    ~LoadedScene();

    Scene& GetScene() { return *scene_; }
    // Of all textures as loaded; a texture drops its pixels when it has given them to GL.
    uint64_t GetTextureBytes() const { return textureBytes_; }
    Plugin const& GetPlugin() const { return *plugin_; }
    ClassRegistry& GetRegistry() { return *registry_; }
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

}  // namespace zorvan::tool
