#include "tools/qonvert/dds.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "texconv/format_table.h"
#include "tools/qonvert/byte_io.h"
#include "tools/qonvert/dds_formats.h"
#include "tools/qonvert/pixels.h"

namespace qonvert {

using QXTextureConverter::ChannelMasks;
using QXTextureConverter::FindFormat;
using QXTextureConverter::FormatInfo;

namespace {

constexpr std::uint32_t kMagic = FourCc("DDS ");
constexpr std::uint32_t kDx10 = FourCc("DX10");
constexpr std::uint32_t kHeaderBytes = 124;
constexpr std::uint32_t kPixelFormatBytes = 32;

// Header flags.
constexpr std::uint32_t kFlagsBase = 0x1007;  // caps, height, width, pixel format
constexpr std::uint32_t kFlagPitch = 0x8;
constexpr std::uint32_t kFlagLevels = 0x20000;
constexpr std::uint32_t kFlagLinearSize = 0x80000;
// Pixel format flags.
constexpr std::uint32_t kHasAlpha = 0x1;
constexpr std::uint32_t kAlphaOnly = 0x2;
constexpr std::uint32_t kHasFourCc = 0x4;
constexpr std::uint32_t kIndexed = 0x20 | 0x8;
constexpr std::uint32_t kRgb = 0x40;
constexpr std::uint32_t kLuminance = 0x20000;
// Capabilities.
constexpr std::uint32_t kCapsTexture = 0x1000;
constexpr std::uint32_t kCapsLevels = 0x400008;
constexpr std::uint32_t kCaps2CubeOrVolume = 0x200 | 0x200000;
// The DX10 header.
constexpr std::uint32_t kDimension2D = 3;
constexpr std::uint32_t kMiscCube = 0x4;

struct Header {
    std::uint32_t flags, height, width, pitchOrSize, depth, levels;
    std::uint32_t formatFlags, fourCc, bits;
    ChannelMasks masks;
    std::uint32_t caps2;
};

// How the levels lie in the file.
struct Layout {
    std::uint32_t code = 0;      // of the texture that is read
    std::uint32_t fileCode = 0;  // of the pixels in the file
    std::string name;
    Rearrangement change = Rearrangement::kNone;
    std::optional<ChannelMasks> masks;  // of a plain layout that no format has
};

std::string Quoted(std::uint32_t fourCc) {
    return '"' + FourCcText(fourCc) + '"';
}

Header ReadHeader(ByteReader& reader) {
    const std::uint32_t magic = reader.Word("identifier");
    if (magic != kMagic) {
        Reject(FindingNumber::kWrongMagic, "identifier", Hex(magic), "\"DDS \"");
    }
    const std::uint32_t size = reader.Word("dwSize");
    if (size != kHeaderBytes) {
        Reject(FindingNumber::kWrongHeaderField, "dwSize", std::to_string(size), "124");
    }
    Header header{};
    header.flags = reader.Word("dwFlags");
    header.height = reader.Word("dwHeight");
    header.width = reader.Word("dwWidth");
    header.pitchOrSize = reader.Word("dwPitchOrLinearSize");
    header.depth = reader.Word("dwDepth");
    header.levels = reader.Word("dwMipMapCount");
    reader.Header("dwReserved1", 44);
    const std::uint32_t formatSize = reader.Word("ddspf.dwSize");
    if (formatSize != kPixelFormatBytes) {
        Reject(FindingNumber::kWrongHeaderField, "ddspf.dwSize", std::to_string(formatSize), "32");
    }
    header.formatFlags = reader.Word("ddspf.dwFlags");
    header.fourCc = reader.Word("ddspf.dwFourCC");
    header.bits = reader.Word("ddspf.dwRGBBitCount");
    header.masks.red = reader.Word("ddspf.dwRBitMask");
    header.masks.green = reader.Word("ddspf.dwGBitMask");
    header.masks.blue = reader.Word("ddspf.dwBBitMask");
    header.masks.alpha = reader.Word("ddspf.dwABitMask");
    reader.Word("dwCaps");
    header.caps2 = reader.Word("dwCaps2");
    reader.Header("dwCaps3 to dwReserved2", 12);
    return header;
}

Layout LayoutOfDxgi(ByteReader& reader) {
    const std::uint32_t dxgi = reader.Word("dxgiFormat");
    const std::uint32_t dimension = reader.Word("resourceDimension");
    const std::uint32_t misc = reader.Word("miscFlag");
    const std::uint32_t arraySize = reader.Word("arraySize");
    reader.Word("miscFlags2");
    if (dimension != kDimension2D || (misc & kMiscCube) != 0 || arraySize > 1) {
        Reject(FindingNumber::kUnsupportedKind, "kind of texture",
               "dimension " + std::to_string(dimension) + ", misc " + Hex(misc) + ", array size " +
                   std::to_string(arraySize),
               "one 2D texture");
    }
    for (const DdsDxgi& row : kDdsDxgis) {
        if (row.dxgi == dxgi) {
            return {row.code, row.code, std::string("DX10 ") + row.name, row.change, {}};
        }
    }
    Reject(FindingNumber::kUnsupportedFormat, "dxgiFormat", std::to_string(dxgi), "28, 65, 80, 83, 85 or 87");
}

Layout LayoutOfFourCc(std::uint32_t fourCc) {
    for (const DdsFourCc& row : kDdsFourCcs) {
        if (row.fourCc == fourCc) {
            return {row.code, row.code, Quoted(fourCc), row.change, {}};
        }
    }
    Reject(FindingNumber::kUnsupportedFormat, "ddspf.dwFourCC", Quoted(fourCc),
           "one of those that \"qonvert formats\" lists for dds");
}

// The masks as a pixel of every kind has them: luminance in all three colours.
ChannelMasks EffectiveMasks(const Header& header) {
    ChannelMasks masks = header.masks;
    if ((header.formatFlags & kLuminance) != 0) {
        masks.green = masks.blue = masks.red;
    }
    if ((header.formatFlags & kAlphaOnly) != 0) {
        masks.red = masks.green = masks.blue = 0;
    } else if ((header.formatFlags & kHasAlpha) == 0) {
        masks.alpha = 0;
    }
    return masks;
}

Layout LayoutOfMasks(const Header& header) {
    const ChannelMasks masks = EffectiveMasks(header);
    const std::string name = std::to_string(header.bits) + " bits, masks " + Hex(masks.red) + " " +
                             Hex(masks.green) + " " + Hex(masks.blue) + " " + Hex(masks.alpha);
    for (const FormatInfo& row : QXTextureConverter::kFormats) {
        if (row.formatClass == QXTextureConverter::FormatClass::kPlain && row.bitsPerPixel == header.bits &&
            row.masks == masks) {
            return {row.code, row.code, name, Rearrangement::kNone, {}};
        }
    }
    if (header.bits == 16 && masks == ChannelMasks{0xFF, 0xFF, 0xFF, 0xFF00}) {
        return {FMT_LA88, FMT_LA88, name, Rearrangement::kSwapPairs, {}};
    }
    // The converter takes any mask but 0, which stands for the format's own.
    const bool coloured = masks.red != 0 && masks.green != 0 && masks.blue != 0;
    const bool alpha = masks.alpha != 0;
    const std::uint32_t target = alpha ? FMT_RGBA8888 : FMT_RGB888;
    for (const std::uint32_t fileCode : {FMT_RGBA8888, FMT_RGB888, FMT_RGB565}) {
        if (coloured && header.bits == FindFormat(fileCode)->bitsPerPixel) {
            return {target, fileCode, name, Rearrangement::kNone, masks};
        }
    }
    Reject(FindingNumber::kUnsupportedFormat, "pixel format", name,
           "red, green and blue masks over 16, 24 or 32 bits");
}

Layout FindLayout(const Header& header, ByteReader& reader) {
    if ((header.formatFlags & kHasFourCc) != 0) {
        return header.fourCc == kDx10 ? LayoutOfDxgi(reader) : LayoutOfFourCc(header.fourCc);
    }
    if ((header.formatFlags & kIndexed) != 0 ||
        (header.formatFlags & (kRgb | kLuminance | kAlphaOnly)) == 0) {
        Reject(FindingNumber::kUnsupportedFormat, "ddspf.dwFlags", Hex(header.formatFlags),
               "RGB, luminance, alpha or FourCC");
    }
    return LayoutOfMasks(header);
}

void CheckKind(const Header& header) {
    CheckPictureSize(header.width, header.height);
    if ((header.caps2 & kCaps2CubeOrVolume) != 0) {
        Reject(FindingNumber::kUnsupportedKind, "dwCaps2", Hex(header.caps2), "no cube map and no volume");
    }
}

std::uint32_t PitchOrSize(std::uint32_t code, std::uint32_t width, std::uint32_t height) {
    const std::uint64_t bytes = PictureBytes(code, width, height);
    return static_cast<std::uint32_t>(FindFormat(code)->IsCompressed() ? bytes : bytes / height);
}

Bytes ReadLevel(ByteReader& reader, const Layout& layout, std::uint32_t number, std::uint32_t width,
                std::uint32_t height) {
    Bytes level =
        reader.Data("level " + std::to_string(number), PictureBytes(layout.fileCode, width, height));
    if (layout.masks) {
        const ChannelMasks& masks = *layout.masks;
        return ConvertMaskedPixels({layout.fileCode, width, height, level},
                                   {masks.red, masks.green, masks.blue, masks.alpha}, layout.code);
    }
    Rearrange(level, layout.change);
    return level;
}

struct PixelFormat {
    std::uint32_t flags = 0, fourCc = 0, bits = 0;
    ChannelMasks masks;
    std::uint32_t dxgi = 0;
    Rearrangement change = Rearrangement::kNone;
};

std::optional<PixelFormat> DxgiPixelFormat(std::uint32_t code) {
    for (const DdsDxgi& row : kDdsDxgis) {
        if (row.code == code) {
            return PixelFormat{kHasFourCc, kDx10, 0, {}, row.dxgi, row.change};
        }
    }
    return {};
}

PixelFormat FourCcPixelFormat(std::uint32_t code, DdsNames names) {
    const DdsFourCc* found = nullptr;
    for (const DdsFourCc& row : kDdsFourCcs) {
        if (row.code == code && (found == nullptr || (row.names == names && found->names != names))) {
            found = &row;
        }
    }
    return {kHasFourCc, found->fourCc, 0, {}, 0, found->change};
}

PixelFormat PlainPixelFormat(const FormatInfo& info) {
    PixelFormat format;
    format.bits = info.bitsPerPixel;
    format.masks = info.masks;
    format.flags = info.alpha ? kHasAlpha : 0;
    if (info.masks.red == 0) {
        format.flags = kAlphaOnly;
    } else if (info.masks.red == info.masks.green) {
        format.flags |= kLuminance;
        format.masks.green = format.masks.blue = 0;
    } else {
        format.flags |= kRgb;
    }
    // The orders that every reader knows: luminance, or blue, in the low byte.
    if (info.code == FMT_LA88) {
        format.masks = {0xFF, 0, 0, 0xFF00};
        format.change = Rearrangement::kSwapPairs;
    } else if (info.code == FMT_RGB888) {
        format.masks = {0xFF0000, 0xFF00, 0xFF, 0};
        format.change = Rearrangement::kSwapTriples;
    }
    return format;
}

PixelFormat ChoosePixelFormat(std::uint32_t code, DdsNames names) {
    if (names == DdsNames::kDx10) {
        if (const auto format = DxgiPixelFormat(code)) {
            return *format;
        }
    }
    const FormatInfo& info = *FindFormat(code);
    return info.IsCompressed() ? FourCcPixelFormat(code, names) : PlainPixelFormat(info);
}

}  // namespace

bool IsDds(ByteSpan bytes) {
    constexpr std::string_view kText = "DDS ";
    return bytes.size() >= kText.size() && std::equal(kText.begin(), kText.end(), bytes.begin());
}

bool DdsCarries(std::uint32_t format, const WriteOptions&) {
    const FormatInfo* info = FindFormat(format);
    return info != nullptr && !info->IsFloat() && !info->IsPalette();
}

TextureFile ReadDds(ByteSource& source, const ReadOptions&, Findings& findings) {
    ByteReader reader(source);
    const Header header = ReadHeader(reader);
    CheckKind(header);
    const Layout layout = FindLayout(header, reader);
    const bool countsLevels = (header.flags & kFlagLevels) != 0 && header.levels != 0;
    const std::uint32_t levels = countsLevels ? header.levels : 1;
    CheckLevelCount(levels, header.width, header.height);
    const std::uint32_t expected = PitchOrSize(layout.fileCode, header.width, header.height);
    if ((header.flags & (kFlagPitch | kFlagLinearSize)) != 0 && header.pitchOrSize != expected) {
        Note(findings, FindingNumber::kOddHeaderField, "dwPitchOrLinearSize",
             std::to_string(header.pitchOrSize), std::to_string(expected));
    }

    TextureFile texture;
    texture.format = layout.code;
    texture.width = header.width;
    texture.height = header.height;
    texture.origin = Origin::kTopLeft;
    texture.encoding = layout.name;
    for (std::uint32_t i = 0; i < levels; ++i) {
        texture.levels.push_back(
            ReadLevel(reader, layout, i, LevelSide(header.width, i), LevelSide(header.height, i)));
    }
    NoteTrailingBytes(source, findings);
    return texture;
}

Bytes WriteDds(const TextureFile& texture, const WriteOptions& options) {
    const PixelFormat format = ChoosePixelFormat(texture.format, options.ddsNames);
    const bool compressed = FindFormat(texture.format)->IsCompressed();
    const auto levels = static_cast<std::uint32_t>(texture.levels.size());
    Bytes out;
    AppendWord(out, kMagic);
    AppendWord(out, kHeaderBytes);
    AppendWord(out,
               kFlagsBase | (compressed ? kFlagLinearSize : kFlagPitch) | (levels > 1 ? kFlagLevels : 0));
    AppendWord(out, texture.height);
    AppendWord(out, texture.width);
    AppendWord(out, PitchOrSize(texture.format, texture.width, texture.height));
    AppendWord(out, 0);
    AppendWord(out, levels > 1 ? levels : 0);
    out.resize(out.size() + 44);
    for (const std::uint32_t word :
         {kPixelFormatBytes, format.flags, format.fourCc, format.bits, format.masks.red, format.masks.green,
          format.masks.blue, format.masks.alpha, kCapsTexture | (levels > 1 ? kCapsLevels : 0), 0u, 0u, 0u,
          0u}) {
        AppendWord(out, word);
    }
    if (format.fourCc == kDx10) {
        for (const std::uint32_t word : {format.dxgi, kDimension2D, 0u, 1u, 0u}) {
            AppendWord(out, word);
        }
    }
    for (Bytes level : texture.levels) {
        Rearrange(level, format.change);
        Append(out, level);
    }
    return out;
}

}  // namespace qonvert
