// Where and how sprites and texts appear, read-back, and projection against what was drawn.
#include <cmath>

#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

constexpr Color kBlack{{}, {}, {}, Real(1)};
constexpr Color kRed{Real(1), {}, {}, Real(1)};
constexpr Bytes kRedBytes{255, 0, 0, 255};
constexpr Bytes kBlackBytes{0, 0, 0, 255};

class SceneTest : public PixelTest {
  protected:
    void SetUp() override {
        if (!Open(kRgba8888)) {
            GTEST_SKIP() << "the driver has no 8-8-8-8 surface";
        }
        ClearTo(kBlack);
    }
    // Left, top, right, bottom (exclusive) of what is not black.
    std::array<double, 4> Drawn() const {
        std::array<int, 4> box{kSize, kSize, 0, 0};
        for (int i = 0; i < kSize * kSize; ++i) {
            const int x = i % kSize;
            const int y = i / kSize;
            if (surface->At(x, y) != kBlackBytes) {
                box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x + 1),
                       std::max(box[3], y + 1)};
            }
        }
        return {1.0 * box[0], 1.0 * box[1], 1.0 * box[2], 1.0 * box[3]};
    }
    // What the device says about where the corners of a sprite are.
    std::array<double, 4> Projected(SpriteGL& sprite) {
        std::array<double, 4> box{1e9, 1e9, -1e9, -1e9};
        for (int i = 0; i < 4; ++i) {
            const Vector4T<RealFixed> corner{Real(i % 2 * sprite.width.Get()),
                                             Real(i / 2 * sprite.height.Get()), RealFixed{}, Real(1)};
            const auto at = device->ProjectCoordinate(sprite.GetWorldMatrix(), corner);
            const double x = static_cast<double>(at.x.raw) / 4294967296.0;
            const double y = static_cast<double>(at.y.raw) / 4294967296.0;
            box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
        }
        return box;
    }
};

TEST_F(SceneTest, SpritesStandOnTheirPixels) {
    struct Case {
        int x, y, width, height;
    };
    for (Case const& c :
         {Case{0, 0, 1, 1}, {511, 511, 1, 1}, {10, 20, 30, 40}, {0, 100, 512, 3}, {500, 0, 40, 40}}) {
        ClearTo(kBlack);
        Draw(*MakeSprite(c.x, c.y, c.width, c.height, kRed));
        for (int i = 0; i < kSize * kSize; ++i) {
            const int x = i % kSize;
            const int y = i / kSize;
            const bool inside = x >= c.x && x < c.x + c.width && y >= c.y && y < c.y + c.height;
            ASSERT_EQ(surface->At(x, y), inside ? kRedBytes : kBlackBytes) << x << ' ' << y;
        }
    }
}

// Rows are stored bottom-up, so images stand upright; only the used part of a texture shows.
TEST_F(SceneTest, TexturesStandUpright) {
    const std::vector<uint8_t> bytes = {255, 0, 0,   255, 0,   255, 0,   255,   // bottom row: red, green
                                        0,   0, 255, 255, 255, 255, 255, 255};  // top row: blue, white
    const RefT<SpriteGL> sprite = MakeSprite(100, 100, 64, 64);
    const RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgba8888, 2, 2, bytes);
    sprite->SetTexture(texture.Get());
    Draw(*sprite);
    EXPECT_EQ(surface->At(102, 102), (Bytes{0, 0, 255, 255}));
    EXPECT_EQ(surface->At(161, 102), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(surface->At(102, 161), kRedBytes);
    EXPECT_EQ(surface->At(161, 161), (Bytes{0, 255, 0, 255}));

    texture->usedHeight.Set(1);
    sprite->SetTexture(texture.Get());
    Draw(*sprite);
    EXPECT_EQ(surface->At(102, 150), kRedBytes);
    EXPECT_EQ(surface->At(161, 150), (Bytes{0, 255, 0, 255}));
}

// The second texel of the second row, which padded or skewed rows would miss.
TEST_F(SceneTest, EveryPlainTextureFormat) {
    struct Case {
        uint32_t format;
        std::vector<uint8_t> pixel;
        Bytes shown;
    };
    const Case cases[] = {
        {0, {0x1F, 0x04}, {0, 130, 255, 255}},  // 5-6-5: 0, 32, 31
        {1, {0x01, 0x84}, {132, 132, 0, 255}},  // 5-5-5-1: 16, 16, 0, 1
        {2, {0xFF, 0xC0}, {204, 0, 255, 255}},  // 4-4-4-4: 12, 0, 15, 15
        {4, {10, 200, 90}, {10, 200, 90, 255}},      {5, {10, 200, 90, 255}, {10, 200, 90, 255}},
        {6, {10, 200, 90, 255}, {10, 200, 90, 255}}, {7, {10, 200, 90, 255}, {10, 200, 90, 255}},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.format);
        std::vector<uint8_t> bytes(c.pixel.size() * 6);
        std::copy(c.pixel.begin(), c.pixel.end(), bytes.begin() + static_cast<ptrdiff_t>(4 * c.pixel.size()));
        const RefT<SpriteGL> sprite = MakeSprite(0, 0, 300, 32);
        sprite->SetTexture(MakeTexture(c.format, 3, 2, bytes).Get());
        ClearTo(kBlack);
        Draw(*sprite);
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(surface->At(150, 4)[i], c.shown[i], 3) << "channel " << i;
        }
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

// The default camera sees the plane z = 0 one to one; sprites fall where the projection says, tilted or not.
TEST_F(SceneTest, Cameras) {
    constexpr double kFlat[] = {256, 200, 456, 320};
    const RefT<SpriteGL> sprite = MakeSprite(256, 200, 200, 120, kRed);
    for (const auto& [perspective, degrees] : {std::pair{true, 0}, {true, 30}, {true, 60}, {false, 0}}) {
        sprite->depth.Set(perspective);
        sprite->rotation.Set({Real(degrees / 2), Real(degrees), Real(degrees)});
        ClearTo(kBlack);
        Draw(*sprite);
        const std::array<double, 4> drawn = Drawn();
        const std::array<double, 4> projected = Projected(*sprite);
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(drawn[i], projected[i], perspective ? 1.5 : 0.01) << degrees << ' ' << i;
            EXPECT_TRUE(degrees != 0 || std::abs(drawn[i] - kFlat[i]) <= (perspective ? 1 : 0)) << drawn[i];
        }
    }
}

class ReadBackTest : public PixelTest, public testing::WithParamInterface<ChannelBits> {};

// The rectangle counts from the top left, and its bottom row comes first.
TEST_P(ReadBackTest, EqualsTheSurface) {
    if (!Open(GetParam(), 64)) {
        GTEST_SKIP() << "the driver has no surface of these channel sizes";
    }
    ClearTo({Byte(16), Byte(60), Byte(123), Byte(255)});
    Draw(*MakeSprite(10, 3, 7, 2, {Real(1), Byte(128), {}, Real(1)}));
    const RectangleT<int> area{9, 2, 16, 9};
    const RefT<TextureGL> texture(new TextureGL);
    for (int pass = 0; pass < 2; ++pass) {
        Texture* out = texture.Get();
        ASSERT_EQ(device->ReadPixels(area, &out), 1u);
        const uint32_t bytes = texture->GetBytesPerPixel();
        EXPECT_EQ(bytes, GetParam()[0] == 5 ? 4u : 3u);
        ASSERT_EQ(texture->pixels.size, 7 * 7 * bytes);
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 7; ++x) {
                uint8_t const* pixel = texture->pixels.data + static_cast<uint32_t>((6 - y) * 7 + x) * bytes;
                const Bytes shown = surface->At(area.left + x, area.top + y);
                EXPECT_TRUE(std::equal(pixel, pixel + bytes, shown.begin())) << x << ' ' << y;
            }
        }
        EXPECT_EQ(texture->levels.Count(), 1u);
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

INSTANTIATE_TEST_SUITE_P(Surfaces, ReadBackTest, testing::ValuesIn(kSurfaces));

// What is read can be drawn again.
TEST_F(SceneTest, ReadBackShowsTheSamePicture) {
    Draw(*MakeSprite(0, 0, 8, 4, kRed));
    Texture* copy = nullptr;
    ASSERT_EQ(device->ReadPixels({0, 0, 8, 8}, &copy), 1u);
    const RefT<SpriteGL> sprite = MakeSprite(100, 100, 8, 8);
    sprite->SetTexture(copy);
    Draw(*sprite);
    EXPECT_EQ(surface->At(104, 101), kRedBytes);
    EXPECT_EQ(surface->At(104, 106), kBlackBytes);
}

}  // namespace
}  // namespace zorvan
