// Every transfer mode against its blend formula, on every kind of surface.
#include <algorithm>
#include <map>

#include "tests/pixels/fixture.h"

namespace zorvan {
namespace {

using Channels = std::array<double, 4>;

enum class Snippet { None, Premultiply, SquareAlpha };
enum class Shading { Tinted, AlphaTinted, Plain };

struct Mode {
    GLenum source = GL_SRC_ALPHA;
    GLenum destination = GL_ONE_MINUS_SRC_ALPHA;
    Snippet snippet = Snippet::None;
    Shading shading = Shading::Tinted;
};

Mode ModeOf(uint32_t number) {
    static const std::map<uint32_t, Mode> modes = {
        {4, {GL_SRC_ALPHA, GL_ONE}},
        {5, {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, Snippet::Premultiply, Shading::AlphaTinted}},
        {6, {GL_ONE_MINUS_DST_COLOR, GL_ONE, Snippet::Premultiply, Shading::AlphaTinted}},
        {23, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA, Snippet::None, Shading::Plain}},
        {25, {GL_ONE_MINUS_DST_COLOR, GL_ONE_MINUS_SRC_COLOR, Snippet::Premultiply, Shading::AlphaTinted}},
        {27, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA}},
        {29, {GL_SRC_ALPHA, GL_ONE, Snippet::SquareAlpha, Shading::AlphaTinted}},
    };
    const auto found = modes.find(number);
    return found == modes.end() ? Mode{} : found->second;
}

double Weight(GLenum factor, Channels const& source, Channels const& destination, size_t channel) {
    const double weight = factor == GL_SRC_ALPHA || factor == GL_ONE_MINUS_SRC_ALPHA ? source[3]
                          : factor == GL_ONE_MINUS_SRC_COLOR                         ? source[channel]
                          : factor == GL_ONE                                         ? 1
                                                                                     : destination[channel];
    return factor == GL_SRC_ALPHA || factor == GL_DST_COLOR || factor == GL_ONE ? weight : 1 - weight;
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
    // Draws the sprite inside groups of a chain's outer modes, for what comes out of its program.
    template <typename Shade>
    void ExpectBlends(SpriteGL& sprite, Shade shade) {
        if (!Open(GetParam(), 64)) {
            GTEST_SKIP() << "the driver has no surface of these channel sizes";
        }
        for (std::vector<uint32_t> const& chain : Chains()) {
            SCOPED_TRACE(testing::PrintToString(chain));
            RefT<Node> top(&sprite);
            sprite.transferMode.Set(chain.empty() ? kNoTransferMode : chain.back());
            for (size_t i = chain.size(); i-- > 1;) {
                RefT<TransformNode> group(new TransformNode);
                group->transferMode.Set(chain[i - 1]);
                group->Attach(top.Get());
                top = RefT<Node>(group.Get());
            }
            ClearTo({Byte(51), Byte(153), Byte(204), Byte(102)});
            surface->Read();
            const Channels destination = Shown();
            Draw(*top);
            const Mode mode = chain.empty() ? Mode{} : ModeOf(chain.back());
            const Channels source = shade(mode, chain);
            for (size_t i = 0; i < 4; ++i) {
                const double expected =
                    std::min(1.0, source[i] * Weight(mode.source, source, destination, i) +
                                      destination[i] * Weight(mode.destination, source, destination, i));
                // Half a step for the driver's rounding, half for ours, and what dithering adds on coarse
                // surfaces.
                const int bits = GetParam()[i];
                if (bits > 0) {
                    EXPECT_NEAR(Shown()[i], expected, bits < 8 ? 1.1 / ((1 << bits) - 1) : 1.001 / 255)
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
        return AfterSnippets({200 / 255.0, 100 / 255.0, 50 / 255.0, 128 / 255.0}, chain);
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

}  // namespace
}  // namespace zorvan
