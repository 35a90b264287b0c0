// Every transfer mode against its blend formula, on every kind of surface.
#include <GLES2/gl2.h>

#include <algorithm>
#include <cmath>

#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

using Channels = std::array<double, 4>;

enum class Factor {
    One,
    SourceAlpha,
    DestinationColor,
    OneMinusDestinationColor,
    OneMinusSourceColor,
    OneMinusSourceAlpha
};
enum class Snippet { None, Premultiply, SquareAlpha };
enum class Shading { Tinted, AlphaTinted, Plain };

struct Mode {
    Factor source = Factor::SourceAlpha;
    Factor destination = Factor::OneMinusSourceAlpha;
    Snippet snippet = Snippet::None;
    Shading shading = Shading::Tinted;
};

Mode ModeOf(uint32_t number) {
    switch (number) {
        case 4:
            return {Factor::SourceAlpha, Factor::One};
        case 5:
            return {Factor::SourceAlpha, Factor::OneMinusSourceAlpha, Snippet::Premultiply,
                    Shading::AlphaTinted};
        case 6:
            return {Factor::OneMinusDestinationColor, Factor::One, Snippet::Premultiply,
                    Shading::AlphaTinted};
        case 23:
            return {Factor::DestinationColor, Factor::OneMinusSourceAlpha, Snippet::None, Shading::Plain};
        case 25:
            return {Factor::OneMinusDestinationColor, Factor::OneMinusSourceColor, Snippet::Premultiply,
                    Shading::AlphaTinted};
        case 27:
            return {Factor::DestinationColor, Factor::OneMinusSourceAlpha};
        case 29:
            return {Factor::SourceAlpha, Factor::One, Snippet::SquareAlpha, Shading::AlphaTinted};
        default:
            return {};
    }
}

double Weight(Factor factor, Channels const& source, Channels const& destination, size_t channel) {
    switch (factor) {
        case Factor::One:
            return 1;
        case Factor::SourceAlpha:
            return source[3];
        case Factor::DestinationColor:
            return destination[channel];
        case Factor::OneMinusDestinationColor:
            return 1 - destination[channel];
        case Factor::OneMinusSourceColor:
            return 1 - source[channel];
        case Factor::OneMinusSourceAlpha:
            return 1 - source[3];
    }
    return 0;
}

Channels Blend(Mode const& mode, Channels const& source, Channels const& destination) {
    Channels result{};
    for (size_t i = 0; i < 4; ++i) {
        result[i] = std::min(1.0, source[i] * Weight(mode.source, source, destination, i) +
                                      destination[i] * Weight(mode.destination, source, destination, i));
    }
    return result;
}

Channels AfterSnippets(Channels color, std::vector<uint32_t> const& modes) {
    for (const uint32_t number : modes) {
        const Snippet snippet = ModeOf(number).snippet;
        if (snippet == Snippet::Premultiply) {
            std::for_each(color.begin(), color.begin() + 3,
                          [&color](double& channel) { channel *= color[3]; });
        } else if (snippet == Snippet::SquareAlpha) {
            color[3] *= color[3];
        }
    }
    return color;
}

// Chains of modes, outermost first; the innermost is the sprite's own.
std::vector<std::vector<uint32_t>> Chains() {
    std::vector<std::vector<uint32_t>> chains = {{}, {5, 29}, {29, 5}, {6, 4}, {25, 29, 5}, {5, 23}, {29, 0}};
    for (uint32_t mode = 0; mode < kTransferModeCount; ++mode) {
        chains.push_back({mode});
    }
    return chains;
}

class BlendTest : public PixelTest, public testing::WithParamInterface<ChannelBits> {
  protected:
    void SetUp() override {
        if (!Open(GetParam(), 64)) {
            GTEST_SKIP() << "the driver has no surface of these channel sizes";
        }
    }
    // Draws the sprite inside groups of a chain's outer modes.
    void DrawInChain(RefT<SpriteGL> const& sprite, std::vector<uint32_t> const& chain) {
        RefT<Node> top(sprite.Get());
        sprite->transferMode.Set(chain.empty() ? kNoTransferMode : chain.back());
        for (size_t i = chain.size(); i-- > 1;) {
            RefT<TransformNode> group(new TransformNode);
            group->transferMode.Set(chain[i - 1]);
            group->Attach(top.Get());
            top = RefT<Node>(group.Get());
        }
        ClearTo(kDestination);
        surface->Read();
        destination_ = surface->At(8, 8).channels;
        Draw(*top);
    }
    void ExpectBlend(Mode const& mode, Channels const& source) {
        const Channels expected = Blend(mode, source, destination_);
        const Channels drawn = surface->At(8, 8).channels;
        for (size_t i = 0; i < 4; ++i) {
            const int bits = GetParam()[i];
            // Half a step for the driver's rounding, half for ours, and what dithering adds on coarse
            // surfaces.
            const double step = 1.0 / ((1 << bits) - 1);
            if (bits > 0) {
                EXPECT_NEAR(drawn[i], expected[i], bits < 8 ? 1.1 * step : 1.001 / 255) << "channel " << i;
            }
        }
    }

    static constexpr Color kDestination{Byte(51), Byte(153), Byte(204), Byte(102)};
    Channels destination_{};
};

TEST_P(BlendTest, Solid) {
    const Channels color = {200 / 255.0, 100 / 255.0, 50 / 255.0, 128 / 255.0};
    const RefT<SpriteGL> sprite = MakeSprite(0, 0, 32, 32, {Byte(200), Byte(100), Byte(50), Byte(128)});
    for (std::vector<uint32_t> const& chain : Chains()) {
        SCOPED_TRACE(testing::PrintToString(chain));
        DrawInChain(sprite, chain);
        ExpectBlend(chain.empty() ? Mode{} : ModeOf(chain.back()), AfterSnippets(color, chain));
    }
}

TEST_P(BlendTest, Textured) {
    const RefT<SpriteGL> sprite = MakeSprite(0, 0, 32, 32, {Byte(1), Byte(2), Byte(3), Byte(4)});
    sprite->SetTexture(MakeTexture(TextureFormat::Rgba8888, 1, 1, {200, 100, 50, 180}).Get());
    sprite->opacity.Set(Byte(204));
    const double opacity = 204 / 255.0;
    for (std::vector<uint32_t> const& chain : Chains()) {
        SCOPED_TRACE(testing::PrintToString(chain));
        DrawInChain(sprite, chain);
        const Mode mode = chain.empty() ? Mode{} : ModeOf(chain.back());
        Channels source = {200 / 255.0, 100 / 255.0, 50 / 255.0, 180 / 255.0};
        for (size_t i = 0; i < 4; ++i) {
            source[i] *= mode.shading == Shading::AlphaTinted || (mode.shading == Shading::Tinted && i == 3)
                             ? opacity
                             : 1;
        }
        ExpectBlend(mode, source);
    }
}

INSTANTIATE_TEST_SUITE_P(Surfaces, BlendTest, testing::Values(kRgb565, kRgb888, kRgba8888), BitsOf);

}  // namespace
}  // namespace zorvan
