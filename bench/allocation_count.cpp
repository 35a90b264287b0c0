#include "bench/allocation_count.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<uint64_t> count{0};

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t items, size_t size);
void* __libc_realloc(void* memory, size_t size);

__attribute__((visibility("default"))) void* malloc(size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(size_t items, size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(items, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(memory, size);
}
}

namespace zorvan::bench {

uint64_t AllocationCount() {
    return count.load(std::memory_order_relaxed);
}

}  // namespace zorvan::bench
