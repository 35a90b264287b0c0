#include "tools/qonvert/png_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "texconv/format_table.h"
#include "tools/qonvert/pixels.h"
#include "tools/qonvert/rearrange.h"

namespace qonvert {

using QXTextureConverter::FindFormat;
using QXTextureConverter::FloatChannels;
using QXTextureConverter::FormatInfo;

namespace {

constexpr float kDeepMaximum = 65535.0f;

// Formats by number of channels, 1 to 4.
constexpr std::uint32_t kByteFormats[] = {FMT_L8, FMT_LA88, FMT_RGB888, FMT_RGBA8888};
constexpr std::uint32_t kFloatFormats[] = {FMT_L32F, FMT_LA32F, FMT_RGB32F, FMT_RGBA32F};

unsigned ChannelCount(const FormatInfo& info) {
    switch (info.floatChannels) {
        case FloatChannels::kRgba:
            return 4;
        case FloatChannels::kRgb:
            return 3;
        case FloatChannels::kLa:
            return 2;
        case FloatChannels::kL:
        case FloatChannels::kA:
        case FloatChannels::kNone:
            break;
    }
    return 1;
}

std::uint32_t PaletteFormat(int depth, bool alpha) {
    if (depth == 1) {
        return FMT_P1_RGBA8888;
    }
    if (depth <= 4) {
        return alpha ? FMT_P4_RGBA8888 : FMT_P4_RGB888;
    }
    return alpha ? FMT_P8_RGBA8888 : FMT_P8_RGB888;
}

// Words of 16 bits, most significant byte first.
void AppendDeep(Bytes& rows, std::uint32_t value) {
    rows.push_back(static_cast<std::uint8_t>(value >> 8));
    rows.push_back(static_cast<std::uint8_t>(value));
}

void UnpackFloats(const TextureFile& texture, const FormatInfo& info, PngPicture& picture) {
    picture.channels = ChannelCount(info);
    picture.depth = 16;
    const std::uint32_t wide = kFloatFormats[picture.channels - 1];
    const Bytes floats =
        ConvertPicture({texture.format, texture.width, texture.height, texture.levels.front()}, wide,
                       texture.width, texture.height);
    picture.rows.reserve(floats.size() / 2);
    for (std::size_t at = 0; at < floats.size(); at += sizeof(float)) {
        float value;
        std::memcpy(&value, floats.data() + at, sizeof value);
        // Also takes NaN to 0.
        const float clamped = value > 0.0f ? std::min(value, 1.0f) : 0.0f;
        AppendDeep(picture.rows, static_cast<std::uint32_t>(std::lround(clamped * kDeepMaximum)));
    }
}

// Colour table entries as 8 bits per channel, whatever the format's entries are.
PngPalette UnpackTable(const TextureFile& texture, const FormatInfo& info) {
    // Entry formats are those of the plain format with the same masks and size.
    std::uint32_t entryFormat = 0;
    for (const FormatInfo& row : QXTextureConverter::kFormats) {
        if (row.formatClass == QXTextureConverter::FormatClass::kPlain && row.masks == info.masks &&
            row.bitsPerPixel == info.paletteBits) {
            entryFormat = row.code;
            break;
        }
    }
    const std::uint32_t count = 1u << info.bitsPerPixel;
    const Bytes table = ConvertPicture(
        {entryFormat, count, 1, ByteSpan(texture.levels.front()).first(TableBytes(texture.format))},
        FMT_RGBA8888, count, 1);
    PngPalette palette;
    palette.hasAlpha = info.alpha;
    for (std::size_t i = 0; i < count; ++i) {
        palette.entries.push_back({table[4 * i], table[4 * i + 1], table[4 * i + 2], table[4 * i + 3]});
    }
    return palette;
}

void UnpackIndices(const TextureFile& texture, const FormatInfo& info, PngPicture& picture) {
    picture.palette = UnpackTable(texture, info);
    picture.depth = info.bitsPerPixel;
    picture.rowBytes = (std::size_t{texture.width} * picture.depth + 7) / 8;
    picture.rows.resize(picture.rowBytes * texture.height);
    const std::uint8_t* packed = texture.levels.front().data() + TableBytes(texture.format);
    const unsigned mask = (1u << picture.depth) - 1;
    for (std::size_t y = 0; y < texture.height; ++y) {
        for (std::size_t x = 0; x < texture.width; ++x) {
            const std::size_t from = (y * texture.width + x) * picture.depth;
            const unsigned index = packed[from / 8] >> (from % 8) & mask;
            // PNG has the first pixel of a byte in the highest bits.
            const std::size_t to = x * picture.depth;
            picture.rows[y * picture.rowBytes + to / 8] |=
                static_cast<std::uint8_t>(index << (8 - picture.depth - to % 8));
        }
    }
}

}  // namespace

void PackBytes(Bytes samples, unsigned channels, TextureFile& texture) {
    texture.format = kByteFormats[channels - 1];
    if (texture.format == FMT_LA88) {
        SwapBytes(samples, 2);
    }
    texture.levels.push_back(std::move(samples));
}

void PackDeep(const Bytes& samples, unsigned channels, DeepSamples wish, TextureFile& texture) {
    Bytes level;
    const bool floats = wish == DeepSamples::kFloat;
    texture.format = floats ? kFloatFormats[channels - 1] : std::uint32_t{FMT_L16};
    level.resize(floats ? samples.size() * 2 : samples.size());
    for (std::size_t i = 0; i < samples.size() / 2; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, samples.data() + 2 * i, sizeof sample);
        if (floats) {
            const float value = static_cast<float>(sample) / kDeepMaximum;
            std::memcpy(level.data() + 4 * i, &value, sizeof value);
        } else {
            level[2 * i] = static_cast<std::uint8_t>(sample);
            level[2 * i + 1] = static_cast<std::uint8_t>(sample >> 8);
        }
    }
    texture.levels.push_back(std::move(level));
}

void PackIndexed(const Bytes& indices, const PngPalette& palette, int depth, TextureFile& texture,
                 Findings& findings) {
    texture.format = PaletteFormat(depth, palette.hasAlpha);
    const FormatInfo& info = *FindFormat(texture.format);
    Bytes level(PictureBytes(texture.format, texture.width, texture.height));
    const std::size_t entryBytes = info.paletteBits / 8;
    for (std::size_t i = 0; i < palette.entries.size() && i < (1u << info.bitsPerPixel); ++i) {
        std::copy_n(palette.entries[i].begin(), entryBytes, level.begin() + i * entryBytes);
    }
    const std::size_t table = TableBytes(texture.format);
    unsigned largest = 0;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const std::size_t bit = i * info.bitsPerPixel;
        level[table + bit / 8] |= static_cast<std::uint8_t>(indices[i] << (bit % 8));
        largest = std::max<unsigned>(largest, indices[i]);
    }
    if (largest >= palette.entries.size()) {
        Note(findings, FindingNumber::kPaletteIndex, "largest palette index", std::to_string(largest),
             "less than the " + std::to_string(palette.entries.size()) + " entries");
    }
    texture.levels.push_back(std::move(level));
}

PngPicture UnpackForPng(const TextureFile& texture) {
    const FormatInfo& info = *FindFormat(texture.format);
    PngPicture picture;
    if (info.IsPalette()) {
        UnpackIndices(texture, info, picture);
        return picture;
    }
    if (info.IsFloat()) {
        UnpackFloats(texture, info, picture);
    } else {
        picture.rows = texture.levels.front();
        picture.depth = texture.format == FMT_L16 ? 16 : 8;
        picture.channels = info.bitsPerPixel / picture.depth;
        if (texture.format == FMT_LA88 || texture.format == FMT_L16) {
            SwapBytes(picture.rows, 2);
        }
    }
    picture.rowBytes = picture.rows.size() / texture.height;
    return picture;
}

}  // namespace qonvert
