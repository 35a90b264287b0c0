// A container reader on arbitrary bytes. FUZZED_CONTAINER names it. A texture that is read must be
// whole, and must come back the same when it is written and read again.
#include <algorithm>

#include "fuzz/container_input.h"
#include "fuzz/fuzz_input.h"
#include "texconv/format_table.h"
#include "tools/qonvert/container.h"

namespace {

using namespace qonvert;
using zorvan::fuzz::Require;

void RequireWhole(const TextureFile& texture) {
    Require(texture.width >= 1 && texture.width <= kMaxSide && texture.height >= 1 &&
            texture.height <= kMaxSide);
    Require(!texture.levels.empty() && texture.levels.size() <= FullChain(texture.width, texture.height));
    for (std::uint32_t i = 0; i < texture.levels.size(); ++i) {
        Require(texture.levels[i].size() ==
                PictureBytes(texture.format, LevelSide(texture.width, i), LevelSide(texture.height, i)));
    }
}

void RequireSameAgain(const Container& container, const TextureFile& texture, const ReadOptions& options) {
    const WriteOptions write{.pngDeepFloats = true};
    if (container.write == nullptr || !container.carries(texture.format, write)) {
        return;
    }
    Findings findings;
    const TextureFile again = container.read(container.write(texture, write), options, findings);
    Require(again.format == texture.format && again.levels == texture.levels && findings.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Container& container = *FindContainer(FUZZED_CONTAINER);
    ReadOptions options;
    const Bytes file = qonvert::fuzz::FileFromInput(FUZZED_CONTAINER, {data, size}, options);
    Findings findings;
    try {
        const TextureFile texture = container.read(file, options, findings);
        RequireWhole(texture);
        // Indices beyond PNG's colour table are noted, and would be noted again.
        const bool clean = std::none_of(findings.begin(), findings.end(), [](const Finding& finding) {
            return finding.number == FindingNumber::kPaletteIndex ||
                   finding.number == FindingNumber::kOddStream;
        });
        if (clean && texture.levels.front().size() < 100000) {
            RequireSameAgain(container, texture, options);
        }
    } catch (const ToolError& error) {
        Require(error.code() == ExitCode::kBadFile || error.code() == ExitCode::kUnsupported);
    }
    return 0;
}
