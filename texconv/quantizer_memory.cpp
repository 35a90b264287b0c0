// The quantizer's rows and arrays, which end the process without memory, and its messages.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

[[noreturn]] void EndWithoutMemory(const char* text) {
    pm_message(text);
    std::exit(-1);
}

}  // namespace

void* pm_allocrow(std::size_t cols, std::size_t size) {
    void* row =
        size == 0 || cols <= SIZE_MAX / size ? std::malloc(std::max<std::size_t>(cols * size, 1)) : nullptr;
    if (row == nullptr) {
        EndWithoutMemory("  out of memory allocating a row");
    }
    return row;
}

void pm_freerow(void* row) {
    std::free(row);
}

// One block of pointers and one of rows, which the first pointer owns; so there is always one.
void** pm_allocarray(std::size_t cols, std::size_t rows, std::size_t size) {
    rows = std::max<std::size_t>(rows, 1);
    const std::size_t rowBytes = size == 0 || cols <= SIZE_MAX / size ? cols * size : SIZE_MAX;
    const bool fits = rowBytes <= SIZE_MAX / rows && rows <= SIZE_MAX / sizeof(void*);
    auto** array = fits ? static_cast<void**>(std::malloc(rows * sizeof(void*))) : nullptr;
    auto* memory = array != nullptr
                       ? static_cast<char*>(std::malloc(std::max<std::size_t>(rows * rowBytes, 1)))
                       : nullptr;
    if (memory == nullptr) {
        std::free(array);
        EndWithoutMemory("  out of memory allocating an array");
    }
    for (std::size_t y = 0; y < rows; ++y) {
        array[y] = memory + y * rowBytes;
    }
    return array;
}

void pm_freearray(void** array) {
    std::free(array[0]);
    std::free(array);
}

void pm_message(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

}  // namespace QXTextureConverter
