#include <gtest/gtest.h>

#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

struct Listener final : detail::callable<void(RealFixed const&)> {
    explicit Listener(std::vector<RealFixed>& values) : heard(values) {}
    void operator()(RealFixed const& value) override { heard.push_back(value); }
    std::vector<RealFixed>& heard;
};

TEST(Property, NotifiesForEqualValuesToo) {
    std::vector<RealFixed> heard;
    const RefT<TransformNode> node(new TransformNode);
    ASSERT_TRUE(node->opacity.changed.Add(new Listener(heard)));
    node->opacity.Set(Fix(0.5));
    node->opacity.Set(Fix(0.5));
    // A copy has the value, but not the listener.
    const RefT<Node> copy(node->Clone());
    auto& copied = static_cast<TransformNode&>(*copy).opacity;
    EXPECT_EQ(copied.Get(), Fix(0.5));
    copied.Set({});
    EXPECT_EQ(heard, (std::vector{Fix(0.5), Fix(0.5)}));
}

struct CountingNode final : TransformNode {
    void RegisterProperties() override {
        ++registrations;
        TransformNode::RegisterProperties();
    }
    int registrations = 0;
};

TEST(Property, IsRegisteredOnceBeforeItsFirstUse) {
    for (int use = 0; use < 3; ++use) {
        const RefT<CountingNode> node(new CountingNode);
        for (int round = 0; round < 2; ++round) {
            FakeDevice device;
            use == 0   ? node->opacity.Set({})
            : use == 1 ? node->Update(device, {})
                       : void(node->GetProperties());
            EXPECT_EQ(node->registrations, 1);
        }
        EXPECT_EQ(node->GetProperties().Find("opacity"), &node->opacity);
        EXPECT_EQ(node->GetProperties().Find("opa"), nullptr);
    }
}

TEST(Texture, RewritesItsLevelsWithTheFormat) {
    const RefT<FakeTexture> texture(new FakeTexture);
    texture->width.Set(6);
    texture->height.Set(5);
    ASSERT_TRUE(texture->SizePixelStore(6 * 5 * 4 + 4));
    constexpr TextureLevel kPlain[] = {{6, 5, 0, 120}, {1, 1, 120, 4}};
    texture->levels.Append(kPlain[0]);
    texture->levels.Append(kPlain[1]);
    for (uint32_t format : {TextureFormat::AtcRgb, TextureFormat::AtcRgbaExplicitAlpha}) {
        texture->format.Set(format);
        ASSERT_EQ(texture->levels.Count(), 1u);
        EXPECT_EQ(texture->levels[0], (TextureLevel{6, 5, 0, format == TextureFormat::AtcRgb ? 32u : 64u}));
    }
    texture->format.Set(TextureFormat::Rgba8888);
    ASSERT_EQ(texture->levels.Count(), 2u);
    EXPECT_EQ(texture->levels[1], kPlain[1]);
    ASSERT_TRUE(texture->SizePixelStore(16));
    EXPECT_TRUE(texture->levels.IsEmpty());
}

TEST(Shader, RegistryHoldsTheLatestOfANumber) {
    const RefT<Shader> shaders[] = {new Shader, new Shader};
    for (RefT<Shader> const& shader : shaders) {
        shader->identifier.Set(77);
        Shader::Add(shader.Get());
        EXPECT_EQ(Shader::Find(77), shader.Get());
    }
    EXPECT_EQ(shaders[0]->references, 1);
    Shader::ReleaseAll();
    EXPECT_EQ(Shader::Find(77), nullptr);
    EXPECT_EQ(shaders[1]->references, 1);
}

}  // namespace
}  // namespace zorvan::test
