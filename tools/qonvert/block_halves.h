// Two-channel blocks and small packed units in other orders.
#pragma once

#include <algorithm>
#include <cstddef>

#include "tools/qonvert/texture_file.h"

namespace qonvert {

// The codec stores the green half of a two-channel 3Dc block first; BC5 and RGTC2 store red first.
inline void SwapBlockHalves(Bytes& blocks) {
    for (std::size_t at = 0; at + 16 <= blocks.size(); at += 16) {
        std::swap_ranges(blocks.begin() + at, blocks.begin() + at + 8, blocks.begin() + at + 8);
    }
}

// Reverses the bytes of each unit of `size` bytes.
inline void SwapBytes(Bytes& data, std::size_t size) {
    for (std::size_t at = 0; at + size <= data.size(); at += size) {
        std::reverse(data.begin() + at, data.begin() + at + size);
    }
}

// Exchanges the two 4-bit indices of each byte from `start` on.
inline void SwapNibbles(Bytes& data, std::size_t start) {
    for (std::size_t at = start; at < data.size(); ++at) {
        data[at] = static_cast<std::uint8_t>(data[at] << 4 | data[at] >> 4);
    }
}

}  // namespace qonvert
