// PKM: one ETC1 picture behind a 16-byte big-endian header.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsPkm(ByteSpan bytes);
bool PkmCarries(std::uint32_t format, const WriteOptions& options);
TextureFile ReadPkm(ByteSpan bytes, const ReadOptions& options, Findings& findings);
Bytes WritePkm(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
