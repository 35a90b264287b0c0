// How much memory the loading of a scene may take.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/api.h"
#include "core/referenced.h"

namespace zorvan {

// Counts bytes and is asked before they are taken, so that what does not fit is refused by name instead of
// bringing the machine down. Not for several threads at once.
class ZORVAN_CORE_API MemoryBudget final : public Referenced {
  public:
    // Bytes in all.
    explicit MemoryBudget(uint64_t limit = DefaultLimit()) : limit_(limit) {}
    ~MemoryBudget() override;

    // A quarter of the memory that this process can still get, see UsableMemory.
    static uint64_t DefaultLimit();

    // False when the bytes do not fit; then nothing is taken.
    bool Take(uint64_t bytes);
    void GiveBack(uint64_t bytes) { taken_ -= bytes; }
    uint64_t Taken() const { return taken_; }
    uint64_t Limit() const { return limit_; }

    // Whether something did not fit, or the system refused what would have fitted.
    bool IsExhausted() const { return exhausted_; }
    void MarkExhausted() { exhausted_ = true; }
    // What to say about the last bytes that did not fit: "got N bytes for WHAT ...".
    std::string Refusal(std::string_view what) const;

  private:
    uint64_t limit_;
    uint64_t taken_ = 0;
    uint64_t refused_ = 0;
    bool exhausted_ = false;
};

// Bytes of a budget that are given back with the claim's end. The budget must outlive it.
class MemoryClaim {
  public:
    explicit MemoryClaim(MemoryBudget& budget) : budget_(budget) {}
    MemoryClaim(MemoryClaim const&) = delete;
    MemoryClaim& operator=(MemoryClaim const&) = delete;
    ~MemoryClaim() { budget_.GiveBack(bytes_); }

    // Adds to the claim; false when that does not fit.
    bool Take(uint64_t bytes) {
        const bool fits = budget_.Take(bytes);
        bytes_ += fits ? bytes : 0;
        return fits;
    }
    void GiveBack(uint64_t bytes) {
        budget_.GiveBack(bytes);
        bytes_ -= bytes;
    }
    uint64_t Bytes() const { return bytes_; }
    MemoryBudget& Budget() const { return budget_; }

  private:
    MemoryBudget& budget_;
    uint64_t bytes_ = 0;
};

// Bytes that the machine has to spare, or that the control groups of this process leave it in all where that
// is less. root stands before the paths of the system's files. 4 GiB when the system does not say.
ZORVAN_CORE_API uint64_t UsableMemory(std::string const& root = "");

}  // namespace zorvan
