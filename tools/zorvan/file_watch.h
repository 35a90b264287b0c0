// Notices when a scene file, or a file that it names, changes.
#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace zorvan::tool {

class FileWatch {
  public:
    // Begins anew: with the scene file, and the images and fonts that it names at this time. A file that is
    // not JSON at this time keeps the names of the last time.
    void Start(std::string const& scene);
    // Whether a file changed, came or went since the last Start.
    bool Changed() const;

  private:
    struct Stamp {
        std::filesystem::file_time_type time;
        uintmax_t size = 0;
        bool exists = false;
        bool operator==(Stamp const&) const = default;
    };
    static Stamp StampOf(std::string const& path);

    std::map<std::string, Stamp> files_;
};

}  // namespace zorvan::tool
