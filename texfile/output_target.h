// What a name for a file to be written stands for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/stat.h>

#include "texfile/io_error.h"

namespace texfile {

// Whether a file that is there may be replaced.
enum class Existing : std::uint8_t { kKeep, kReplace };

struct OutputTarget {
    // A device, a pipe, a socket or one of the program's own descriptors: written to as it stands.
    bool isStream = false;
    // The file that is to be replaced. A link is replaced itself, never followed: it may be somebody's trap.
    std::optional<struct stat> old;
};

// kExists, kFolder and kLink when no file can be written there, else what is there. Nothing is opened.
IoError FindTarget(const std::string& path, Existing existing, OutputTarget& target);

// The descriptor of this process that a name such as /dev/stdout or /proc/self/fd/3 stands for, if any.
std::optional<int> NamedDescriptor(const std::string& path);

// Opens a stream for writing; the descriptor is the caller's. -1 and errno on failure, also for what is no
// stream, or no more.
int OpenStream(const std::string& path);

}  // namespace texfile
