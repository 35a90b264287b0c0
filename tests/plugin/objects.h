// Objects built without scene files.
#pragma once

#include <gtest/gtest.h>

#include <numeric>

#include "objects/sprite.h"
#include "objects/texture.h"
#include "tests/empty_reader.h"

namespace zorvan {

constexpr RealFixed Real(int value) {
    return RealFixed::FromInt(value);
}

inline RefT<SpriteGL> MakeSprite(int width, int height) {
    RefT<SpriteGL> sprite(new SpriteGL);
    sprite->width.Set(width);
    sprite->height.Set(height);
    EmptyReader reader;
    EXPECT_TRUE(sprite->Load(reader));
    return sprite;
}

// A texture of complete levels, its bytes counting up from 0.
inline RefT<TextureGL> MakeTexture(uint32_t format, int width, int height, uint32_t levels = 1) {
    RefT<TextureGL> texture(new TextureGL);
    texture->format.Set(format);
    texture->width.Set(width);
    texture->height.Set(height);
    texture->usedWidth.Set(width);
    texture->usedHeight.Set(height);
    List<TextureLevel> table;
    uint32_t offset = 0;
    for (uint32_t i = 0; i < levels; ++i) {
        const auto w = static_cast<uint32_t>(width) >> i;
        const auto h = static_cast<uint32_t>(height) >> i;
        const uint32_t size = TextureDataSize(format, w, h);
        table.Append({w, h, offset, size});
        offset += size;
    }
    EXPECT_TRUE(texture->SizePixelStore(offset));
    std::iota(texture->pixels.data, texture->pixels.data + offset, uint8_t{});
    texture->levels = table;
    return texture;
}

}  // namespace zorvan
