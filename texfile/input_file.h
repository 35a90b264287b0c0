// Files that are looked at before they are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "texfile/io_error.h"

namespace texfile {

class InputFile {
  public:
    InputFile() = default;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    // kFolder for a folder. A pipe without a writer is waited for.
    IoError Open(const std::string& path);
    // Reads from a descriptor that stays the caller's.
    void Attach(int descriptor);

    // The first bytes, fewer than `count` only when the file ends before. They stay a part of what ReadAll
    // gives.
    IoError First(std::size_t count, std::span<const std::uint8_t>& bytes);

    // The whole file, to be called once. kTooLarge for more than `largest` bytes: before any memory is taken
    // where the file has a size, else when that many have come. Takes memory for the file once; of pipes and
    // the like, whose size nobody knows, up to three times.
    IoError ReadAll(std::uint64_t largest, std::vector<std::uint8_t>& bytes);

  private:
    IoError ReadUpTo(std::size_t count);

    int descriptor_ = -1;
    bool owned_ = false;
    bool ended_ = false;
    std::vector<std::uint8_t> bytes_;
};

// Open and ReadAll.
IoError ReadWholeFile(const std::string& path, std::uint64_t largest, std::vector<std::uint8_t>& bytes);

}  // namespace texfile
