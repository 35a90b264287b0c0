// PKM: one ETC1 picture behind a 16-byte big-endian header.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

// Sides are padded to whole blocks, and must then be 16-bit numbers.
inline constexpr std::uint32_t kMaxPkmSide = 65532;

bool IsPkm(ByteSpan bytes);
bool PkmCarries(std::uint32_t format, const WriteOptions& options);
TextureFile ReadPkm(ByteSource& source, const ReadOptions& options, Findings& findings);
Bytes WritePkm(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
