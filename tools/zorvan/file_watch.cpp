#include "tools/zorvan/file_watch.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "texfile/input_file.h"

namespace zorvan::tool {
namespace {

using Json = nlohmann::json;

constexpr uint64_t kLargestScene = 512u << 20;

bool IsFile(std::string const& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The lists of files of a scene, without what else is in it; discarded when it cannot be read.
Json ReadLists(std::string const& scene) {
    std::vector<uint8_t> bytes;
    if (!IsFile(scene) || texfile::ReadWholeFile(scene, kLargestScene, bytes)) {
        return Json(Json::value_t::discarded);
    }
    const auto isKept = [](int depth, Json::parse_event_t event, Json const& parsed) {
        return depth != 1 || event != Json::parse_event_t::key || parsed == "textures" || parsed == "fonts";
    };
    return Json::parse(bytes, isKept, false);
}

}  // namespace

FileWatch::Stamp FileWatch::StampOf(std::string const& path) {
    struct stat status {};
    if (texfile::CheckName(path) || stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        return Stamp({status.st_mode & S_IFMT});
    }
    return Stamp({status.st_mode, static_cast<int64_t>(status.st_dev), static_cast<int64_t>(status.st_ino),
                  status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_ctim.tv_sec,
                  status.st_ctim.tv_nsec});
}

void FileWatch::Start(std::string const& scene) {
    // Before reading: what changes meanwhile is noticed next time.
    const Stamp sceneStamp = StampOf(scene);
    const Json lists = ReadLists(scene);
    if (lists.is_object()) {
        files_.clear();
        const std::filesystem::path folder = std::filesystem::path(scene).parent_path();
        for (Json const& list : lists) {
            for (Json const& entry : list.is_array() ? list : Json::array()) {
                if (entry.is_object() && entry.contains("file") && entry["file"].is_string()) {
                    files_[folder / entry["file"].get<std::string>()];
                }
            }
        }
    }
    for (auto& [path, stamp] : files_) {
        stamp = StampOf(path);
    }
    files_[scene] = sceneStamp;
}

bool FileWatch::Changed() const {
    return std::any_of(files_.begin(), files_.end(),
                       [](auto const& entry) { return StampOf(entry.first) != entry.second; });
}

}  // namespace zorvan::tool
