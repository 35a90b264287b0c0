#include "tools/qonvert/load.h"

#include <new>

#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/parse.h"

namespace qonvert {

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

LoadedTexture LoadTexture(const std::string& path, const std::string& named, const ReadOptions& options,
                          Findings& findings) try {
    const Bytes bytes = ReadFile(path);
    try {
        LoadedTexture loaded;
        loaded.container = &InputContainer(path, named, bytes, options, findings);
        loaded.texture = loaded.container->read(bytes, options, findings);
        loaded.fileBytes = bytes.size();
        return loaded;
    } catch (const ToolError& error) {
        throw ToolError(error.code(), InputName(path) + ": " + error.what());
    }
} catch (const std::bad_alloc&) {
    throw ToolError(ExitCode::kRuntime, InputName(path) + ": out of memory");
}

}  // namespace qonvert
