// Counts the allocations of the whole process, its libraries included (GNU C library).
#pragma once

#include <cstdint>

namespace zorvan::bench {

// Calls of malloc, calloc and realloc so far.
uint64_t AllocationCount();

}  // namespace zorvan::bench
