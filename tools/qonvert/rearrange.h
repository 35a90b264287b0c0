// Bytes between the converter's pixel layouts and those of containers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tools/qonvert/texture_file.h"

namespace qonvert {

// What sets a container's layout apart from the converter's. Each change undoes itself.
enum class Rearrangement : std::uint8_t {
    kNone,
    kSwapPairs,    // luminance before alpha
    kSwapTriples,  // blue before green and red
    kSwapHalves,   // of two-channel blocks: red first, as in BC5 and RGTC2; the codec stores green first
    kSwapNibbles,  // the first pixel of a byte in the high half
};

// `start` is where the pixels begin, behind a colour table.
void Rearrange(Bytes& level, Rearrangement change, std::size_t start = 0);

// Reverses the bytes of each unit of `size` bytes.
void SwapBytes(Bytes& data, std::size_t size);

}  // namespace qonvert
