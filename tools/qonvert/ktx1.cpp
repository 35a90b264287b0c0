#include "tools/qonvert/ktx1.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "texconv/format_table.h"
#include "tools/qonvert/byte_io.h"
#include "tools/qonvert/ktx1_formats.h"

namespace qonvert {

namespace {

constexpr std::array<std::uint8_t, 12> kIdentifier = {0xAB, 'K',  'T',  'X',  ' ',  '1',
                                                      '1',  0xBB, '\r', '\n', 0x1A, '\n'};
constexpr std::uint32_t kEndianness = 0x04030201;
constexpr std::uint32_t kEndiannessSwapped = 0x01020304;
constexpr std::string_view kOrientationKey = "KTXorientation";

struct Header {
    std::uint32_t type, typeSize, layout, internalFormat, base;
    std::uint32_t width, height, depth;
    std::uint32_t arrayElements, faces, levels, keyValueBytes;
    bool bigEndian;
};

std::uint64_t PadTo4(std::uint64_t bytes) {
    return (bytes + 3) / 4 * 4;
}

Header ReadHeader(ByteReader& reader) {
    const Bytes identifier = reader.Header("identifier", kIdentifier.size());
    if (!IsKtx1(identifier)) {
        Reject(FindingNumber::kWrongMagic, "identifier", "other bytes", "the 12 bytes of KTX 11");
    }
    const std::uint32_t endianness = reader.Word("endianness");
    if (endianness != kEndianness && endianness != kEndiannessSwapped) {
        Reject(FindingNumber::kWrongHeaderField, "endianness", Hex(endianness),
               Hex(kEndianness) + " or " + Hex(kEndiannessSwapped));
    }
    Header header{};
    header.bigEndian = endianness == kEndiannessSwapped;
    reader.setBigEndian(header.bigEndian);
    header.type = reader.Word("glType");
    header.typeSize = reader.Word("glTypeSize");
    header.layout = reader.Word("glFormat");
    header.internalFormat = reader.Word("glInternalFormat");
    header.base = reader.Word("glBaseInternalFormat");
    header.width = reader.Word("pixelWidth");
    header.height = reader.Word("pixelHeight");
    header.depth = reader.Word("pixelDepth");
    header.arrayElements = reader.Word("numberOfArrayElements");
    header.faces = reader.Word("numberOfFaces");
    header.levels = reader.Word("numberOfMipmapLevels");
    header.keyValueBytes = reader.Word("bytesOfKeyValueData");
    return header;
}

void CheckKind(const Header& header) {
    if (header.faces != 1 && header.faces != 6) {
        Reject(FindingNumber::kWrongHeaderField, "numberOfFaces", std::to_string(header.faces), "1");
    }
    CheckPictureSize(header.width, std::max(header.height, 1u));
    const struct {
        const char* field;
        std::uint32_t got;
        bool fits;
        const char* expected;
    } checks[] = {
        {"numberOfFaces", header.faces, header.faces == 1, "1 (cube maps are not supported)"},
        {"pixelHeight", header.height, header.height != 0, "1 or more (1D textures are not supported)"},
        {"pixelDepth", header.depth, header.depth <= 1, "0 (volumes are not supported)"},
        {"numberOfArrayElements", header.arrayElements, header.arrayElements == 0,
         "0 (arrays are not supported)"},
    };
    for (const auto& check : checks) {
        if (!check.fits) {
            Reject(FindingNumber::kUnsupportedKind, check.field, std::to_string(check.got), check.expected);
        }
    }
}

const KtxFormat& FindRow(const Header& header) {
    const std::uint32_t type = header.type == gl::kHalfOes ? gl::kHalf : header.type;
    for (const KtxFormat& row : kKtxFormats) {
        const bool compressed = row.type == 0;
        if (compressed ? type == 0 && header.layout == 0 && row.internalFormat == header.internalFormat
                       : row.type == type && row.layout == header.layout) {
            return row;
        }
    }
    Reject(FindingNumber::kUnsupportedFormat, "format",
           "glType " + Hex(header.type) + ", glFormat " + Hex(header.layout) + ", glInternalFormat " +
               Hex(header.internalFormat),
           "one of those that \"qonvert formats\" lists for ktx");
}

void CheckFormatFields(const Header& header, const KtxFormat& row, Findings& findings) {
    if (header.typeSize != row.typeSize) {
        Reject(FindingNumber::kWrongHeaderField, "glTypeSize", std::to_string(header.typeSize),
               std::to_string(row.typeSize));
    }
    if (header.internalFormat != row.internalFormat && header.internalFormat != header.layout) {
        Note(findings, FindingNumber::kOddHeaderField, "glInternalFormat", Hex(header.internalFormat),
             Hex(row.internalFormat));
    }
    if (header.base != row.base) {
        Note(findings, FindingNumber::kOddHeaderField, "glBaseInternalFormat", Hex(header.base),
             Hex(row.base));
    }
}

Origin ParseOrientation(std::string_view value, Findings& findings) {
    const bool down = value.starts_with("S=r,T=d");
    const bool up = value.starts_with("S=r,T=u");
    if (!down && !up) {
        Note(findings, FindingNumber::kOddKeyValue, "KTXorientation", std::string(value),
             "S=r,T=d or S=r,T=u");
        return Origin::kUnstated;
    }
    return up ? Origin::kBottomLeft : Origin::kTopLeft;
}

Origin ReadKeyValues(ByteReader& reader, const Header& header, Findings& findings) {
    if (const std::uint64_t left = reader.Ahead(header.keyValueBytes); left < header.keyValueBytes) {
        Reject(FindingNumber::kKeyValueData, "bytesOfKeyValueData", std::to_string(header.keyValueBytes),
               "at most the " + std::to_string(left) + " bytes left in the file");
    }
    Origin origin = Origin::kUnstated;
    const Bytes data = reader.Header("key/value data", header.keyValueBytes);
    ByteSpan pairs = data;
    while (pairs.size() >= 4) {
        MemorySource word(pairs);
        const std::uint32_t size = ByteReader(word, header.bigEndian).Word("keyAndValueByteSize");
        pairs = pairs.subspan(4);
        if (size > pairs.size()) {
            Reject(FindingNumber::kKeyValueData, "keyAndValueByteSize", std::to_string(size),
                   "at most the " + std::to_string(pairs.size()) + " bytes left of the key/value data");
        }
        const std::string_view pair(reinterpret_cast<const char*>(pairs.data()), size);
        const std::size_t end = pair.find('\0');
        if (end == std::string_view::npos) {
            Reject(FindingNumber::kKeyValueData, "key", "no end", "a NUL after the key");
        }
        if (pair.substr(0, end) == kOrientationKey) {
            const std::string_view value = pair.substr(end + 1);
            origin = ParseOrientation(value.substr(0, value.find('\0')), findings);
        }
        pairs = pairs.subspan(static_cast<std::size_t>(std::min<std::uint64_t>(PadTo4(size), pairs.size())));
    }
    if (!pairs.empty()) {
        Reject(FindingNumber::kKeyValueData, "key/value data", std::to_string(pairs.size()) + " bytes left",
               "whole pairs");
    }
    return origin;
}

struct LevelLayout {
    std::uint64_t rowBytes;     // without padding
    std::uint64_t paddedBytes;  // of a row in the file
    std::uint32_t rows;
};

// Rows of plain and float pictures are padded to 4 bytes; compressed ones are one row.
LevelLayout LayoutOf(const KtxFormat& row, std::uint32_t width, std::uint32_t height) {
    const std::uint64_t bytes = PictureBytes(row.code, width, height);
    if (row.type == 0) {
        return {bytes, bytes, 1};
    }
    return {bytes / height, PadTo4(bytes / height), height};
}

// The size that stands in front of a level, or of all levels of a paletted texture.
void ReadLevelSize(ByteReader& reader, const std::string& level, std::uint64_t expected) {
    const std::uint32_t size = reader.Word(("size of " + level).c_str());
    if (size != expected) {
        Reject(FindingNumber::kLevelSize, "size of " + level, std::to_string(size), std::to_string(expected));
    }
}

Bytes ReadLevel(ByteReader& reader, const KtxFormat& row, std::uint32_t number, const LevelLayout& layout) {
    const std::string name = "level " + std::to_string(number);
    const std::uint64_t size = layout.paddedBytes * layout.rows;
    ReadLevelSize(reader, name, size);
    Bytes level = reader.Data(name, size);
    reader.SkipPadding(PadTo4(size) - size);
    if (layout.rowBytes != layout.paddedBytes) {
        for (std::size_t y = 1; y < layout.rows; ++y) {
            std::copy_n(level.data() + y * layout.paddedBytes, layout.rowBytes,
                        level.data() + y * layout.rowBytes);
        }
        level.resize(static_cast<std::size_t>(layout.rowBytes * layout.rows));
    }
    Rearrange(level, row.fix, TableBytes(row.code));
    return level;
}

// All levels of a paletted texture lie in one piece behind one colour table.
void ReadPalettedLevels(ByteReader& reader, const KtxFormat& row, std::uint32_t levels,
                        TextureFile& texture) {
    const std::uint32_t table = TableBytes(row.code);
    const auto indices = [&](std::uint32_t level) {
        return PictureBytes(row.code, LevelSide(texture.width, level), LevelSide(texture.height, level)) -
               table;
    };
    std::uint64_t total = table;
    for (std::uint32_t i = 0; i < levels; ++i) {
        total += indices(i);
    }
    const std::string name = "level 0";
    ReadLevelSize(reader, name, total);
    reader.Require(FindingNumber::kDataMissing, name, total);
    const Bytes colours = reader.Data(name, table);
    for (std::uint32_t i = 0; i < levels; ++i) {
        Bytes level = reader.Data(name, indices(i));
        level.insert(level.begin(), colours.begin(), colours.end());
        Rearrange(level, row.fix, table);
        texture.levels.push_back(std::move(level));
    }
    reader.SkipPadding(PadTo4(total) - total);
}

const KtxFormat& RowToWrite(std::uint32_t format, const WriteOptions& options) {
    const KtxFormat* found = nullptr;
    for (const KtxFormat& row : kKtxFormats) {
        if (row.code == format && (found == nullptr || options.ktxAmdTokens)) {
            found = &row;
        }
    }
    return *found;
}

void AppendOrientation(Bytes& out, Origin origin) {
    if (origin == Origin::kUnstated) {
        AppendWord(out, 0);
        return;
    }
    // Both strings with their NULs.
    Bytes pair(kOrientationKey.begin(), kOrientationKey.end());
    pair.push_back(0);
    const std::string_view value = origin == Origin::kBottomLeft ? "S=r,T=u" : "S=r,T=d";
    pair.insert(pair.end(), value.begin(), value.end());
    pair.push_back(0);
    const auto size = static_cast<std::uint32_t>(pair.size());
    pair.resize(PadTo4(size));
    AppendWord(out, 4 + static_cast<std::uint32_t>(pair.size()));
    AppendWord(out, size);
    Append(out, pair);
}

void AppendLevel(Bytes& out, const KtxFormat& row, Bytes level, const LevelLayout& layout) {
    Rearrange(level, row.fix, TableBytes(row.code));
    AppendWord(out, static_cast<std::uint32_t>(layout.paddedBytes * layout.rows));
    for (std::uint32_t y = 0; y < layout.rows; ++y) {
        Append(out, ByteSpan(level).subspan(y * layout.rowBytes, layout.rowBytes));
        out.resize(PadTo4(out.size()));
    }
}

Bytes JoinPalettedLevels(const TextureFile& texture) {
    const std::uint32_t table = TableBytes(texture.format);
    Bytes all = texture.levels.front();
    for (std::size_t i = 1; i < texture.levels.size(); ++i) {
        const Bytes& level = texture.levels[i];
        if (!std::equal(level.begin(), level.begin() + table, all.begin())) {
            throw ToolError(ExitCode::kUnsupported,
                            "ktx holds one colour table for all levels, and these levels differ in theirs; "
                            "write one level, or dds or raw in another format");
        }
        Append(all, ByteSpan(level).subspan(table));
    }
    return all;
}

}  // namespace

bool IsKtx1(ByteSpan bytes) {
    return bytes.size() >= kIdentifier.size() &&
           std::equal(kIdentifier.begin(), kIdentifier.end(), bytes.begin());
}

bool Ktx1Carries(std::uint32_t format, const WriteOptions&) {
    return std::any_of(std::begin(kKtxFormats), std::end(kKtxFormats),
                       [format](const KtxFormat& row) { return row.code == format; });
}

TextureFile ReadKtx1(ByteSource& source, const ReadOptions&, Findings& findings) {
    ByteReader reader(source);
    const Header header = ReadHeader(reader);
    CheckKind(header);
    const KtxFormat& row = FindRow(header);
    CheckFormatFields(header, row, findings);
    if (header.levels == 0) {
        Note(findings, FindingNumber::kGeneratedLevels, "numberOfMipmapLevels", "0",
             "the number of levels in the file; the first is read");
    }
    const std::uint32_t levels = std::max(header.levels, 1u);
    CheckLevelCount(levels, header.width, header.height);

    TextureFile texture;
    texture.format = row.code;
    texture.width = header.width;
    texture.height = header.height;
    texture.encoding = std::string(row.name) + " (" + Hex(row.internalFormat) + ")";
    texture.origin = ReadKeyValues(reader, header, findings);
    if (TableBytes(row.code) != 0) {
        ReadPalettedLevels(reader, row, levels, texture);
    } else {
        for (std::uint32_t i = 0; i < levels; ++i) {
            const LevelLayout layout = LayoutOf(row, LevelSide(header.width, i), LevelSide(header.height, i));
            texture.levels.push_back(ReadLevel(reader, row, i, layout));
            if (header.bigEndian && row.typeSize > 1) {
                SwapBytes(texture.levels.back(), row.typeSize);
            }
        }
    }
    NoteTrailingBytes(source, findings);
    return texture;
}

Bytes WriteKtx1(const TextureFile& texture, const WriteOptions& options) {
    const KtxFormat& row = RowToWrite(texture.format, options);
    Bytes out(kIdentifier.begin(), kIdentifier.end());
    const auto levels = static_cast<std::uint32_t>(texture.levels.size());
    for (const std::uint32_t word : {kEndianness, row.type, row.typeSize, row.layout, row.internalFormat,
                                     row.base, texture.width, texture.height, 0u, 0u, 1u, levels}) {
        AppendWord(out, word);
    }
    AppendOrientation(out, texture.origin);
    if (TableBytes(row.code) != 0) {
        const Bytes all = JoinPalettedLevels(texture);
        AppendLevel(out, row, all, {all.size(), all.size(), 1});
        return out;
    }
    for (std::uint32_t i = 0; i < levels; ++i) {
        AppendLevel(out, row, texture.levels[i],
                    LayoutOf(row, LevelSide(texture.width, i), LevelSide(texture.height, i)));
    }
    return out;
}

}  // namespace qonvert
