#include "tools/zorvan/loaded_scene.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "core/out_of_memory.h"
#include "core/shader.h"

namespace zorvan::tool {

void SceneSource::AddSourceOptions(CLI::App& app) {
    app.add_option("--plugin", plugin, "The graphics plug-in; default: the one beside this program");
    AddValue(app, "--memory-limit", memoryLimit,
             "SIZE such as 512M or 2G: what the scene may take; default: a quarter of the free memory");
}

uint64_t SceneSource::MemoryLimit() const {
    return memoryLimit ? memoryLimit->bytes : MemoryBudget::DefaultLimit();
}

Result<std::unique_ptr<LoadedScene>> LoadedScene::Open(SceneSource const& source) {
    Result<std::unique_ptr<Plugin>> library = Plugin::Load(source.plugin);
    if (!library) {
        return library.GetFailure();
    }
    std::unique_ptr<LoadedScene> loaded(new LoadedScene);
    loaded->plugin_ = std::move(*library);
    loaded->registry_ = std::make_unique<ClassRegistry>();
    if (!loaded->plugin_->Initialize(*loaded->registry_)) {
        return Failure{ExitCode::Runtime, loaded->plugin_->GetPath() + ": the plug-in refused to start"};
    }
    if (OutOfMemory::Take()) {
        return NoMemoryFor(loaded->plugin_->GetPath());
    }
    loaded->scene_ = std::make_unique<Scene>();
    loaded->scene_->SetMemoryLimit(source.MemoryLimit());
    if (Status failure = loaded->Replace(source.scene)) {
        return *failure;
    }
    return loaded;
}

Status LoadedScene::Replace(std::string const& file) {
    if (!scene_->Load(file, *registry_)) {
        const ExitCode code = scene_->IsMemoryError() ? ExitCode::Memory
                              : scene_->IsFileError() ? ExitCode::Io
                                                      : ExitCode::BadFile;
        return Failure{code, scene_->Error()};
    }
    textureBytes_ = 0;
    for (RefT<Texture> const& texture : scene_->textures) {
        textureBytes_ += texture->pixels.size;
    }
    return std::nullopt;
}

LoadedScene::~LoadedScene() {
    Unload();
}

void LoadedScene::Unload() {
    scene_.reset();
    Shader::ReleaseAll();
}

}  // namespace zorvan::tool
