#include "tools/qonvert/load.h"

#include <new>

#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/parse.h"

namespace qonvert {

namespace {

// Enough to know every container, and most headers.
constexpr std::size_t kFirstBytes = 4096;

}  // namespace

void ParseRaw(const std::string& text, ReadOptions& options) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos ||
        !ParseSize(text.substr(0, colon), options.rawWidth, options.rawHeight)) {
        throw ToolError(ExitCode::kUsage,
                        "--raw takes WxH:FORMAT, for example 64x64:RGB565; got \"" + text + "\"");
    }
    options.rawFormat = ParseFormat(std::string_view(text).substr(colon + 1));
}

const Container& InputContainer(const std::string& path, const std::string& named, ByteSpan bytes,
                                const ReadOptions& options, Findings& findings) {
    if (!named.empty()) {
        return NamedContainer(named);
    }
    const Container& raw = *FindContainer("raw");
    const Container* byPath = ContainerOfPath(path);
    if (byPath == &raw || (byPath == nullptr && options.rawFormat != 0)) {
        return raw;
    }
    const Container* byBytes = ContainerOfBytes(bytes);
    if (byPath != nullptr && byBytes != nullptr && byPath != byBytes) {
        Note(findings, FindingNumber::kOtherContainer, "first bytes", std::string(byBytes->name),
             std::string(byPath->name) + " by the file's name");
    }
    if (byBytes != nullptr || byPath != nullptr) {
        return byBytes != nullptr ? *byBytes : *byPath;
    }
    Reject(FindingNumber::kUnknownContainer, "container", "unknown first bytes",
           "one of " + ContainerNames());
}

void LoadTexture(const std::string& path, const std::string& named, const ReadOptions& options,
                 Findings& findings, LoadedTexture& loaded) try {
    texfile::InputFile file;
    ByteSpan first;
    texfile::IoError error = OpenInput(path, file);
    error = error ? error : file.First(kFirstBytes, first);
    if (error) {
        throw ToolError(ExitCode::kIo, error.Text());
    }
    loaded.container = &InputContainer(path, named, first, options, findings);
    FileSource source(file);
    loaded.texture = loaded.container->readFrom(source, options, findings);
    source.Skip();
    loaded.fileBytes = source.taken();
} catch (const FileError& error) {
    throw FileError(error.finding(), InputName(path));
} catch (const ToolError& error) {
    throw ToolError(error.code(), InputName(path) + ": " + error.what());
} catch (const std::bad_alloc&) {
    throw ToolError(ExitCode::kRuntime, InputName(path) + ": out of memory");
}

}  // namespace qonvert
