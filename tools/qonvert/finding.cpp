#include "tools/qonvert/finding.h"

#include <cstdio>

namespace qonvert {

std::string Finding::Describe() const {
    std::string line = severity() == Severity::kError ? "error " : "warning ";
    line += std::to_string(static_cast<int>(number)) + ": " + subject + ": got " + got;
    if (!expected.empty()) {
        line += ", expected " + expected;
    }
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            c = '?';
        }
    }
    return line;
}

void Reject(FindingNumber number, std::string subject, std::string got, std::string expected) {
    throw FileError({number, std::move(subject), std::move(got), std::move(expected)});
}

std::string Hex(std::uint32_t word) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%04x", static_cast<unsigned>(word));
    return text;
}

}  // namespace qonvert
