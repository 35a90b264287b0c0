// DDS: one 2D texture with its levels. Plain formats by masks, compressed ones by FourCC, both by the
// DX10 header where DXGI has them.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsDds(ByteSpan bytes);
bool DdsCarries(std::uint32_t format, const WriteOptions& options);
// Plain pixels under masks that no format has are converted to FMT_RGB888 or FMT_RGBA8888. Arrays,
// cube maps and volumes are rejected as not supported.
TextureFile ReadDds(ByteSource& source, const ReadOptions& options, Findings& findings);
Bytes WriteDds(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
