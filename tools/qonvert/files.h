// Whole files in and out. "-" is standard input or output.
#pragma once

#include <string>

#include "tools/qonvert/texture_file.h"

namespace qonvert {

inline bool IsStandardStream(const std::string& path) {
    return path == "-";
}

// What messages call an input or an output.
inline std::string InputName(const std::string& path) {
    return IsStandardStream(path) ? "standard input" : path;
}
inline std::string OutputName(const std::string& path) {
    return IsStandardStream(path) ? "standard output" : path;
}

// Throws ToolError (I/O) when the file cannot be read.
Bytes ReadFile(const std::string& path);

// Throws ToolError (I/O) when `path` exists and may not be replaced, or cannot be a file's.
void CheckWritable(const std::string& path, bool overwrite);

// Writes a temporary file beside `path` and renames it, so that there is the whole file or none; see
// texfile/unfinished.h for what signals do. Devices, pipes and sockets are written as they stand.
// Throws ToolError (I/O), also when the file exists and `overwrite` is not set.
void WriteFile(const std::string& path, ByteSpan bytes, bool overwrite);

}  // namespace qonvert
