// A texture file from a path, a device or standard input.
#pragma once

#include <string>

#include "tools/qonvert/container.h"

namespace qonvert {

struct LoadedTexture {
    const Container* container = nullptr;
    TextureFile texture;
    std::uint64_t fileBytes = 0;
};

// "WxH:FORMAT" of a headerless picture into `options`. Throws ToolError (usage).
void ParseRaw(const std::string& text, ReadOptions& options);

// The container of an input: `named` where given, raw where the extension says so, or where `options`
// describe a headerless picture and there is no known extension; else by the first bytes, else by the
// extension. Notes it where these two say different things. Rejects what none reads.
const Container& InputContainer(const std::string& path, const std::string& named, ByteSpan bytes,
                                const ReadOptions& options, Findings& findings);

// Reads and checks a file, as far as its texture goes: of what is no texture only the first bytes. Throws
// ToolError; `findings` then still holds what was noted before, and `loaded` the container, if known.
void LoadTexture(const std::string& path, const std::string& named, const ReadOptions& options,
                 Findings& findings, LoadedTexture& loaded);

}  // namespace qonvert
