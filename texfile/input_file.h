// Files that are looked at before they are read, whole or as far as they are needed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
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

    // The first bytes, fewer than `count` only when the file ends before. They stay a part of what is read
    // afterwards; `bytes` holds until then.
    IoError First(std::size_t count, std::span<const std::uint8_t>& bytes);

    // The whole file, to be called once. kTooLarge for more than `largest` bytes: before any memory is taken
    // where the file has a size, else when that many have come. Takes memory for the file once; of pipes and
    // the like, whose size nobody knows, up to three times.
    IoError ReadAll(std::uint64_t largest, std::vector<std::uint8_t>& bytes);

    // In place of ReadAll, a file may be taken in pieces, from its beginning on.

    // How many of the next `most` bytes there are. Takes memory only for those of pipes and the like.
    IoError Ahead(std::uint64_t most, std::uint64_t& count);
    // The next bytes, of which there must be enough. kEnds for a file that became shorter since it was asked.
    IoError Take(std::span<std::uint8_t> out);
    // Skips and counts what is left, in next to no memory. kTooLarge when that is more than `largest` bytes.
    IoError Skip(std::uint64_t largest, std::uint64_t& count);

  private:
    IoError ReadUpTo(std::size_t count);
    std::optional<std::uint64_t> BytesToRead() const;

    int descriptor_ = -1;
    bool owned_ = false;
    bool ended_ = false;
    std::vector<std::uint8_t> bytes_;  // read ahead
    std::size_t used_ = 0;             // of them, taken
};

// Open and ReadAll.
IoError ReadWholeFile(const std::string& path, std::uint64_t largest, std::vector<std::uint8_t>& bytes);

}  // namespace texfile
