#include "core/out_of_memory.h"

#include <atomic>

namespace zorvan {
namespace {

std::atomic<bool> noted{false};

}  // namespace

void OutOfMemory::Note() {
    noted = true;
}

bool OutOfMemory::Take() {
    return noted.exchange(false);
}

}  // namespace zorvan
