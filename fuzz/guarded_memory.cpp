#include "fuzz/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "fuzz/fuzz_input.h"

namespace zorvan::fuzz {

namespace {

constexpr uint8_t kMark = 0xA5;
constexpr size_t kSlack = 256;  // bytes

size_t PageSize() {
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

GuardedMemory::GuardedMemory(size_t most)
    : capacity_((most + kSlack + PageSize() - 1) / PageSize() * PageSize()) {
    const size_t page = PageSize();
    void* mapping =
        mmap(nullptr, capacity_ + 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Require(mapping != MAP_FAILED);
    mapping_ = static_cast<uint8_t*>(mapping);
    begin_ = mapping_ + page;
    Require(mprotect(mapping_, page, PROT_NONE) == 0 && mprotect(begin_ + capacity_, page, PROT_NONE) == 0);
}

GuardedMemory::~GuardedMemory() {
    munmap(mapping_, capacity_ + 2 * PageSize());
}

uint8_t* GuardedMemory::Take(size_t size, bool atEnd) {
    Require(size <= capacity_);
    uint8_t* bytes = atEnd ? begin_ + capacity_ - size : begin_;
    slackSize_ = std::min(kSlack, capacity_ - size);
    slack_ = atEnd ? bytes - slackSize_ : bytes + size;
    std::memset(slack_, kMark, slackSize_);
    return bytes;
}

bool GuardedMemory::SlackIsUntouched() const {
    return std::all_of(slack_, slack_ + slackSize_, [](uint8_t byte) { return byte == kMark; });
}

}  // namespace zorvan::fuzz
