// Reads a fuzzer's input piece by piece; past its end everything is 0.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

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
        Fill(bytes.get(), size);
        return bytes;
    }

    // The same in the caller's memory; without a rest of the input it is left as it is.
    void Fill(uint8_t* bytes, size_t size) const {
        const size_t rest = size_ - position_;
        for (size_t done = 0; done < size && rest > 0; done += rest) {
            std::memcpy(bytes + done, data_ + position_, std::min(rest, size - done));
        }
    }

    // What is left of the input.
    std::string_view Rest() const {
        return {reinterpret_cast<char const*>(data_) + position_, size_ - position_};
    }
    bool AtEnd() const { return position_ == size_; }

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
