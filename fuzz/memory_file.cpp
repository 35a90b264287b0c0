#include "fuzz/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/fuzz_input.h"

namespace zorvan::fuzz {

MemoryFile::MemoryFile() : descriptor_(memfd_create("input", 0)) {
    Require(descriptor_ >= 0);
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

MemoryFile::~MemoryFile() {
    close(descriptor_);
}

void MemoryFile::Write(std::string_view bytes) {
    Require(ftruncate(descriptor_, 0) == 0);
    const auto written = pwrite(descriptor_, bytes.data(), bytes.size(), 0);
    Require(written == static_cast<ssize_t>(bytes.size()));
}

}  // namespace zorvan::fuzz
