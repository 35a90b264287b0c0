// From one texture to another: pixels are moved, scaled, turned into normals and encoded level by level.
#pragma once

#include "tools/qonvert/pixels.h"

namespace qonvert {

struct Recipe {
    std::uint32_t format = 0;  // of the result
    std::uint32_t width = 0;   // of the result's level 0
    std::uint32_t height = 0;
    Steps steps = {};
    // Levels of the result, each built from the one above; 0 converts the levels that there are, or
    // only level 0 where scaling or a normal map would make the others meaningless.
    std::uint32_t levels = 0;
    unsigned threads = 1;
};

struct Transformed {
    // Format, size and levels; the rest is the source's.
    TextureFile texture;
    // Level 0 before it was encoded, FMT_RGBA8888 or FMT_RGBA32F, for a report on what encoding lost.
    // Empty when level 0 was copied as it is.
    std::uint32_t pixelFormat = 0;
    Bytes pixels;
};

// Throws ToolError. A level that has the wanted format already, and whose pixels nothing changes, is
// copied as it is. The result does not depend on the number of threads.
Transformed Transform(const TextureFile& source, const Recipe& recipe);

}  // namespace qonvert
