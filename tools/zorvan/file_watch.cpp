#include "tools/zorvan/file_watch.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

namespace zorvan::tool {

FileWatch::Stamp FileWatch::StampOf(std::string const& path) {
    std::error_code error;
    Stamp stamp;
    stamp.time = std::filesystem::last_write_time(path, error);
    stamp.exists = !error;
    if (!stamp.exists) {
        return {};
    }
    stamp.size = std::filesystem::file_size(path, error);
    return stamp;
}

void FileWatch::Start(std::string const& scene) {
    const std::filesystem::path folder = std::filesystem::path(scene).parent_path();
    files_[scene] = StampOf(scene);
    std::ifstream file(scene);
    const nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    if (json.is_object()) {
        files_ = {{scene, files_[scene]}};
        for (char const* kind : {"textures", "fonts"}) {
            const auto list = json.find(kind);
            if (list == json.end() || !list->is_array()) {
                continue;
            }
            for (nlohmann::json const& entry : *list) {
                if (entry.is_object() && entry.contains("file") && entry["file"].is_string()) {
                    files_[folder / entry["file"].get<std::string>()];
                }
            }
        }
    }
    for (auto& [path, stamp] : files_) {
        stamp = StampOf(path);
    }
}

bool FileWatch::Changed() const {
    return std::any_of(files_.begin(), files_.end(),
                       [](auto const& entry) { return StampOf(entry.first) != entry.second; });
}

}  // namespace zorvan::tool
