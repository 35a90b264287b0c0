#include "tools/qonvert/byte_source.h"

#include <algorithm>

#include "texfile/input_file.h"
#include "tools/qonvert/finding.h"

namespace qonvert {

namespace {

// More than any file that the tool writes: less than 4 GiB of pixels, and their mip levels, a third of that.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{6} << 30;

void Check(const texfile::IoError& error) {
    if (error) {
        throw ToolError(ExitCode::kIo, error.Text());
    }
}

}  // namespace

std::uint64_t MemorySource::Ahead(std::uint64_t most) {
    return std::min<std::uint64_t>(most, bytes_.size());
}

void MemorySource::TakeNext(std::span<std::uint8_t> out) {
    std::copy_n(bytes_.begin(), out.size(), out.begin());
    bytes_ = bytes_.subspan(out.size());
}

std::uint64_t MemorySource::SkipRest() {
    const std::uint64_t count = bytes_.size();
    bytes_ = {};
    return count;
}

std::uint64_t FileSource::Ahead(std::uint64_t most) {
    std::uint64_t count = 0;
    Check(file_.Ahead(most, count));
    return count;
}

void FileSource::TakeNext(std::span<std::uint8_t> out) {
    Check(file_.Take(out));
}

std::uint64_t FileSource::SkipRest() {
    std::uint64_t count = 0;
    Check(file_.Skip(kMaxFileBytes, count));
    return count;
}

}  // namespace qonvert
