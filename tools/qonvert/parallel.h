// Independent pieces of work side by side.
#pragma once

#include <cstddef>
#include <functional>

namespace qonvert {

// Calls work(0) to work(count - 1) on up to `threads` threads (fewer where the machine gives no more), in
// no fixed order, and returns when all are done. When calls throw, the exception of the lowest number is
// thrown on.
void ParallelFor(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& work);

}  // namespace qonvert
