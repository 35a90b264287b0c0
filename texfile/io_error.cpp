#include "texfile/io_error.h"

#include <cerrno>
#include <cstring>

namespace texfile {

std::string IoError::Text() const {
    switch (kind) {
        case Kind::kNone:
            return {};
        case Kind::kSystem:
            return std::strerror(static_cast<int>(detail));
        case Kind::kExists:
            return "exists";
        case Kind::kFolder:
            return "got a folder, expected a file";
        case Kind::kTooLarge:
            return "got more than " + std::to_string(detail) + " bytes";
        case Kind::kZeroByte:
            return "got a name with a zero byte, expected none in it";
        case Kind::kEnds:
            return "became shorter while it was read";
        case Kind::kLink:
            return "got a link to a device, a pipe or a socket, expected its own name";
    }
    return {};
}

IoError SystemError() {
    return {IoError::Kind::kSystem, static_cast<std::uint64_t>(errno)};
}

IoError CheckName(const std::string& path) {
    return path.find('\0') == std::string::npos ? IoError{} : IoError{IoError::Kind::kZeroByte, 0};
}

}  // namespace texfile
