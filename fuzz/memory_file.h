// A file that lies in memory, for readers that want a path.
#pragma once

#include <string>
#include <string_view>

namespace zorvan::fuzz {

class MemoryFile {
  public:
    MemoryFile();
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;
    ~MemoryFile();

    // Replaces what the file holds.
    void Write(std::string_view bytes);
    std::string const& Path() const { return path_; }

  private:
    int descriptor_;
    std::string path_;
};

}  // namespace zorvan::fuzz
