// What is drawn against the blend formulas: every transfer mode on every kind of surface, and texts.
#include <algorithm>
#include <cmath>

#include "objects/font.h"
#include "objects/text.h"
#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

using Channels = std::array<double, 4>;

double Weight(GLenum factor, Channels const& source, Channels const& destination, size_t channel) {
    const double weight = factor == GL_SRC_ALPHA || factor == GL_ONE_MINUS_SRC_ALPHA ? source[3]
                          : factor == GL_ONE_MINUS_SRC_COLOR                         ? source[channel]
                          : factor == GL_ONE                                         ? 1
                                                                                     : destination[channel];
    return factor == GL_SRC_ALPHA || factor == GL_DST_COLOR || factor == GL_ONE ? weight : 1 - weight;
}

class BlendTest : public PixelTest, public testing::WithParamInterface<ChannelBits> {
  protected:
    BlendTest() : PixelTest(64, GetParam()) {}
    // Draws the sprite inside groups of a chain's outer modes, outermost first, for what comes out of its
    // program.
    template <typename Shade>
    void ExpectBlends(SpriteGL& sprite, Shade shade) {
        std::vector<std::vector<uint32_t>> chains = {{},          {5, 29}, {29, 5}, {6, 4},
                                                     {25, 29, 5}, {5, 23}, {29, 0}};
        for (uint32_t mode = 0; mode < kTransferModeCount; ++mode) {
            chains.push_back({mode});
        }
        for (std::vector<uint32_t> const& chain : chains) {
            SCOPED_TRACE(testing::PrintToString(chain));
            RefT<Node> top(&sprite);
            sprite.transferMode.Set(chain.empty() ? kNoTransferMode : chain.back());
            for (size_t i = chain.size(); i-- > 1;) {
                RefT<TransformNode> group(new TransformNode);
                group->transferMode.Set(chain[i - 1]);
                group->Attach(top.Get());
                top = RefT<Node>(group.Get());
            }
            ClearTo(51, 153, 204, 102);
            surface->Read();
            const Channels destination = Shown();
            Draw(*top);
            const Mode mode = chain.empty() ? Mode{} : ModeOf(chain.back());
            const Channels source = shade(mode, chain);
            for (size_t i = 0; i < 4; ++i) {
                const double expected = source[i] * Weight(mode.source, source, destination, i) +
                                        destination[i] * Weight(mode.destination, source, destination, i);
                // Half a step for the driver's rounding, half for ours, and what dithering adds on coarse
                // surfaces.
                const int bits = GetParam()[i];
                if (bits > 0) {
                    EXPECT_NEAR(Shown()[i], std::min(1.0, expected),
                                bits < 8 ? 1.1 / ((1 << bits) - 1) : 1.001 / 255)
                        << "channel " << i;
                }
            }
        }
    }
    Channels Shown() const {
        const Bytes bytes = surface->At(8, 8);
        return {bytes[0] / 255.0, bytes[1] / 255.0, bytes[2] / 255.0, bytes[3] / 255.0};
    }
};

TEST_P(BlendTest, Solid) {
    const RefT<SpriteGL> sprite = MakeSprite(0, 0, 32, 32, {Byte(200), Byte(100), Byte(50), Byte(128)});
    ExpectBlends(*sprite, [](Mode const&, std::vector<uint32_t> const& chain) {
        Channels color = {200 / 255.0, 100 / 255.0, 50 / 255.0, 128 / 255.0};
        for (const uint32_t number : chain) {
            const Snippet snippet = ModeOf(number).snippet;
            const double factor = snippet == Snippet::Premultiply ? color[3] : 1;
            color = {color[0] * factor, color[1] * factor, color[2] * factor,
                     snippet == Snippet::SquareAlpha ? color[3] * color[3] : color[3]};
        }
        return color;
    });
}

TEST_P(BlendTest, Textured) {
    const RefT<SpriteGL> sprite = MakeSprite(0, 0, 32, 32, {Byte(1), Byte(2), Byte(3), Byte(4)});
    sprite->SetTexture(MakeTexture(TextureFormat::Rgba8888, 1, 1, {200, 100, 50, 180}).Get());
    sprite->opacity.Set(Byte(204));
    ExpectBlends(*sprite, [](Mode const& mode, std::vector<uint32_t> const&) {
        const double color = mode.shading == Shading::AlphaTinted ? 204 / 255.0 : 1;
        const double alpha = mode.shading == Shading::Plain ? 1 : 204 / 255.0;
        return Channels{200 / 255.0 * color, 100 / 255.0 * color, 50 / 255.0 * color, 180 / 255.0 * alpha};
    });
}

INSTANTIATE_TEST_SUITE_P(Surfaces, BlendTest, testing::ValuesIn(kSurfaces));

// A glyph with each coverage from 0 to 255, one to one on whole pixels, inside a page that is covered
// elsewhere. The first pass takes away what the second puts, less what is transparent; each rounds by half a
// step. Where coverage times colour is no whole number, the driver rounds that to 8 bits first, and the sum
// is compared as 8 bits hold it.
TEST_F(PixelTest, TextsAddUpTheirTwoPasses) {
    constexpr int kGlyph = 16, kPage = 64, kLeft = 32, kBottom = 8, kX = 20, kY = 10;
    std::vector<uint8_t> page(kPage * kPage * 4, 255);
    for (int i = 0; i < 256; ++i) {
        std::fill_n(page.begin() + ((kBottom + i / kGlyph) * kPage + kLeft + i % kGlyph) * 4, 3,
                    static_cast<uint8_t>(i));
    }
    const RefT<FontGL> font(new FontGL);
    font->AddPage(MakeTexture(TextureFormat::Rgba8888, kPage, kPage, page).Get());
    const auto place = [](int texel) { return RealFixed{(texel << 16) / kPage}; };
    font->AddGlyph('a', {kGlyph, kGlyph, 0, place(kLeft), place(kBottom), place(kLeft + kGlyph),
                         place(kBottom + kGlyph), RealFixed{}, RealFixed{}, Real(kGlyph)});
    ASSERT_TRUE(font->Initialize());
    const RefT<TextGL> text(new TextGL);
    text->font.Set(RefT<Font>(font.Get()));
    text->string.Set(L"a");
    text->position.Set({Real(kX), Real(kY), {}});
    constexpr int kColor[] = {255, 180, 60};
    text->color.Set({Byte(kColor[0]), Byte(kColor[1]), Byte(kColor[2]), Real(1)});
    for (const int background : {10, 128, 255}) {
        for (const int opacity : {255, 128}) {
            SCOPED_TRACE(testing::Message() << background << " with opacity " << opacity);
            text->opacity.Set(Byte(opacity));
            ClearTo(background, background, background);
            Draw(*text);
            for (int i = 0; i < 64 * 64; ++i) {
                const int x = i % 64 - kX, y = i / 64 - kY;
                const bool inside = x >= 0 && x < kGlyph && y >= 0 && y < kGlyph;
                const int coverage = inside ? (kGlyph - 1 - y) * kGlyph + x : 0;
                for (size_t c = 0; c < 3; ++c) {
                    const int product = coverage * kColor[c];
                    const double put = product / 255.0, kept = background * (1 - put / 255);
                    const double sum = std::min(kept + put * opacity / 255, 255.0);
                    const double expected = product % 255 == 0 ? sum : std::round(sum);
                    ASSERT_NEAR(surface->At(i % 64, i / 64)[c], expected, inside ? 1.001 : 0)
                        << x << ' ' << y << ' ' << coverage << " channel " << c;
                }
            }
        }
    }
}

}  // namespace
}  // namespace zorvan
