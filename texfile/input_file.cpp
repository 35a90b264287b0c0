#include "texfile/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace texfile {

namespace {

// Memory is taken as bytes come, not as a size claims that they will.
constexpr std::size_t kPiece = std::size_t{1} << 20;

}  // namespace

InputFile::~InputFile() {
    if (owned_) {
        close(descriptor_);
    }
}

IoError InputFile::Open(const std::string& path) {
    if (IoError error = CheckName(path)) {
        return error;
    }
    descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    owned_ = descriptor_ >= 0;
    struct stat status {};
    if (!owned_ || fstat(descriptor_, &status) != 0) {
        return SystemError();
    }
    return S_ISDIR(status.st_mode) ? IoError{IoError::Kind::kFolder, 0} : IoError{};
}

void InputFile::Attach(int descriptor) {
    descriptor_ = descriptor;
}

IoError InputFile::ReadUpTo(std::size_t count) {
    while (bytes_.size() < count && !ended_) {
        const std::size_t before = bytes_.size();
        const std::size_t wanted = std::min(count - before, kPiece);
        bytes_.resize(before + wanted);
        const ssize_t got = read(descriptor_, bytes_.data() + before, wanted);
        bytes_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0 && errno != EINTR) {
            return SystemError();
        }
        ended_ = got == 0;
    }
    return {};
}

IoError InputFile::First(std::size_t count, std::span<const std::uint8_t>& bytes) {
    const IoError error = ReadUpTo(count);
    bytes = std::span(bytes_).first(std::min(count, bytes_.size()));
    return error;
}

// Nothing for pipes and devices, and for files of the system's that say 0 and hold more.
std::optional<std::uint64_t> InputFile::BytesToRead() const {
    if (ended_) {
        return 0;
    }
    struct stat status {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) {
        return std::nullopt;
    }
    const off_t at = lseek(descriptor_, 0, SEEK_CUR);
    return at < status.st_size ? static_cast<std::uint64_t>(status.st_size - at) : 0;
}

IoError InputFile::ReadAll(std::uint64_t largest, std::vector<std::uint8_t>& bytes) {
    const IoError tooLarge{IoError::Kind::kTooLarge, largest};
    if (const std::optional<std::uint64_t> left = BytesToRead()) {
        const std::uint64_t size = bytes_.size() + *left;
        if (size > largest || size >= SIZE_MAX / 2) {
            return tooLarge;
        }
        // One byte more, as only a read of nothing tells the end.
        bytes_.reserve(static_cast<std::size_t>(size) + 1);
    }
    while (!ended_) {
        if (IoError error = ReadUpTo(std::max(bytes_.size() + 1, bytes_.capacity()))) {
            return error;
        }
        if (bytes_.size() > largest) {
            return tooLarge;
        }
        if (!ended_) {
            bytes_.reserve(bytes_.size() + std::max(bytes_.size(), kPiece));
        }
    }
    bytes = std::move(bytes_);
    return {};
}

IoError InputFile::Ahead(std::uint64_t most, std::uint64_t& count) {
    count = bytes_.size() - used_;
    if (count < most) {
        if (const std::optional<std::uint64_t> left = BytesToRead()) {
            count += *left;
        } else {
            bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(used_));
            used_ = 0;
            const IoError error = ReadUpTo(static_cast<std::size_t>(std::min<std::uint64_t>(most, SIZE_MAX)));
            count = bytes_.size();
            if (error) {
                return error;
            }
        }
    }
    count = std::min(count, most);
    return {};
}

IoError InputFile::Take(std::span<std::uint8_t> out) {
    const std::size_t known = std::min(out.size(), bytes_.size() - used_);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(used_), known, out.begin());
    used_ += known;
    for (out = out.subspan(known); !out.empty();) {
        const ssize_t got = read(descriptor_, out.data(), std::min(out.size(), kPiece));
        if (got < 0 && errno != EINTR) {
            return SystemError();
        }
        if (got == 0) {
            return {IoError::Kind::kEnds, 0};
        }
        out = out.subspan(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }
    return {};
}

IoError InputFile::Skip(std::uint64_t largest, std::uint64_t& count) {
    count = bytes_.size() - used_;
    bytes_.clear();
    used_ = 0;
    if (const std::optional<std::uint64_t> left = BytesToRead()) {
        count += *left;
        ended_ = true;
    }
    while (!ended_ && count <= largest) {
        const IoError error = ReadUpTo(kPiece);
        count += bytes_.size();
        bytes_.clear();
        if (error) {
            return error;
        }
    }
    return count > largest ? IoError{IoError::Kind::kTooLarge, largest} : IoError{};
}

IoError ReadWholeFile(const std::string& path, std::uint64_t largest, std::vector<std::uint8_t>& bytes) {
    InputFile file;
    const IoError error = file.Open(path);
    return error ? error : file.ReadAll(largest, bytes);
}

}  // namespace texfile
