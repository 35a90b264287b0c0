// Names of the pixel formats, as people and other programs write them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qonvert {

// "RGB565": the format's name without its prefix. Supported codes only.
std::string_view FormatName(std::uint32_t format);

// Other names of a format: GL tokens, DXGI names, FourCCs.
std::vector<std::string> FormatAliases(std::uint32_t format);

// By name (with or without FMT_), alias, or the number of a GL token ("0x8D64"), without regard to
// case. Throws ToolError with the three nearest names when there is none.
std::uint32_t ParseFormat(std::string_view name);

}  // namespace qonvert
