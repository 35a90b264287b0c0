#include "core/file_bytes.h"

#include <span>

#include "texfile/input_file.h"
#include "texfile/output_file.h"

namespace zorvan {

FileBytes ReadFileBytes(std::string const& path, uint32_t largest) {
    FileBytes result;
    result.error = texfile::ReadWholeFile(path, largest, result.bytes).Text();
    return result;
}

std::string WriteFileBytes(std::string const& path, std::string_view bytes) {
    const std::span data(reinterpret_cast<uint8_t const*>(bytes.data()), bytes.size());
    return texfile::WriteWholeFile(path, data, texfile::Existing::kReplace).Text();
}

}  // namespace zorvan
