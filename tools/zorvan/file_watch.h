// Notices when a scene file, or a file that it names, changes.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace zorvan::tool {

class FileWatch {
  public:
    // Begins anew: with the scene file, and the images and fonts that it names at this time. A scene that is
    // no file or not JSON at this time keeps the names of the last time; of pipes nothing is read.
    void Start(std::string const& scene);
    // Whether a file changed, came, went or got other rights since the last Start.
    bool Changed() const;

  private:
    // Nothing for a file that is not there. Else which file it is, its size and times; of what is no file,
    // such as a folder, only that.
    using Stamp = std::optional<std::array<int64_t, 8>>;
    static Stamp StampOf(std::string const& path);

    std::map<std::string, Stamp> files_;
};

}  // namespace zorvan::tool
