// What keeps a file from being read or written.
#pragma once

#include <cstdint>
#include <string>

namespace texfile {

struct IoError {
    enum class Kind : std::uint8_t {
        kNone,
        kSystem,    // `detail` is an errno
        kExists,    // and may not be replaced
        kFolder,    // where a file was expected
        kTooLarge,  // more than `detail` bytes
        kZeroByte,  // in the name, where the system would cut it
        kEnds,      // before the size that it had
        kLink,      // to a device, a pipe or a socket, where one of these or a file was expected
    };

    Kind kind = Kind::kNone;
    std::uint64_t detail = 0;

    explicit operator bool() const { return kind != Kind::kNone; }
    // For people, without the file's name. Empty when there is no error.
    std::string Text() const;
};

// The error that the last system call left in errno.
IoError SystemError();

// kZeroByte for a name that the system would cut.
IoError CheckName(const std::string& path);

}  // namespace texfile
