#include "tools/qonvert/files.h"

#include <unistd.h>

#include "texfile/output_file.h"
#include "tools/qonvert/finding.h"

namespace qonvert {

namespace {

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

bool IsStandardOutput(const std::string& path) {
    return IsStandardStream(path) || texfile::NamedDescriptor(path) == STDOUT_FILENO;
}

texfile::IoError OpenInput(const std::string& path, texfile::InputFile& file) {
    if (IsStandardStream(path)) {
        file.Attach(STDIN_FILENO);
        return {};
    }
    return file.Open(path);
}

Bytes ReadSmallFile(const std::string& path, std::uint64_t largest) {
    Bytes bytes;
    texfile::InputFile file;
    Check(InputName(path), OpenInput(path, file));
    Check(InputName(path), file.ReadAll(largest, bytes));
    return bytes;
}

void CheckWritable(const std::string& path, bool overwrite) {
    if (!IsStandardStream(path)) {
        texfile::OutputTarget target;
        Check(path, FindTarget(path, Policy(overwrite), target));
    }
}

void WriteFile(const std::string& path, ByteSpan bytes, bool overwrite) {
    const std::string name = OutputName(path);
    if (IsStandardOutput(path) && isatty(STDOUT_FILENO) != 0) {
        throw ToolError(ExitCode::kUsage, name + " is a terminal, expected a file or a pipe");
    }
    const std::string target = IsStandardStream(path) ? "/dev/fd/1" : path;
    Check(name, texfile::WriteWholeFile(target, bytes, Policy(overwrite)));
}

}  // namespace qonvert
