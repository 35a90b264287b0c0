#include "tools/qonvert/pkm.h"

#include <algorithm>
#include <string_view>

#include "texconv/qonvert.h"
#include "tools/qonvert/byte_io.h"

namespace qonvert {

namespace {

constexpr std::string_view kMagic = "PKM ";
constexpr std::uint32_t kTypeEtc1 = 0;

constexpr std::uint32_t Padded(std::uint32_t side) {
    return (side + 3) / 4 * 4;
}

void CheckPaddedSide(const char* field, std::uint32_t padded, std::uint32_t side) {
    if (padded != Padded(side)) {
        Reject(FindingNumber::kWrongHeaderField, field, std::to_string(padded), std::to_string(Padded(side)));
    }
}

}  // namespace

bool IsPkm(ByteSpan bytes) {
    return bytes.size() >= kMagic.size() && std::equal(kMagic.begin(), kMagic.end(), bytes.begin());
}

bool PkmCarries(std::uint32_t format, const WriteOptions&) {
    return format == FMT_ETC1_RGB8;
}

TextureFile ReadPkm(ByteSource& source, const ReadOptions&, Findings& findings) {
    ByteReader reader(source, true);
    const Bytes magic = reader.Header("identifier", kMagic.size());
    if (!IsPkm(magic)) {
        Reject(FindingNumber::kWrongMagic, "identifier", "other bytes", "\"PKM \"");
    }
    const Bytes version = reader.Header("version", 2);
    if (version[0] != '1' || version[1] != '0') {
        Reject(FindingNumber::kUnsupportedFormat, "version", std::string(version.begin(), version.end()),
               "10");
    }
    const std::uint32_t type = reader.Half("type");
    if (type != kTypeEtc1) {
        Reject(FindingNumber::kUnsupportedFormat, "type", std::to_string(type), "0 (ETC1)");
    }
    const std::uint32_t paddedWidth = reader.Half("padded width");
    const std::uint32_t paddedHeight = reader.Half("padded height");
    TextureFile texture;
    texture.format = FMT_ETC1_RGB8;
    texture.encoding = "PKM 10, type 0";
    texture.origin = Origin::kTopLeft;
    texture.width = reader.Half("width");
    texture.height = reader.Half("height");
    CheckPictureSize(texture.width, texture.height);
    CheckPaddedSide("padded width", paddedWidth, texture.width);
    CheckPaddedSide("padded height", paddedHeight, texture.height);

    texture.levels.push_back(
        reader.Data("blocks", PictureBytes(texture.format, texture.width, texture.height)));
    NoteTrailingBytes(source, findings);
    return texture;
}

Bytes WritePkm(const TextureFile& texture, const WriteOptions&) {
    Bytes out(kMagic.begin(), kMagic.end());
    out.push_back('1');
    out.push_back('0');
    for (const std::uint32_t half :
         {kTypeEtc1, Padded(texture.width), Padded(texture.height), texture.width, texture.height}) {
        AppendBigEndianHalf(out, half);
    }
    Append(out, texture.levels.front());
    return out;
}

}  // namespace qonvert
