// Reads a fuzzer's input piece by piece; past its end everything is 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace zorvan::fuzz {

class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    uint8_t Byte() { return position_ < size_ ? data_[position_++] : 0; }

    uint32_t Word() {
        uint32_t word = 0;
        for (int i = 0; i < 4; ++i) {
            word |= static_cast<uint32_t>(Byte()) << (8 * i);
        }
        return word;
    }

    // A number low..high, both included.
    uint32_t Range(uint32_t low, uint32_t high) { return low + Byte() % (high - low + 1); }

    // One of the values.
    template <typename T, size_t N>
    T Pick(const std::array<T, N>& values) {
        return values[Byte() % N];
    }

    // An allocation of exactly size bytes, filled with the rest of the input over and over.
    std::unique_ptr<uint8_t[]> Fill(size_t size) const {
        auto bytes = std::make_unique<uint8_t[]>(size);
        const size_t rest = size_ - position_;
        for (size_t i = 0; i < size && rest > 0; ++i) {
            bytes[i] = data_[position_ + i % rest];
        }
        return bytes;
    }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
};

// Ends the program, as the fuzzer expects of a finding.
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

}  // namespace zorvan::fuzz
