// Problems as data: what is wrong with a file, what was found and what was expected.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace qonvert {

// The program's exit codes.
enum class ExitCode : int {
    kOk = 0,
    kUsage = 1,
    kIo = 2,
    kBadFile = 3,
    kRuntime = 4,
    kUnsupported = 5,
    kDiffers = 7,
};

enum class Severity : std::uint8_t { kWarning, kError };

// Numbers of the messages about files, listed in docs/qonvert.md. 1xx damaged, 2xx valid but not
// supported, 3xx warnings.
enum class FindingNumber : int {
    kHeaderTruncated = 101,
    kWrongMagic = 102,
    kWrongHeaderField = 103,
    kSize = 104,
    kDataMissing = 105,
    kLevelSize = 106,
    kLevelCount = 107,
    kKeyValueData = 108,
    kDamagedStream = 109,
    kUnknownContainer = 110,
    kUnsupportedFormat = 201,
    kUnsupportedKind = 202,
    kTrailingBytes = 301,
    kOddKeyValue = 302,
    kOddHeaderField = 303,
    kOddStream = 304,
    kGeneratedLevels = 305,
    kPaletteIndex = 306,
    kOtherContainer = 307,
};

struct Finding {
    FindingNumber number;
    std::string subject;
    std::string got;  // long values are cut
    std::string expected;

    Severity severity() const {
        return static_cast<int>(number) >= 300 ? Severity::kWarning : Severity::kError;
    }
    ExitCode exitCode() const {
        return static_cast<int>(number) >= 200 ? ExitCode::kUnsupported : ExitCode::kBadFile;
    }
    // "error 106: size of level 0: got 12, expected 64".
    std::string Describe() const;
};

using Findings = std::vector<Finding>;

// Ends what the tool is doing with one line and an exit code.
class ToolError : public std::runtime_error {
  public:
    ToolError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

  private:
    ExitCode code_;
};

// A file that cannot be read, with its finding.
class FileError : public ToolError {
  public:
    // With the file's name in front, where given.
    explicit FileError(Finding finding, const std::string& file = "")
        : ToolError(finding.exitCode(), (file.empty() ? "" : file + ": ") + finding.Describe()),
          finding_(std::move(finding)) {}
    const Finding& finding() const { return finding_; }

  private:
    Finding finding_;
};

// Adds a warning, unless there are very many already.
void Note(Findings& findings, FindingNumber number, std::string subject, std::string got,
          std::string expected);

// Throws a FileError.
[[noreturn]] void Reject(FindingNumber number, std::string subject, std::string got, std::string expected);

// "0x8d64", at least four digits.
std::string Hex(std::uint32_t word);

}  // namespace qonvert
