#include "core/file_bytes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace zorvan {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string SystemError() {
    return std::strerror(errno);
}

}  // namespace

FileBytes ReadFileBytes(std::string const& path, uint32_t largest) {
    FileBytes result;
    struct stat status {};
    File file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr || fstat(fileno(file.get()), &status) != 0) {
        result.error = SystemError();
        return result;
    }
    if (S_ISDIR(status.st_mode)) {
        result.error = "got a folder, expected a file";
        return result;
    }
    // Pipes have no size: read on until the end.
    uint8_t chunk[65536];
    for (size_t got = 0; (got = std::fread(chunk, 1, sizeof(chunk), file.get())) > 0;) {
        if (result.bytes.size() + got > largest) {
            result.error = "got more than " + std::to_string(largest) + " bytes";
            result.bytes.clear();
            return result;
        }
        result.bytes.insert(result.bytes.end(), chunk, chunk + got);
    }
    if (std::ferror(file.get()) != 0) {
        result.error = SystemError();
    }
    return result;
}

std::string TemporaryBeside(std::string const& path) {
    static std::atomic<uint32_t> count{0};
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    // Not the path's own name with an ending, which may be too long for one.
    return folder + ".zorvan-" + std::to_string(getpid()) + "-" + std::to_string(count++);
}

std::string WriteFileBytes(std::string const& path, std::string_view bytes) {
    const std::string temporary = TemporaryBeside(path);
    File file(std::fopen(temporary.c_str(), "wb"));
    if (file == nullptr) {
        return SystemError();
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    const bool closed = std::fclose(file.release()) == 0;
    if (!written || !closed || std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::string error = SystemError();
        std::remove(temporary.c_str());
        return error;
    }
    return {};
}

}  // namespace zorvan
