// Images in memory on their way between files and textures.
#pragma once

#include <cstdint>
#include <vector>

namespace zorvan {

// Rows from top to bottom, each pixel red, green, blue, alpha; alpha is not multiplied in.
struct Image {
    uint32_t width = 0, height = 0;
    std::vector<uint8_t> rgba;
    bool operator==(Image const&) const = default;
};

}  // namespace zorvan
