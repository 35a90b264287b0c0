// Textures and damaged files for the tests.
#pragma once

#include <cstdint>
#include <string>

#include "texconv/format_table.h"
#include "tools/qonvert/container.h"

namespace qonvert {

// Reproducible noise.
inline Bytes Noise(std::size_t count, std::uint32_t seed) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<std::uint8_t>(seed >> 24);
    }
    return bytes;
}

// Noise in every level. Paletted levels share one colour table; float bits are any.
inline TextureFile NoiseTexture(std::uint32_t format, std::uint32_t width, std::uint32_t height,
                                std::uint32_t levels = 1) {
    TextureFile texture;
    texture.format = format;
    texture.width = width;
    texture.height = height;
    texture.origin = Origin::kTopLeft;
    const Bytes table = Noise(TableBytes(format), 7);
    for (std::uint32_t i = 0; i < levels; ++i) {
        Bytes level = Noise(PictureBytes(format, LevelSide(width, i), LevelSide(height, i)), format + i);
        std::copy(table.begin(), table.end(), level.begin());
        // Bits behind the last index are 0.
        const auto* info = QXTextureConverter::FindFormat(format);
        const std::uint64_t bits =
            std::uint64_t{LevelSide(width, i)} * LevelSide(height, i) * info->bitsPerPixel;
        if (info->IsPalette() && bits % 8 != 0) {
            level.back() &= static_cast<std::uint8_t>((1u << bits % 8) - 1);
        }
        texture.levels.push_back(std::move(level));
    }
    return texture;
}

inline void PatchWord(Bytes& bytes, std::size_t at, std::uint32_t word) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes.at(at + i) = static_cast<std::uint8_t>(word >> (8 * i));
    }
}

inline std::uint32_t WordAt(ByteSpan bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i) {
        word |= std::uint32_t{bytes[at + i]} << (8 * i);
    }
    return word;
}

// Encoded by libjpeg at quality 90: a grey ramp or a colour one.
Bytes JpegSample(std::uint32_t width, std::uint32_t height, bool grey);

}  // namespace qonvert
