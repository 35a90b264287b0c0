// A texture in memory, as the containers read and write it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qonvert {

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

// Where the first row of pixels lies.
enum class Origin : std::uint8_t { kUnstated, kTopLeft, kBottomLeft };

struct TextureFile {
    std::uint32_t format = 0;  // TQonvertFormat
    std::uint32_t width = 0;   // pixels of level 0
    std::uint32_t height = 0;
    Origin origin = Origin::kUnstated;
    std::string encoding;  // how the container names the format, for people
    // Each level in the converter's own layout: packed rows; a palette level is its colour table
    // and then its indices; blocks in raster order.
    std::vector<Bytes> levels;
};

// Largest side and pixel count of a picture that the tool handles.
inline constexpr std::uint32_t kMaxSide = 65536;
inline constexpr std::uint64_t kMaxPixels = std::uint64_t{1} << 28;

// Bytes of a picture in the converter's layout. Sides up to kMaxSide.
std::uint64_t PictureBytes(std::uint32_t format, std::uint32_t width, std::uint32_t height);

// Bytes of a palette format's colour table, 0 for any other format.
std::uint32_t TableBytes(std::uint32_t format);

// Luminance of more than 8 bits, which the converter reads and writes as 0.
bool IsWideLuminance(std::uint32_t format);

// Side of level `level`: halved each time, at least 1.
std::uint32_t LevelSide(std::uint32_t side, std::uint32_t level);

// Levels of the whole chain down to 1 x 1.
std::uint32_t FullChain(std::uint32_t width, std::uint32_t height);

// Rejects a picture without pixels, or one that is larger than the tool handles.
void CheckPictureSize(std::uint64_t width, std::uint64_t height);

// Rejects 0 levels, or more levels than the chain of this size has.
void CheckLevelCount(std::uint32_t levels, std::uint32_t width, std::uint32_t height);

}  // namespace qonvert
