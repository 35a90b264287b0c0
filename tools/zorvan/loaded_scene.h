// A scene file with the plug-in that made its objects.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/scene.h"
#include "tools/zorvan/plugin.h"
#include "tools/zorvan/result.h"

namespace zorvan::tool {

// A scene as loaded, without any surface.
class LoadedScene {
  public:
    // Loads the plug-in, registers its classes and loads the scene file.
    static Result<std::unique_ptr<LoadedScene>> Open(std::string const& file, std::string const& plugin);
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
