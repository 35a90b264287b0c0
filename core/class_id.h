// Numeric identity of a class name.
#pragma once

#include <cstdint>

namespace zorvan {

using ClassId = uint32_t;

// 31-bit djb2 hash over the UTF-16 code units of a zero-terminated name.
constexpr ClassId MakeClassId(char16_t const* name) {
    uint32_t hash = 5381;
    for (; *name != 0; ++name) {
        hash = hash * 33u + *name;
    }
    return hash & 0x7FFFFFFFu;
}

}  // namespace zorvan
