#include "texfile/output_target.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <string_view>

namespace texfile {

namespace {

std::optional<int> DescriptorNumber(const std::string& path) {
    for (const std::string_view folder : {"/proc/self/fd/", "/dev/fd/"}) {
        int number = -1;
        const char* end = path.data() + path.size();
        if (path.starts_with(folder) &&
            std::from_chars(path.data() + folder.size(), end, number).ptr == end && number >= 0) {
            return number;
        }
    }
    return std::nullopt;
}

int ConnectSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor >= 0 &&
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int reason = errno;
        close(descriptor);
        errno = reason;
        return -1;
    }
    return descriptor;
}

}  // namespace

std::optional<int> NamedDescriptor(const std::string& path) {
    // The system's own names are links to links at most.
    constexpr int kMostLinks = 4;
    std::string name = path;
    for (int i = 0; i < kMostLinks; ++i) {
        if (std::optional<int> number = DescriptorNumber(name)) {
            return number;
        }
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(name, error);
        if (error) {
            return std::nullopt;
        }
        name = std::filesystem::path(name).parent_path() / target;
    }
    return std::nullopt;
}

IoError FindTarget(const std::string& path, Existing existing, OutputTarget& target) {
    target = {};
    if (IoError error = CheckName(path)) {
        return error;
    }
    if (NamedDescriptor(path)) {
        target.isStream = true;
        return {};
    }
    struct stat itself {};
    if (lstat(path.c_str(), &itself) != 0) {
        return errno == ENOENT ? IoError{} : SystemError();
    }
    struct stat followed = itself;
    if (S_ISLNK(itself.st_mode) && stat(path.c_str(), &followed) != 0) {
        followed = itself;  // leads nowhere
    }
    if (S_ISDIR(followed.st_mode)) {
        return {IoError::Kind::kFolder, 0};
    }
    if (!S_ISREG(followed.st_mode) && !S_ISLNK(followed.st_mode)) {
        target.isStream = !S_ISLNK(itself.st_mode);
        return target.isStream ? IoError{} : IoError{IoError::Kind::kLink, 0};
    }
    if (existing == Existing::kKeep) {
        return {IoError::Kind::kExists, 0};
    }
    target.old = itself;
    return {};
}

int OpenStream(const std::string& path) {
    if (std::optional<int> number = NamedDescriptor(path)) {
        return fcntl(*number, F_DUPFD_CLOEXEC, 3);
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode)) {
        return ConnectSocket(path);
    }
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW);
    // A file that took the stream's place since it was looked at must not be written over.
    if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || S_ISREG(status.st_mode))) {
        close(descriptor);
        errno = EEXIST;
        return -1;
    }
    return descriptor;
}

}  // namespace texfile
