// Memory between two pages that end the program when they are touched.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvan::fuzz {

// Mapped once and handed out again for each input, as mapping is slow.
class GuardedMemory {
  public:
    explicit GuardedMemory(size_t most);  // bytes
    GuardedMemory(GuardedMemory const&) = delete;
    GuardedMemory& operator=(GuardedMemory const&) = delete;
    ~GuardedMemory();

    // `size` bytes, at most `most`, directly before the page behind (at the end) or directly behind the page
    // before. Whatever the bytes held is gone.
    uint8_t* Take(size_t size, bool atEnd);
    // Whether the bytes near those of the last Take, on the side without a guard, are as Take left them.
    bool SlackIsUntouched() const;

  private:
    uint8_t* mapping_;
    uint8_t* begin_;  // of what may be touched
    size_t capacity_;
    uint8_t* slack_ = nullptr;
    size_t slackSize_ = 0;
};

}  // namespace zorvan::fuzz
