// Numbers of the transfer (blend) modes, and the keys of their nestings.
#pragma once

#include <cstdint>

namespace zorvan {

// Transfer mode of a node that has none.
inline constexpr uint32_t kNoTransferMode = 0xFFFFFFFFu;
// Number of transfer modes: 0 to 36.
inline constexpr uint32_t kTransferModeCount = 37;
// Effect key of a device with no transfer mode in force, and the step to the next key.
inline constexpr uint32_t kEffectKeyBasis = 0x811C9DC5u;
inline constexpr uint32_t kEffectKeyPrime = 16777619u;

}  // namespace zorvan
