// Text for terminals.
#pragma once

#include <string>
#include <string_view>

namespace tools {

// What a terminal may be given, on one line: control bytes, which file names may hold, become "\x1b".
std::string Printable(std::string_view text);

}  // namespace tools
