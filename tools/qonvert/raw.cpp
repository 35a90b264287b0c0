#include "tools/qonvert/raw.h"

#include "texconv/format_table.h"
#include "tools/qonvert/byte_io.h"

namespace qonvert {

bool IsRaw(ByteSpan) {
    return false;
}

bool RawCarries(std::uint32_t format, const WriteOptions&) {
    return QXTextureConverter::FindFormat(format) != nullptr;
}

TextureFile ReadRaw(ByteSource& source, const ReadOptions& options, Findings&) {
    if (!RawCarries(options.rawFormat, {})) {
        throw ToolError(ExitCode::kUsage, "a headerless file needs --raw WxH:FORMAT");
    }
    TextureFile texture;
    texture.format = options.rawFormat;
    texture.width = options.rawWidth;
    texture.height = options.rawHeight;
    texture.encoding = "headerless";
    CheckPictureSize(texture.width, texture.height);

    // As many whole levels as there are; anything else is a wrong size.
    ByteReader reader(source);
    const std::uint64_t base = PictureBytes(texture.format, texture.width, texture.height);
    const std::uint32_t chain = FullChain(texture.width, texture.height);
    for (std::uint32_t level = 0; level < chain && (level == 0 || reader.Ahead(1) != 0); ++level) {
        texture.levels.push_back(reader.Data(
            "level " + std::to_string(level),
            PictureBytes(texture.format, LevelSide(texture.width, level), LevelSide(texture.height, level))));
    }
    if (source.Skip() != 0) {
        Reject(FindingNumber::kLevelSize, "size of the file", std::to_string(source.taken()) + " bytes",
               std::to_string(base) + ", or whole levels after it");
    }
    return texture;
}

Bytes WriteRaw(const TextureFile& texture, const WriteOptions&) {
    Bytes out;
    for (const Bytes& level : texture.levels) {
        Append(out, level);
    }
    return out;
}

}  // namespace qonvert
