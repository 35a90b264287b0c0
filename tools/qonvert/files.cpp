#include "tools/qonvert/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "tools/qonvert/finding.h"
#include "tools/qonvert/unfinished.h"

namespace qonvert {

namespace {

// More than any file that the tool writes: less than 4 GiB of pixels, and their mip levels, a third of that.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{6} << 30;
constexpr std::size_t kPiece = std::size_t{1} << 20;

[[noreturn]] void FailIo(const std::string& path, const std::string& why) {
    throw ToolError(ExitCode::kIo, path + ": " + why);
}

// Closes a descriptor at the end of its scope; standard streams stay open.
struct Descriptor {
    int number = -1;
    explicit Descriptor(int n) : number(n) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number > 2) {
            close(number);
        }
    }
};

// Reads in pieces, so that memory follows what is there, not what is claimed.
Bytes ReadAll(int descriptor, const std::string& path) {
    Bytes bytes;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + kPiece);
        const ssize_t got = read(descriptor, bytes.data() + before, kPiece);
        if (got < 0 && errno != EINTR) {
            FailIo(path, std::strerror(errno));
        }
        bytes.resize(before + static_cast<std::size_t>(got > 0 ? got : 0));
        if (got == 0) {
            return bytes;
        }
        if (bytes.size() > kMaxFileBytes) {
            FailIo(path, "larger than 6 GiB");
        }
    }
}

void WriteAll(int descriptor, ByteSpan bytes, const std::string& path) {
    while (!bytes.empty()) {
        const ssize_t put = write(descriptor, bytes.data(), bytes.size());
        if (put < 0 && errno != EINTR) {
            FailIo(path, std::strerror(errno));
        }
        bytes = bytes.subspan(static_cast<std::size_t>(put > 0 ? put : 0));
    }
}

// A new file beside its target, with the permissions of any new file. It is removed unless it becomes the
// target.
class Temporary {
  public:
    explicit Temporary(const std::string& target) : target_(target) {
        // A name of its own, since the target's may be as long as names can be; told apart from those of
        // other processes and threads.
        const std::string folder = target.substr(0, target.rfind('/') + 1);
        static std::atomic<unsigned> count{0};
        do {
            name_ = folder + ".qonvert-" + std::to_string(getpid()) + "-" + std::to_string(count++) + ".tmp";
        } while (!BeginUnfinished(name_, [this] { return Create(); }) && errno == EEXIST);
        if (descriptor_ < 0) {
            FailIo(target, std::strerror(errno));
        }
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
        EndUnfinished(name_, [this] {
            if (!renamed_) {
                unlink(name_.c_str());
            }
        });
    }

    void Write(ByteSpan bytes) {
        WriteAll(descriptor_, bytes, target_);
        const int closed = close(descriptor_);
        descriptor_ = -1;
        if (closed != 0) {
            FailIo(target_, std::strerror(errno));
        }
    }

    void Become(bool overwrite) {
        // A link never replaces a file; where the file system has none, a rename must do.
        const bool linked = !overwrite && link(name_.c_str(), target_.c_str()) == 0;
        if (!overwrite && !linked && errno == EEXIST) {
            FailIo(target_, "exists; --overwrite replaces it");
        }
        renamed_ = !linked && rename(name_.c_str(), target_.c_str()) == 0;
        if (!linked && !renamed_) {
            FailIo(target_, std::strerror(errno));
        }
    }

  private:
    bool Create() {
        descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        return descriptor_ >= 0;
    }

    std::string target_;
    std::string name_;
    int descriptor_ = -1;
    bool renamed_ = false;
};

}  // namespace

Bytes ReadFile(const std::string& path) {
    if (IsStandardStream(path)) {
        return ReadAll(STDIN_FILENO, InputName(path));
    }
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.number < 0) {
        FailIo(path, std::strerror(errno));
    }
    return ReadAll(file.number, path);
}

void CheckWritable(const std::string& path, bool overwrite) {
    struct stat status {};
    if (IsStandardStream(path)) {
        return;
    }
    if (stat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            FailIo(path, std::strerror(errno));
        }
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        FailIo(path, "is a directory");
    }
    if (!overwrite) {
        FailIo(path, "exists; --overwrite replaces it");
    }
}

void WriteFile(const std::string& path, ByteSpan bytes, bool overwrite) {
    if (IsStandardStream(path)) {
        if (isatty(STDOUT_FILENO) != 0) {
            throw ToolError(ExitCode::kUsage, OutputName(path) + " is a terminal, expected a file or a pipe");
        }
        WriteAll(STDOUT_FILENO, bytes, OutputName(path));
        return;
    }
    CheckWritable(path, overwrite);
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        // A device or a pipe cannot be renamed over.
        const Descriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
        if (device.number < 0) {
            FailIo(path, std::strerror(errno));
        }
        WriteAll(device.number, bytes, path);
        return;
    }
    Temporary temporary(path);
    temporary.Write(bytes);
    temporary.Become(overwrite);
}

}  // namespace qonvert
