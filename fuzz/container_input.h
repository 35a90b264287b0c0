// Files for the container readers, made from a fuzzer's input.
#pragma once

#include <string_view>

#include "tools/qonvert/container.h"

namespace qonvert::fuzz {

// Mostly the input as it is. The first byte may choose more: for png, chunks with right check sums and
// packed pixels, which a fuzzer would not find; for raw, the description in `options`.
Bytes FileFromInput(std::string_view container, ByteSpan input, ReadOptions& options);

}  // namespace qonvert::fuzz
