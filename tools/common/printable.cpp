#include "tools/common/printable.h"

#include <cstdio>

namespace tools {

std::string Printable(std::string_view text) {
    std::string printable;
    for (const char c : text) {
        char escape[5] = {c};
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7F) {
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(c));
        }
        printable += escape;
    }
    return printable;
}

}  // namespace tools
