// The graphics plug-in, loaded by name at run time as on the device.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/class_registry.h"
#include "core/graphics_device.h"
#include "tools/zorvan/result.h"

namespace zorvan::tool {

// Holds the library open. Destroying it calls Shutdown and unloads the library: everything that the
// library made must be gone by then.
class Plugin {
  public:
    // Loads a library and looks its three entry points up. An empty path means the plug-in beside this
    // program or, failing that, beside the core library. Failures: Io when there is no such file,
    // BadFile when it is not a library or lacks an entry point.
    static Result<std::unique_ptr<Plugin>> Load(std::string const& path);

    Plugin(Plugin const&) = delete;
    Plugin& operator=(Plugin const&) = delete;
    ~Plugin();

    // Registers the plug-in's classes; false when it refuses.
    bool Initialize(ClassRegistry& registry) const { return initialize_(&registry) != 0; }
    // A new device that the caller deletes, or null.
    GraphicsDevice* CreateDevice() const { return static_cast<GraphicsDevice*>(createDevice_()); }

    // A function of the library by its unmangled name, or null.
    template <typename Function>
    Function* FindFunction(char const* name) const {
        return reinterpret_cast<Function*>(FindSymbol(name));
    }

    std::string const& GetPath() const { return path_; }

  private:
    Plugin(void* library, std::string path) : library_(library), path_(std::move(path)) {}
    Status LookUp();
    void* FindSymbol(char const* name) const;

    void* library_;
    std::string path_;
    uint32_t (*initialize_)(ClassRegistry*) = nullptr;
    void* (*createDevice_)() = nullptr;
    void (*shutdown_)() = nullptr;
};

}  // namespace zorvan::tool
