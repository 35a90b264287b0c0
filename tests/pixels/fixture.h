// A device on an off-screen surface, with a camera whose units are pixels.
#pragma once

#include "graphics/camera.h"
#include "graphics/device.h"
#include "shaders/shader.h"
#include "tests/pixels/surface.h"
#include "tests/plugin/objects.h"

namespace zorvan {

using Color = ColorT<RealFixed>;

// k / 255, rounded to 16.16 so that it lands on the byte k.
constexpr RealFixed Byte(int k) {
    return RealFixed{(k * 65536 + 127) / 255};
}

inline constexpr ChannelBits kRgba8888{8, 8, 8, 8};
inline constexpr ChannelBits kSurfaces[] = {{5, 6, 5, 0}, {8, 8, 8, 0}, kRgba8888};

class PixelTest : public testing::Test {
  protected:
    // Sizes whose reciprocals 16.16 holds exactly let sprites land on whole pixels.
    explicit PixelTest(int side = 64, ChannelBits const& bits = kRgba8888)
        : size(side), surface(Surface::Make(side, side, bits)) {}
    void SetUp() override {
        if (surface == nullptr) {
            GTEST_SKIP() << "the driver has no surface of these channel sizes";
        }
        EXPECT_EQ(device.Initialize(nullptr, DeviceFormat::Rgba8888, {size, size}), 1u);
        device.PushCamera2D(Real(size + 1), Real(size + 1));
    }
    void TearDown() override {
        delete device.solidShader;
        Shader::ReleaseAll();
    }
    void ClearTo(int red, int green, int blue, int alpha = 255) {
        device.SetClearColor({Byte(red), Byte(green), Byte(blue), Byte(alpha)});
        device.Clear();
    }
    void Draw(Node& node) {
        node.Update(device, RealFixed{});
        node.Render(device);
        surface->Read();
    }
    static RefT<SpriteGL> MakeSprite(int x, int y, int width, int height, Color const& color = {}) {
        RefT<SpriteGL> sprite = zorvan::MakeSprite(width, height);
        sprite->position.Set({Real(x), Real(y), RealFixed{}});
        sprite->color.Set(color);
        return sprite;
    }
    static RefT<TextureGL> MakeTexture(uint32_t format, int width, int height,
                                       std::vector<uint8_t> const& bytes) {
        RefT<TextureGL> texture = zorvan::MakeTexture(format, width, height);
        EXPECT_EQ(texture->pixels.size, bytes.size());
        std::copy(bytes.begin(), bytes.end(), texture->pixels.data);
        return texture;
    }

    const int size;
    const std::unique_ptr<Surface> surface;
    GraphicsDeviceGL device;
};

}  // namespace zorvan
