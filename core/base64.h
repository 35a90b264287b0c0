// Bytes as text in base64 with padding.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/api.h"

namespace zorvan {

ZORVAN_CORE_API std::string EncodeBase64(std::vector<uint8_t> const& bytes);
// False for text that is not canonical base64; bytes are undefined then.
ZORVAN_CORE_API bool DecodeBase64(std::string_view text, std::vector<uint8_t>& bytes);

}  // namespace zorvan
