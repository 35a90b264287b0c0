// Headerless pixels, levels back to back.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsRaw(ByteSpan bytes);  // never: there is nothing to recognise
bool RawCarries(std::uint32_t format, const WriteOptions& options);
// Needs the size and format in `options`.
TextureFile ReadRaw(ByteSource& source, const ReadOptions& options, Findings& findings);
Bytes WriteRaw(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
