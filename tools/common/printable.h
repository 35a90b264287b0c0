// Text for terminals.
#pragma once

#include <string>
#include <string_view>

namespace tools {

// What a terminal may be given, on one line. File names may hold any bytes: control characters (U+0000 to
// U+001F and U+007F to U+009F), the ends of lines and the changes of direction that could show a text in
// another order (U+2028 to U+202E, U+2066 to U+2069), and bytes that are no UTF-8 become "\x1b", byte by
// byte.
std::string Printable(std::string_view text);

// The same for JSON, whose lines stay and whose characters become "\u009b": the value is not changed. Must be
// UTF-8.
std::string PrintableJson(std::string_view json);

}  // namespace tools
