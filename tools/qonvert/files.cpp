#include "tools/qonvert/files.h"

#include <unistd.h>

#include "texfile/input_file.h"
#include "texfile/output_file.h"
#include "tools/qonvert/finding.h"

namespace qonvert {

namespace {

// More than any file that the tool writes: less than 4 GiB of pixels, and their mip levels, a third of that.
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{6} << 30;

void Check(const std::string& path, const texfile::IoError& error) {
    if (error.kind == texfile::IoError::Kind::kExists) {
        throw ToolError(ExitCode::kIo, path + ": exists; --overwrite replaces it");
    }
    if (error) {
        throw ToolError(ExitCode::kIo, path + ": " + error.Text());
    }
}

texfile::Existing Policy(bool overwrite) {
    return overwrite ? texfile::Existing::kReplace : texfile::Existing::kKeep;
}

}  // namespace

Bytes ReadFile(const std::string& path) {
    Bytes bytes;
    texfile::InputFile file;
    if (IsStandardStream(path)) {
        file.Attach(STDIN_FILENO);
    } else {
        Check(path, file.Open(path));
    }
    Check(InputName(path), file.ReadAll(kMaxFileBytes, bytes));
    return bytes;
}

void CheckWritable(const std::string& path, bool overwrite) {
    if (!IsStandardStream(path)) {
        texfile::OutputTarget target;
        Check(path, FindTarget(path, Policy(overwrite), target));
    }
}

void WriteFile(const std::string& path, ByteSpan bytes, bool overwrite) {
    if (!IsStandardStream(path)) {
        Check(path, texfile::WriteWholeFile(path, bytes, Policy(overwrite)));
        return;
    }
    if (isatty(STDOUT_FILENO) != 0) {
        throw ToolError(ExitCode::kUsage, OutputName(path) + " is a terminal, expected a file or a pipe");
    }
    Check(OutputName(path), texfile::WriteWholeFile("/dev/fd/1", bytes, Policy(overwrite)));
}

}  // namespace qonvert
