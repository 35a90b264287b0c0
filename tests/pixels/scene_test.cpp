// Where and how sprites appear, read-back, and projection against what was drawn.
#include <cmath>

#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

constexpr Bytes kBlack{0, 0, 0, 255}, kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255},
    kWhite{255, 255, 255, 255};

// Rows are stored bottom-up, so images stand upright; only the used part of a texture shows.
TEST_F(PixelTest, TexturesStandUpright) {
    const RefT<TextureGL> texture =
        MakeTexture(TextureFormat::Rgb888, 2, 2, {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255});
    const RefT<SpriteGL> sprite = MakeSprite(10, 20, 40, 40);
    for (const int used : {2, 1}) {
        texture->usedHeight.Set(used);
        sprite->SetTexture(texture.Get());
        ClearTo(0, 0, 0);
        Draw(*sprite);
        const int top = used == 2 ? 20 : 45;  // below the rows that would blend
        EXPECT_EQ((std::array{surface->At(10, top), surface->At(49, top)}),
                  used == 2 ? (std::array{kBlue, kWhite}) : (std::array{kRed, kGreen}));
        EXPECT_EQ(
            (std::array{surface->At(9, 59), surface->At(10, 59), surface->At(49, 59), surface->At(50, 59)}),
            (std::array{kBlack, kRed, kGreen, kBlack}));
        EXPECT_EQ((std::array{surface->At(10, 19), surface->At(10, 60)}), (std::array{kBlack, kBlack}));
    }
}

class ProjectionTest : public PixelTest {
  protected:
    ProjectionTest() : PixelTest(512) {}
};

// One-pixel sprites on a grid, told apart by their colours, are drawn within a pixel of where the projection
// says. It divides by multiplying with a reciprocal of 16 bits, which the default camera's distance makes
// coarse: there it is off by up to distance / 65536 of the way from the middle, 2.2 pixels at the edge.
TEST_F(ProjectionTest, MeetsWhatIsDrawn) {
    constexpr uint32_t kSide = 20;
    using Case = std::tuple<bool, int, char const*, char const*, double>;
    for (auto const& [depth, step, camera, place, tolerance] :
         {Case{false, 24, "", "", 0},
          {true, 24, "", "", 2.7},
          {false, 15, "'orthographic': true, 'nearPlane': -100, 'viewRectangle': [-40, -10, 360, 390]",
           "'rotation': [0, 0, 5]", 1},
          {false, 15, "'position': [14, 16, 36]", "'scale': [0.1, 0.1, 1]", 1},
          {false, 15, "'position': [14, 16, 36]", "'scale': [0.1, 0.1, 1], 'rotation': [8, -9, 5]", 1}}) {
        SCOPED_TRACE(std::string(camera) + place);
        const auto pushed = Make<CameraGL>("{" + std::string(camera) + "}");
        const auto group = Make<TransformNode>("{" + std::string(place) + "}");
        for (uint32_t i = 0; i < kSide * kSide; ++i) {
            const int column = i % kSide, row = i / kSide;
            const RefT<SpriteGL> sprite = MakeSprite(9 + column * step, 9 + row * step, 1, 1,
                                                     {Byte(column + 1), Byte(row + 1), {}, Real(1)});
            sprite->depth.Set(depth);
            group->Attach(sprite.Get());
        }
        pushed->Update(device, {});
        device.PushCamera(*camera ? pushed.Get() : nullptr);
        ClearTo(0, 0, 0);
        Draw(*group);
        std::array<std::array<double, 3>, kSide * kSide> sums{};  // x, y and number of each sprite's pixels
        for (int i = 0; i < size * size; ++i) {
            const Bytes pixel = surface->At(i % size, i / size);
            if (pixel != kBlack) {
                auto& [x, y, count] = sums.at((pixel[1] - 1u) * kSide + pixel[0] - 1u);
                x += i % size + 0.5;
                y += i / size + 0.5;
                ++count;
            }
        }
        for (uint32_t i = 0; i < sums.size(); ++i) {
            constexpr RealFixed kHalf{0x8000};
            auto const& [x, y, count] = sums[i];
            const auto at = device.ProjectCoordinate(group->GetChildren()[i]->GetWorldMatrix(),
                                                     {kHalf, kHalf, {}, Real(1)});
            EXPECT_NEAR(std::ldexp(at.x.raw, -32), x / count, tolerance) << i;
            EXPECT_NEAR(std::ldexp(at.y.raw, -32), y / count, tolerance) << i;
        }
        while (device.cameras.Count() > 1) {
            device.PopCamera();
        }
    }
}

class ReadBackTest : public PixelTest, public testing::WithParamInterface<ChannelBits> {
  protected:
    ReadBackTest() : PixelTest(64, GetParam()) {}
};

// The rectangle counts from the top left, and its bottom row comes first. What lies outside is anything.
TEST_P(ReadBackTest, EqualsTheSurface) {
    ClearTo(16, 60, 123);
    Draw(*MakeSprite(10, 3, 7, 2, {Real(1), Byte(128), {}, Real(1)}));
    RefT<Texture> texture;  // the first time a new one
    constexpr RectangleT<int> kAreas[] = {{9, 2, 16, 9},  {9, 2, 16, 9},   {0, 0, 64, 64},
                                          {15, 4, 16, 5}, {-3, -2, 12, 5}, {50, 61, 69, 70}};
    for (RectangleT<int> const& area : kAreas) {
        SCOPED_TRACE(area.left);
        Texture* out = texture.Get();
        ASSERT_EQ(device.ReadPixels(area, &out), 1u);
        texture = RefT<Texture>(out);
        const auto [width, height] = SizeOf(area);
        const uint32_t bytes = GetParam()[0] == 5 ? 4 : 3;
        ASSERT_EQ(texture->pixels.size, static_cast<uint32_t>(width * height) * bytes);
        for (int i = 0; i < width * height; ++i) {
            const int x = area.left + i % width, y = area.bottom - 1 - i / width;
            uint8_t const* pixel = texture->pixels.data + static_cast<uint32_t>(i) * bytes;
            const bool outside = x < 0 || x > 63 || y < 0 || y > 63;
            EXPECT_TRUE(outside || std::equal(pixel, pixel + bytes, surface->At(x, y).begin()))
                << x << ' ' << y;
        }
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

INSTANTIATE_TEST_SUITE_P(Surfaces, ReadBackTest, testing::ValuesIn(kSurfaces));

}  // namespace
}  // namespace zorvan
