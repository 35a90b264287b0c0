#include "tools/qonvert/texture_file.h"

#include <algorithm>
#include <bit>

#include "texconv/format_table.h"
#include "tools/qonvert/finding.h"

namespace qonvert {

using QXTextureConverter::FindFormat;
using QXTextureConverter::FormatInfo;

std::uint32_t TableBytes(std::uint32_t format) {
    const FormatInfo* info = FindFormat(format);
    return info != nullptr && info->IsPalette() ? (info->paletteBits << info->bitsPerPixel) / 8 : 0;
}

bool IsWideLuminance(std::uint32_t format) {
    return format >= FMT_L16 && format <= FMT_L32;
}

std::uint64_t PictureBytes(std::uint32_t format, std::uint32_t width, std::uint32_t height) {
    const FormatInfo* info = FindFormat(format);
    if (info == nullptr) {
        return 0;
    }
    if (info->IsCompressed()) {
        const std::uint64_t blocks = std::uint64_t{(width + 3) / 4} * ((height + 3) / 4);
        return blocks * (std::uint64_t{2} * info->bitsPerPixel);
    }
    if (info->IsPalette()) {
        return TableBytes(format) + (std::uint64_t{width} * height * info->bitsPerPixel + 7) / 8;
    }
    return (std::uint64_t{width} * info->bitsPerPixel + 7) / 8 * height;
}

std::uint32_t LevelSide(std::uint32_t side, std::uint32_t level) {
    return level < 32 ? std::max(side >> level, 1u) : 1u;
}

std::uint32_t FullChain(std::uint32_t width, std::uint32_t height) {
    return static_cast<std::uint32_t>(std::bit_width(std::max({width, height, 1u})));
}

void CheckPictureSize(std::uint64_t width, std::uint64_t height) {
    const std::string got = std::to_string(width) + " x " + std::to_string(height);
    if (width == 0 || height == 0) {
        Reject(FindingNumber::kSize, "size of the picture", got, "at least 1 x 1");
    }
    if (width > kMaxSide || height > kMaxSide || width * height > kMaxPixels) {
        Reject(FindingNumber::kSize, "size of the picture", got,
               "sides up to " + std::to_string(kMaxSide) + " and up to " + std::to_string(kMaxPixels) +
                   " pixels");
    }
}

void CheckLevelCount(std::uint32_t levels, std::uint32_t width, std::uint32_t height) {
    const std::uint32_t full = FullChain(width, height);
    if (levels == 0 || levels > full) {
        Reject(FindingNumber::kLevelCount, "number of levels", std::to_string(levels),
               "1 to " + std::to_string(full));
    }
}

}  // namespace qonvert
