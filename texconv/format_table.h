// The pixel formats as data: one row per format code, read by the converter, the tool and the
// documentation. A new format is one row here (and one kernel where it needs one).
#pragma once

#include <array>
#include <cstdint>

#include "texconv/qonvert.h"

namespace QXTextureConverter {

enum class FormatClass : std::uint8_t { kPlain, kPalette, kCompressed, kFloat };

// Channels of a float format, in memory order.
enum class FloatChannels : std::uint8_t { kNone, kRgba, kRgb, kLa, kL, kA };

// Bits of a little-endian pixel word (or palette entry) that hold each channel.
struct ChannelMasks {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
    std::uint32_t alpha = 0;

    friend constexpr bool operator==(const ChannelMasks&, const ChannelMasks&) = default;
};

struct FormatInfo {
    std::uint32_t code;
    const char* name;            // with its FMT_ prefix
    std::uint32_t bitsPerPixel;  // of an index, for palette formats; averaged over a block, for compressed
    bool alpha;
    std::uint32_t paletteBits;  // of one colour table entry; 0 unless palette
    FormatClass formatClass;
    ChannelMasks masks;  // of the table entries, for palette formats; 0 for compressed and float
    FloatChannels floatChannels = FloatChannels::kNone;
    std::uint32_t floatBytes = 0;  // of one channel: 4 float, 2 half float

    constexpr bool IsPalette() const { return formatClass == FormatClass::kPalette; }
    constexpr bool IsCompressed() const { return formatClass == FormatClass::kCompressed; }
    constexpr bool IsFloat() const { return formatClass == FormatClass::kFloat; }
};

namespace detail {

inline constexpr ChannelMasks kRgba8888{0xFF, 0xFF00, 0xFF0000, 0xFF000000};
inline constexpr ChannelMasks kRgb888{0xFF, 0xFF00, 0xFF0000, 0};
inline constexpr ChannelMasks kRgb565{0xF800, 0x07E0, 0x001F, 0};
inline constexpr ChannelMasks kRgba5551{0xF800, 0x07C0, 0x003E, 0x0001};
inline constexpr ChannelMasks kRgba4444{0xF000, 0x0F00, 0x00F0, 0x000F};
inline constexpr ChannelMasks kNoMasks{};

constexpr FormatInfo Plain(std::uint32_t code, const char* name, std::uint32_t bits, bool alpha,
                           ChannelMasks masks) {
    return {code, name, bits, alpha, 0, FormatClass::kPlain, masks};
}
constexpr FormatInfo Palette(std::uint32_t code, const char* name, std::uint32_t bits, bool alpha,
                             std::uint32_t paletteBits, ChannelMasks masks) {
    return {code, name, bits, alpha, paletteBits, FormatClass::kPalette, masks};
}
constexpr FormatInfo Compressed(std::uint32_t code, const char* name, std::uint32_t bits, bool alpha) {
    return {code, name, bits, alpha, 0, FormatClass::kCompressed, kNoMasks};
}
constexpr FormatInfo Float(std::uint32_t code, const char* name, std::uint32_t bits, bool alpha,
                           FloatChannels channels, std::uint32_t bytes) {
    return {code, name, bits, alpha, 0, FormatClass::kFloat, kNoMasks, channels, bytes};
}

}  // namespace detail

// All supported formats, by ascending code.
inline constexpr std::array<FormatInfo, 40> kFormats{{
    detail::Plain(FMT_RGBA8888, "FMT_RGBA8888", 32, true, detail::kRgba8888),
    detail::Plain(FMT_RGB888, "FMT_RGB888", 24, false, detail::kRgb888),
    detail::Plain(FMT_RGB565, "FMT_RGB565", 16, false, detail::kRgb565),
    detail::Plain(FMT_RGBA5551, "FMT_RGBA5551", 16, true, detail::kRgba5551),
    detail::Plain(FMT_RGBA4444, "FMT_RGBA4444", 16, true, detail::kRgba4444),
    detail::Plain(FMT_LA88, "FMT_LA88", 16, true, {0xFF00, 0xFF00, 0xFF00, 0x00FF}),
    detail::Plain(FMT_L8, "FMT_L8", 8, false, {0xFF, 0xFF, 0xFF, 0}),
    detail::Plain(FMT_A8, "FMT_A8", 8, true, {0, 0, 0, 0xFF}),
    detail::Palette(FMT_P8_RGBA8888, "FMT_P8_RGBA8888", 8, true, 32, detail::kRgba8888),
    detail::Palette(FMT_P8_RGB888, "FMT_P8_RGB888", 8, false, 24, detail::kRgb888),
    detail::Palette(FMT_P8_RGBA5551, "FMT_P8_RGBA5551", 8, true, 16, detail::kRgba5551),
    detail::Palette(FMT_P8_RGBA4444, "FMT_P8_RGBA4444", 8, true, 16, detail::kRgba4444),
    detail::Palette(FMT_P8_RGB565, "FMT_P8_RGB565", 8, false, 16, detail::kRgb565),
    detail::Palette(FMT_P4_RGBA8888, "FMT_P4_RGBA8888", 4, true, 32, detail::kRgba8888),
    detail::Palette(FMT_P4_RGB888, "FMT_P4_RGB888", 4, false, 24, detail::kRgb888),
    detail::Palette(FMT_P4_RGBA5551, "FMT_P4_RGBA5551", 4, true, 16, detail::kRgba5551),
    detail::Palette(FMT_P4_RGBA4444, "FMT_P4_RGBA4444", 4, true, 16, detail::kRgba4444),
    detail::Palette(FMT_P4_RGB565, "FMT_P4_RGB565", 4, false, 16, detail::kRgb565),
    detail::Palette(FMT_P1_RGBA8888, "FMT_P1_RGBA8888", 1, true, 32, detail::kRgba8888),
    detail::Compressed(FMT_ATITC_RGBA_EXPLICIT, "FMT_ATITC_RGBA_EXPLICIT", 8, true),
    detail::Compressed(FMT_ATITC_RGB, "FMT_ATITC_RGB", 4, false),
    detail::Compressed(FMT_ATITC_RGBA_INTERPOLATED, "FMT_ATITC_RGBA_INTERPOLATED", 8, true),
    detail::Compressed(FMT_ETC1_RGB8, "FMT_ETC1_RGB8", 4, false),
    detail::Compressed(FMT_3DC_X, "FMT_3DC_X", 4, false),
    detail::Compressed(FMT_3DC_XY, "FMT_3DC_XY", 8, false),
    detail::Float(FMT_RGBA32F, "FMT_RGBA32F", 128, true, FloatChannels::kRgba, 4),
    detail::Float(FMT_RGB32F, "FMT_RGB32F", 96, false, FloatChannels::kRgb, 4),
    detail::Float(FMT_LA32F, "FMT_LA32F", 64, true, FloatChannels::kLa, 4),
    detail::Float(FMT_L32F, "FMT_L32F", 32, false, FloatChannels::kL, 4),
    detail::Float(FMT_A32F, "FMT_A32F", 32, true, FloatChannels::kA, 4),
    detail::Float(FMT_RGBA16F, "FMT_RGBA16F", 64, true, FloatChannels::kRgba, 2),
    detail::Float(FMT_RGB16F, "FMT_RGB16F", 48, false, FloatChannels::kRgb, 2),
    detail::Float(FMT_LA16F, "FMT_LA16F", 32, true, FloatChannels::kLa, 2),
    detail::Float(FMT_L16F, "FMT_L16F", 16, false, FloatChannels::kL, 2),
    detail::Float(FMT_A16F, "FMT_A16F", 16, true, FloatChannels::kA, 2),
    detail::Plain(FMT_BGRA8888, "FMT_BGRA8888", 32, true, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}),
    detail::Plain(FMT_L16, "FMT_L16", 16, false, {0xFFFF, 0xFFFF, 0xFFFF, 0}),
    detail::Plain(FMT_L24, "FMT_L24", 24, false, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0}),
    detail::Plain(FMT_L24A8, "FMT_L24A8", 32, true, {0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFF000000}),
    detail::Plain(FMT_L32, "FMT_L32", 32, false, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0}),
}};

// Codes run from 1 to kLastFormatCode with one gap.
inline constexpr std::uint32_t kUnusedFormatCode = 26;
inline constexpr std::uint32_t kLastFormatCode = 41;

// The row of a format code, or null for an unsupported code.
constexpr const FormatInfo* FindFormat(std::uint32_t code) {
    if (code == 0 || code == kUnusedFormatCode || code > kLastFormatCode) {
        return nullptr;
    }
    return &kFormats[code < kUnusedFormatCode ? code - 1 : code - 2];
}

namespace detail {

constexpr bool EveryCodeFindsItsRow() {
    for (const FormatInfo& row : kFormats) {
        if (FindFormat(row.code) != &row) {
            return false;
        }
    }
    return true;
}
static_assert(EveryCodeFindsItsRow());

}  // namespace detail

}  // namespace QXTextureConverter
