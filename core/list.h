// Growable array of trivially copyable elements.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "core/out_of_memory.h"

namespace zorvan {

template <typename T>
struct ListDefaultComparator {
    bool operator()(T const& a, T const& b) const { return a == b; }
};

// Data pointer, count and capacity, in this order. Grows by realloc and never throws: what cannot grow
// returns false, stays unchanged and is noted as OutOfMemory.
template <typename T, typename Comparator = ListDefaultComparator<T>>
class List {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    static constexpr uint32_t kNotFound = 0xFFFFFFFFu;

    List() = default;
    List(List const& other) { Assign(other); }
    List& operator=(List const& other) {
        if (this != &other) {
            count_ = 0;
            Assign(other);
        }
        return *this;
    }
    ~List() { std::free(data_); }

    uint32_t Count() const { return count_; }
    uint32_t Capacity() const { return capacity_; }
    bool IsEmpty() const { return count_ == 0; }
    T* Data() { return data_; }
    T const* Data() const { return data_; }
    T& operator[](uint32_t index) { return data_[index]; }
    T const& operator[](uint32_t index) const { return data_[index]; }
    T& Last() { return data_[count_ - 1]; }
    T const& Last() const { return data_[count_ - 1]; }
    T* begin() { return data_; }
    T* end() { return data_ + count_; }
    T const* begin() const { return data_; }
    T const* end() const { return data_ + count_; }

    // Grows only when full, to the next multiple of 8 above the count.
    bool Append(T const& value) {
        const T copy = value;  // value may lie in the array that moves
        if (count_ == capacity_ && !Reserve((count_ + 8) & ~7u)) {
            return false;
        }
        data_[count_++] = copy;
        return true;
    }

    // Moves the later elements down by one.
    void RemoveAt(uint32_t index) {
        if (index >= count_) {
            return;
        }
        --count_;
        std::memmove(static_cast<void*>(data_ + index), data_ + index + 1, (count_ - index) * sizeof(T));
    }

    void RemoveLast() {
        if (count_ > 0) {
            --count_;
        }
    }

    // Index of the first equal element, or kNotFound.
    uint32_t IndexOf(T const& value) const {
        for (uint32_t i = 0; i < count_; ++i) {
            if (Comparator{}(data_[i], value)) {
                return i;
            }
        }
        return kNotFound;
    }

    // Empties the list and frees its array.
    void Clear() {
        std::free(data_);
        data_ = nullptr;
        count_ = capacity_ = 0;
    }

    // Makes the count n, growing the capacity to a multiple of 8 above the old one where needed; new
    // elements are value-initialised.
    bool Resize(uint32_t n) {
        if (n > capacity_ && !Reserve((n + 8) & ~7u)) {
            return false;
        }
        for (uint32_t i = count_; i < n; ++i) {
            data_[i] = T{};
        }
        count_ = n;
        return true;
    }

  private:
    bool Reserve(uint32_t capacity) {
        void* grown = std::realloc(static_cast<void*>(data_), size_t{capacity} * sizeof(T));
        if (grown == nullptr) {
            OutOfMemory::Note();
            return false;
        }
        data_ = static_cast<T*>(grown);
        capacity_ = capacity;
        return true;
    }

    void Assign(List const& other) {
        if (other.count_ > capacity_ && !Reserve((other.count_ + 7) & ~7u)) {
            return;
        }
        if (other.count_ > 0) {
            std::memcpy(static_cast<void*>(data_), other.data_, other.count_ * sizeof(T));
        }
        count_ = other.count_;
    }

    T* data_ = nullptr;
    uint32_t count_ = 0;
    uint32_t capacity_ = 0;
};

}  // namespace zorvan
