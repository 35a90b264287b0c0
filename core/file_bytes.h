// Whole files at once.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/api.h"

namespace zorvan {

struct FileBytes {
    std::vector<uint8_t> bytes;
    std::string error;  // empty when the file was read; without the file's name
};

// Refuses folders and files of more than largest bytes.
ZORVAN_CORE_API FileBytes ReadFileBytes(std::string const& path, uint32_t largest);

// Writes beside the target and renames, so that the target is either the old or the whole new file; a device,
// a pipe or a socket is written as it stands. The error, or empty; without the file's name.
ZORVAN_CORE_API std::string WriteFileBytes(std::string const& path, std::string_view bytes);

}  // namespace zorvan
