// Textures for the tests.
#pragma once

#include <algorithm>
#include <cstdint>

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
    TextureFile texture{format, width, height, Origin::kTopLeft, "", {}};
    const Bytes table = Noise(TableBytes(format), 7);
    const auto* info = QXTextureConverter::FindFormat(format);
    for (std::uint32_t i = 0; i < levels; ++i) {
        const std::uint32_t w = LevelSide(width, i), h = LevelSide(height, i);
        Bytes level = Noise(PictureBytes(format, w, h), format + i);
        std::copy(table.begin(), table.end(), level.begin());
        // Bits behind the last index are 0.
        if (const unsigned used = w * h * info->bitsPerPixel % 8; info->IsPalette() && used != 0) {
            level.back() &= static_cast<std::uint8_t>((1u << used) - 1);
        }
        texture.levels.push_back(std::move(level));
    }
    return texture;
}

inline Bytes NoiseFile(const char* container, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                       const WriteOptions& options = {}) {
    return WriteContainer(*FindContainer(container), NoiseTexture(format, width, height), options);
}

inline void PatchWord(Bytes& bytes, std::size_t at, std::uint32_t word) {
    for (unsigned i = 0; i < 4; ++i) {
        bytes.at(at + i) = static_cast<std::uint8_t>(word >> (8 * i));
    }
}

inline Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count) {
    return at + count <= bytes.size() ? Bytes(bytes.begin() + at, bytes.begin() + at + count) : Bytes{};
}

// Encoded by libjpeg at quality 90: a grey ramp or a colour one.
Bytes JpegSample(std::uint32_t width, std::uint32_t height, bool grey);

}  // namespace qonvert
