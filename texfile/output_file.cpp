#include "texfile/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>

#include "texfile/unfinished.h"

namespace texfile {

namespace {

// Not the target's own name with an ending, which may be too long for one.
std::string RandomNameBeside(const std::string& path) {
    std::random_device random;
    char name[32];
    std::snprintf(name, sizeof name, ".zorvan-%08x%08x.tmp", random(), random());
    return path.substr(0, path.rfind('/') + 1) + name;
}

// So that the new name outlasts a power cut. File systems that cannot do that do not matter here.
void SyncFolderOf(const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
    if (isThere_) {
        EndUnfinished(temporary_, [this] { unlink(temporary_.c_str()); });
    }
}

IoError OutputFile::Open(const std::string& path, Existing existing) {
    path_ = path;
    existing_ = existing;
    if (IoError error = FindTarget(path, existing, target_)) {
        return error;
    }
    if (!target_.isStream) {
        return Create();
    }
    descriptor_ = OpenStream(path);
    return descriptor_ < 0 ? SystemError() : IoError{};
}

IoError OutputFile::Create() {
    // What replaces a file that others may not read, they may not read either before it does.
    const mode_t mode = target_.old && S_ISREG(target_.old->st_mode) ? 0600 : 0666;
    do {
        temporary_ = RandomNameBeside(path_);
        isThere_ = BeginUnfinished(temporary_, [&] {
            descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
            return descriptor_ >= 0;
        });
    } while (!isThere_ && errno == EEXIST);
    return isThere_ ? IoError{} : SystemError();
}

IoError OutputFile::Write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t put = write(descriptor_, bytes.data(), bytes.size());
        if (put < 0 && errno != EINTR) {
            return SystemError();
        }
        bytes = bytes.subspan(static_cast<std::size_t>(put > 0 ? put : 0));
    }
    return {};
}

IoError OutputFile::Sync() {
    return target_.isStream || fsync(descriptor_) == 0 ? IoError{} : SystemError();
}

IoError OutputFile::InheritMode() {
    if (!S_ISREG(target_.old->st_mode)) {
        return {};  // a link, which has no mode of its own
    }
    // Only the superuser may give files away; a group of one's own goes without.
    const bool sameOwner = fchown(descriptor_, target_.old->st_uid, target_.old->st_gid) == 0 ||
                           fchown(descriptor_, static_cast<uid_t>(-1), target_.old->st_gid) == 0;
    // Rights of another group must not become those of ours.
    const mode_t kept = sameOwner ? 0777 : 0707;
    return fchmod(descriptor_, target_.old->st_mode & kept) == 0 ? IoError{} : SystemError();
}

IoError OutputFile::Close() {
    const int closed = close(descriptor_);
    descriptor_ = -1;
    return closed == 0 ? IoError{} : SystemError();
}

IoError OutputFile::TakePlace() {
    // A link never replaces a file; where the file system has none, a rename must do.
    if (existing_ == Existing::kKeep) {
        if (link(temporary_.c_str(), path_.c_str()) == 0) {
            return {};
        }
        if (errno == EEXIST) {
            return {IoError::Kind::kExists, 0};
        }
    }
    IoError error;
    EndUnfinished(temporary_, [&] {
        if (rename(temporary_.c_str(), path_.c_str()) != 0) {
            error = SystemError();
            unlink(temporary_.c_str());
        }
    });
    isThere_ = false;
    return error;
}

IoError OutputFile::Commit() {
    if (target_.old) {
        IoError error = InheritMode();
        error = error ? error : Sync();
        if (error) {
            return error;
        }
    }
    IoError error = Close();
    if (!error && !target_.isStream) {
        error = TakePlace();
    }
    if (!error && target_.old) {
        SyncFolderOf(path_);
    }
    return error;
}

IoError WriteWholeFile(const std::string& path, std::span<const std::uint8_t> bytes, Existing existing) {
    OutputFile file;
    IoError error = file.Open(path, existing);
    error = error ? error : file.Write(bytes);
    return error ? error : file.Commit();
}

}  // namespace texfile
