// Reference counting of objects that scene, device and registry share.
#pragma once

#include <cstdint>
#include <utility>

#include "core/api.h"

namespace zorvan {

// Atomic arithmetic on plain counters; both return the new value.
class Atomic {
  public:
    static int32_t Increment(int32_t& value) { return __atomic_add_fetch(&value, 1, __ATOMIC_RELAXED); }
    static int32_t Decrement(int32_t& value) { return __atomic_sub_fetch(&value, 1, __ATOMIC_ACQ_REL); }
};

// Base of counted objects. A new object has count 0: nobody holds it yet. A copy starts at 0 too.
class ZORVAN_CORE_API Referenced {
  public:
    Referenced() = default;
    Referenced(Referenced const&) : references(0) {}
    Referenced& operator=(Referenced const&) = delete;
    virtual ~Referenced();

    // Changed only through Retain and Release.
    int32_t references = 0;
};

// Takes a reference; null is ignored.
inline void Retain(Referenced* object) {
    if (object != nullptr) {
        Atomic::Increment(object->references);
    }
}

// Gives a reference back and deletes the object with the last one; null is ignored.
inline void Release(Referenced* object) {
    if (object != nullptr && Atomic::Decrement(object->references) == 0) {
        delete object;
    }
}

// Owning pointer to a counted object: holds one reference while it points to it.
template <typename T>
class RefT {
  public:
    RefT() = default;
    RefT(T* object) : object_(object) { Retain(object_); }  // NOLINT: implicit on purpose
    RefT(RefT const& other) : RefT(other.object_) {}
    RefT(RefT&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~RefT() { Release(object_); }
    RefT& operator=(RefT other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* Get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    friend bool operator==(RefT const& a, RefT const& b) { return a.object_ == b.object_; }

  private:
    T* object_ = nullptr;
};

}  // namespace zorvan
