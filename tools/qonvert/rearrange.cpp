#include "tools/qonvert/rearrange.h"

#include <algorithm>

namespace qonvert {

void Rearrange(Bytes& level, Rearrangement change, std::size_t start) {
    switch (change) {
        case Rearrangement::kNone:
            break;
        case Rearrangement::kSwapPairs:
            SwapBytes(level, 2);
            break;
        case Rearrangement::kSwapTriples:
            SwapBytes(level, 3);
            break;
        case Rearrangement::kSwapHalves:
            for (std::size_t at = 0; at + 16 <= level.size(); at += 16) {
                std::swap_ranges(level.begin() + at, level.begin() + at + 8, level.begin() + at + 8);
            }
            break;
        case Rearrangement::kSwapNibbles:
            for (std::size_t at = start; at < level.size(); ++at) {
                level[at] = static_cast<std::uint8_t>(level[at] << 4 | level[at] >> 4);
            }
            break;
    }
}

void SwapBytes(Bytes& data, std::size_t size) {
    for (std::size_t at = 0; at + size <= data.size(); at += size) {
        std::reverse(data.begin() + at, data.begin() + at + size);
    }
}

}  // namespace qonvert
