// KTX1: one 2D texture with its levels and its origin. Written little-endian, read in both orders.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsKtx1(ByteSpan bytes);
bool Ktx1Carries(std::uint32_t format, const WriteOptions& options);
// Arrays, cube maps and volumes are rejected as not supported.
TextureFile ReadKtx1(ByteSource& source, const ReadOptions& options, Findings& findings);
// Paletted levels share one colour table in this container, so all tables must be equal.
Bytes WriteKtx1(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
