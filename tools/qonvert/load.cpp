#include "tools/qonvert/load.h"

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
        const Container* container = FindContainer(named);
        if (container == nullptr) {
            throw ToolError(ExitCode::kUsage, "no container is called \"" + named + "\"");
        }
        return *container;
    }
    const Container& raw = *FindContainer("raw");
    const Container* byPath = ContainerOfPath(path);
    if (byPath == &raw || (byPath == nullptr && options.rawFormat != 0)) {
        return raw;
    }
    const Container* byBytes = ContainerOfBytes(bytes);
    if (byPath != nullptr && byBytes != nullptr && byPath != byBytes) {
        findings.push_back({FindingNumber::kOtherContainer, "first bytes", std::string(byBytes->name),
                            std::string(byPath->name) + " by the file's name"});
    }
    if (byBytes != nullptr || byPath != nullptr) {
        return byBytes != nullptr ? *byBytes : *byPath;
    }
    std::string names;
    for (const Container& container : Containers()) {
        names += (names.empty() ? "" : ", ") + std::string(container.name);
    }
    Reject(FindingNumber::kUnknownContainer, "container", "unknown first bytes", "one of " + names);
}

LoadedTexture LoadTexture(const std::string& path, const std::string& named, const ReadOptions& options,
                          Findings& findings) {
    const Bytes bytes = ReadFile(path);
    const std::string shown = IsStandardStream(path) ? "standard input" : path;
    try {
        LoadedTexture loaded;
        loaded.container = &InputContainer(path, named, bytes, options, findings);
        loaded.texture = loaded.container->read(bytes, options, findings);
        loaded.fileBytes = bytes.size();
        return loaded;
    } catch (const ToolError& error) {
        throw ToolError(error.code(), shown + ": " + error.what());
    }
}

}  // namespace qonvert
