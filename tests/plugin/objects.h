// Objects built from scene data in a few words, and what the transfer modes mean.
#pragma once

#include <GLES2/gl2.h>
#include <gtest/gtest.h>

#include <map>
#include <numeric>

#include "core/json_reader.h"
#include "graphics/plugin.h"
#include "objects/sprite.h"
#include "objects/texture.h"
#include "tests/empty_reader.h"

namespace zorvan {

constexpr RealFixed Real(int value) {
    return RealFixed::FromInt(value);
}

// What a transfer mode is to GL: blend factors, and what its programs do besides.
enum class Snippet { None, Premultiply, SquareAlpha };
enum class Shading { Tinted, AlphaTinted, Plain };
struct Mode {
    GLenum source = GL_SRC_ALPHA, destination = GL_ONE_MINUS_SRC_ALPHA;
    Snippet snippet = Snippet::None;
    Shading shading = Shading::Tinted;
};

inline Mode ModeOf(uint32_t number) {
    static const std::map<uint32_t, Mode> exceptions = {
        {4, {GL_SRC_ALPHA, GL_ONE}},
        {5, {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, Snippet::Premultiply, Shading::AlphaTinted}},
        {6, {GL_ONE_MINUS_DST_COLOR, GL_ONE, Snippet::Premultiply, Shading::AlphaTinted}},
        {23, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA, Snippet::None, Shading::Plain}},
        {25, {GL_ONE_MINUS_DST_COLOR, GL_ONE_MINUS_SRC_COLOR, Snippet::Premultiply, Shading::AlphaTinted}},
        {27, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA}},
        {29, {GL_SRC_ALPHA, GL_ONE, Snippet::SquareAlpha, Shading::AlphaTinted}},
    };
    const auto found = exceptions.find(number);
    return found == exceptions.end() ? Mode{} : found->second;
}

// A node of the scene format, its keys in single quotes and its class left out; it may name one texture, "t".
template <typename T = SpriteGL>
RefT<T> Make(std::string json, Texture* texture = nullptr) {
    static ClassRegistry registry;
    static const uint32_t registered = ::Initialize(&registry);
    std::replace(json.begin(), json.end(), '\'', '"');
    JsonReader reader(registry);
    if (texture != nullptr) {
        texture->name = "t";
        reader.AddTexture(texture);
    }
    EXPECT_TRUE(registered && reader.Parse(json));
    const std::string name = T().GetClassName();
    RefT<T> node(static_cast<T*>(LoadNode(reader, name.substr(0, name.find("GL")).c_str())));
    EXPECT_EQ(reader.Error(), "");
    return node;
}

inline RefT<SpriteGL> MakeSprite(int width, int height, std::string const& more = "",
                                 Texture* texture = nullptr) {
    return Make("{'width': " + std::to_string(width) + ", 'height': " + std::to_string(height) + more + "}",
                texture);
}

// A texture of complete levels, its bytes counting up from 0.
inline RefT<TextureGL> MakeTexture(uint32_t format, int width, int height, uint32_t levels = 1) {
    RefT<TextureGL> texture(new TextureGL);
    texture->format.Set(format);
    for (auto* side : {&texture->width, &texture->usedWidth}) {
        side->Set(width);
    }
    for (auto* side : {&texture->height, &texture->usedHeight}) {
        side->Set(height);
    }
    List<TextureLevel> table;
    uint32_t offset = 0;
    for (uint32_t i = 0; i < levels; ++i) {
        const auto w = static_cast<uint32_t>(width) >> i, h = static_cast<uint32_t>(height) >> i;
        table.Append({w, h, offset, TextureDataSize(format, w, h)});
        offset += table.Last().size;
    }
    EXPECT_TRUE(texture->SizePixelStore(offset));
    std::iota(texture->pixels.data, texture->pixels.data + offset, uint8_t{});
    texture->levels = table;
    return texture;
}

}  // namespace zorvan
