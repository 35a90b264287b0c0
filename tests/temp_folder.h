// A folder of a test's own, since tests run side by side. Goes with all that is in it.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>

class TempFolder {
  public:
    TempFolder() {
        std::string name = std::filesystem::temp_directory_path() / "zorvan-test.XXXXXX";
        path_ = mkdtemp(name.data());
    }
    TempFolder(TempFolder const&) = delete;
    TempFolder& operator=(TempFolder const&) = delete;
    ~TempFolder() { std::filesystem::remove_all(path_); }

    std::filesystem::path const& Path() const { return path_; }
    std::string operator/(std::string const& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};
