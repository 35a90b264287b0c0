// Text of a font file: every pixel of the surface against the two passes of its glyphs.
#include <filesystem>

#include "core/font_file.h"
#include "graphics/plugin.h"
#include "objects/font.h"
#include "objects/text.h"
#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

constexpr char const* kFontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// Keeps what it draws.
class WatchedFont final : public FontGL {
  public:
    struct Draw {
        Glyph const* glyph;
        int x, y;
    };

    void RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& position,
                     Color const& color) override {
        draws.push_back({glyph, position.x.raw >> 16, position.y.raw >> 16});
        FontGL::RenderGlyph(device, glyph, position, color);
    }

    std::vector<Draw> draws;
};

// Coverage of the first page, from its lower left corner; its memory goes with the first draw.
struct Coverage {
    explicit Coverage(Texture const& page)
        : width(page.width.Get()),
          height(page.height.Get()),
          bytes(page.pixels.data, page.pixels.data + page.pixels.size) {}
    // From the glyph's upper left corner; the free pixel around a glyph may be asked for as well.
    double At(Glyph const& glyph, int x, int y) const {
        const int left = static_cast<int>((int64_t{glyph.uLeft.raw} * width) >> 16);
        const int top = static_cast<int>((int64_t{glyph.vBottom.raw} * height) >> 16);
        return bytes[static_cast<size_t>(((top - 1 - y) * width + left + x) * 4)] / 255.0;
    }
    // How far the sampler may be off in the middle of a pixel: drivers weigh the neighbours in steps of
    // 1/256.
    double Slack(Glyph const& glyph, int x, int y) const {
        const double here = At(glyph, x, y);
        const auto step = [&](int dx, int dy) { return std::abs(At(glyph, x + dx, y + dy) - here) / 256; };
        return std::max(step(-1, 0), step(1, 0)) + std::max(step(0, -1), step(0, 1));
    }
    int width, height;
    std::vector<uint8_t> bytes;
};

// One channel of a pixel. The sample may lose a step of 8 bits, and each of the two passes half a one.
struct Channel {
    double value = 0, slack = 2.0 / 255 + 1e-6;
};
using Picture = std::vector<std::array<Channel, 3>>;

class TextPixels : public PixelTest {
  protected:
    // What the surface shows after the draws, from a picture of one colour.
    static Picture Expect(std::vector<WatchedFont::Draw> const& draws, Coverage const& coverage,
                          double background, std::array<double, 3> const& color, double alpha) {
        const Channel empty{background};
        Picture picture(size_t{kSize} * kSize, {empty, empty, empty});
        for (WatchedFont::Draw const& draw : draws) {
            for (int y = 0; y < draw.glyph->height; ++y) {
                for (int x = 0; x < draw.glyph->width; ++x) {
                    const double covered = coverage.At(*draw.glyph, x, y);
                    const double slack = coverage.Slack(*draw.glyph, x, y);
                    auto& pixel = picture[static_cast<size_t>((draw.y + y) * kSize + draw.x + x)];
                    for (size_t c = 0; c < 3; ++c) {
                        double& value = pixel[c].value;
                        value = std::min(value * (1 - covered * color[c]) + covered * color[c] * alpha, 1.0);
                        pixel[c].slack += slack * color[c];
                    }
                }
            }
        }
        return picture;
    }
};

TEST_F(TextPixels, EqualTheTwoPasses) {
    if (!std::filesystem::exists(kFontFile)) {
        GTEST_SKIP() << kFontFile << " is missing: install fonts-dejavu-core";
    }
    std::string error;
    if (!FontFile::Open(kFontFile, 23, error)) {
        GTEST_SKIP() << error;
    }
    if (!Open(kRgba8888)) {
        GTEST_SKIP() << "the driver has no 8-8-8-8 surface";
    }
    ClassRegistry registry;
    ::Initialize(&registry);
    for (int background : {10, 128, 255}) {
        for (int opacity : {0x10000, 0x8000}) {
            SCOPED_TRACE(std::to_string(background) + " with opacity " + std::to_string(opacity));
            const RefT<WatchedFont> font(new WatchedFont);
            ASSERT_TRUE(font->LoadFile(registry, kFontFile, 23, error)) << error;
            ASSERT_TRUE(font->Initialize());
            ASSERT_EQ(font->PageCount(), 1u);
            const Coverage coverage(font->Page(0));
            const RefT<TextGL> text(new TextGL);
            text->font.Set(RefT<Font>(font.Get()));
            text->string.Set(L"The quick brown fox jumps over 13 lazy dogs, AV & Ty: (0%)!");
            text->color.Set({Byte(255), Byte(180), Byte(60), Real(1)});
            text->opacity.Set(RealFixed{opacity});
            text->hasBox.Set(true);
            text->box.Set({Real(kSize), Real(kSize)});
            text->alignment.Set(TextAlignment::Center | TextAlignment::Middle);
            ClearTo({Byte(background), Byte(background), Byte(background), Real(1)});
            Draw(*text);
            ASSERT_GT(font->draws.size(), 40u);
            const auto expected = Expect(font->draws, coverage, background / 255.0,
                                         {1, 180 / 255.0, 60 / 255.0}, opacity / 65536.0);
            int wrong = 0;
            for (int i = 0; i < kSize * kSize; ++i) {
                const Bytes pixel = surface->At(i % kSize, i / kSize);
                for (size_t c = 0; c < 3; ++c) {
                    Channel const& want = expected[static_cast<size_t>(i)][c];
                    wrong += std::abs(pixel[c] / 255.0 - want.value) > want.slack ? 1 : 0;
                }
            }
            EXPECT_EQ(wrong, 0);
        }
    }
}

}  // namespace
}  // namespace zorvan
