#include "tools/qonvert/finding.h"

#include <cstdio>

namespace qonvert {

namespace {

constexpr std::size_t kMostWarnings = 20;
constexpr std::size_t kMostValueBytes = 80;

std::string Cut(std::string value) {
    if (value.size() > kMostValueBytes) {
        value.replace(kMostValueBytes, std::string::npos, "...");
    }
    return value;
}

}  // namespace

std::string Finding::Describe() const {
    std::string line = severity() == Severity::kError ? "error " : "warning ";
    line += std::to_string(static_cast<int>(number)) + ": " + subject + ": got " + got;
    if (!expected.empty()) {
        line += ", expected " + expected;
    }
    return line;
}

void Note(Findings& findings, FindingNumber number, std::string subject, std::string got,
          std::string expected) {
    if (findings.size() < kMostWarnings) {
        findings.push_back({number, std::move(subject), Cut(std::move(got)), std::move(expected)});
    }
}

void Reject(FindingNumber number, std::string subject, std::string got, std::string expected) {
    throw FileError({number, std::move(subject), Cut(std::move(got)), std::move(expected)});
}

std::string Hex(std::uint32_t word) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%04x", static_cast<unsigned>(word));
    return text;
}

}  // namespace qonvert
