#include "tools/zorvan/plugin.h"

#include <dlfcn.h>

#include <filesystem>

#include "core/shader.h"

namespace zorvan::tool {
namespace {

constexpr char const* kFileName = "libzorvanGraphics_alpha.so";

#ifdef ZORVAN_KEEP_PLUGIN_MAPPED
// Leak reports come at the end of the program and name functions only of libraries still in memory.
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;
#else
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL;
#endif

std::string DefaultPath() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path beside = program.parent_path() / kFileName;
    if (!error && std::filesystem::exists(beside, error)) {
        return beside;
    }
    Dl_info core{};
    if (dladdr(reinterpret_cast<void*>(&Shader::ReleaseAll), &core) != 0 && core.dli_fname != nullptr) {
        return std::filesystem::path(core.dli_fname).parent_path() / kFileName;
    }
    return beside;
}

template <typename Function>
bool Find(void* library, char const* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

}  // namespace

Result<std::unique_ptr<Plugin>> Plugin::Load(std::string const& path) {
    // A bare name would be searched for in the system's folders; a path option means a file.
    std::error_code error;
    const std::string file = std::filesystem::absolute(path.empty() ? DefaultPath() : path, error);
    const std::string shown = path.empty() ? file : path;
    if (!std::filesystem::exists(file, error)) {
        return Failure{ExitCode::Io, shown + ": no such plug-in; name one with --plugin PATH"};
    }
    void* library = dlopen(file.c_str(), kLoadFlags);
    if (library == nullptr) {
        return Failure{ExitCode::BadFile, shown + ": expected a plug-in library: " + dlerror()};
    }
    std::unique_ptr<Plugin> plugin(new Plugin(library, shown));
    if (Status failure = plugin->LookUp()) {
        return *failure;
    }
    return plugin;
}

Plugin::~Plugin() {
    if (shutdown_ != nullptr) {
        shutdown_();
    }
    dlclose(library_);
}

void* Plugin::FindSymbol(char const* name) const {
    return dlsym(library_, name);
}

Status Plugin::LookUp() {
    char const* missing = !Find(library_, "Initialize", initialize_)       ? "Initialize"
                          : !Find(library_, "CreateDevice", createDevice_) ? "CreateDevice"
                          : !Find(library_, "Shutdown", shutdown_)         ? "Shutdown"
                                                                           : nullptr;
    if (missing == nullptr) {
        return std::nullopt;
    }
    return Failure{ExitCode::BadFile,
                   path_ + ": not a graphics plug-in: it has no function '" + missing + "'"};
}

}  // namespace zorvan::tool
