// Files in and out. "-" is standard input or output.
#pragma once

#include <string>

#include "texfile/input_file.h"
#include "tools/qonvert/texture_file.h"

namespace qonvert {

inline bool IsStandardStream(const std::string& path) {
    return path == "-";
}
// Also where it goes by another name, such as /dev/stdout.
bool IsStandardOutput(const std::string& path);

// What messages call an input or an output.
inline std::string InputName(const std::string& path) {
    return IsStandardStream(path) ? "standard input" : path;
}
inline std::string OutputName(const std::string& path) {
    return IsStandardStream(path) ? "standard output" : path;
}

texfile::IoError OpenInput(const std::string& path, texfile::InputFile& file);

// A whole file. Throws ToolError (I/O) when it cannot be read or has more than `largest` bytes.
Bytes ReadSmallFile(const std::string& path, std::uint64_t largest);

// Throws ToolError (I/O) when `path` exists and may not be replaced, or cannot be a file's.
void CheckWritable(const std::string& path, bool overwrite);

// Writes a temporary file beside `path` and renames it, so that there is the whole file or none; see
// texfile/unfinished.h for what signals do. Devices, pipes and sockets are written as they stand.
// Throws ToolError (I/O), also when the file exists and `overwrite` is not set.
void WriteFile(const std::string& path, ByteSpan bytes, bool overwrite);

}  // namespace qonvert
