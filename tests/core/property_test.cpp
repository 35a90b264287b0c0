#include <gtest/gtest.h>

#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

struct Listener {
    void Hear(RealFixed const& value) { heard.push_back(value.raw); }
    std::vector<int32_t> heard;
};

using Binding = detail::member_function<detail::callable<void(RealFixed const&)>, Listener*,
                                        void (Listener::*)(RealFixed const&)>;

TEST(Property, NotifiesForEqualValuesToo) {
    Listener listener;
    RefT<TransformNode> node(new TransformNode);
    ASSERT_TRUE(node->opacity.changed.Add(new Binding(&listener, &Listener::Hear)));
    node->opacity.Set(Fix(0.5));
    node->opacity.Set(Fix(0.5));
    // A copy has the value, but not the listener.
    RefT<Node> copy(node->Clone());
    static_cast<TransformNode*>(copy.Get())->opacity.Set(RealFixed{});
    EXPECT_EQ(listener.heard, (std::vector<int32_t>{0x8000, 0x8000}));
    EXPECT_EQ(node->opacity.Get(), Fix(0.5));
}

class CountingNode final : public TransformNode {
  public:
    int registrations = 0;

  protected:
    void RegisterProperties() override {
        ++registrations;
        TransformNode::RegisterProperties();
    }
};

TEST(Property, IsRegisteredOnceBeforeItsFirstUse) {
    FakeDevice device;
    const auto uses = {+[](CountingNode& node, FakeDevice&) { node.opacity.Set(RealFixed{}); },
                       +[](CountingNode& node, FakeDevice&) { node.GetProperties().Find("opacity"); },
                       +[](CountingNode& node, FakeDevice& d) { node.Update(d, RealFixed{}); }};
    for (auto use : uses) {
        RefT<CountingNode> node(new CountingNode);
        use(*node, device);
        use(*node, device);
        EXPECT_EQ(node->registrations, 1);
    }
}

TEST(Texture, RewritesItsLevelsWithTheFormat) {
    RefT<FakeTexture> texture(new FakeTexture);
    texture->width.Set(6);
    texture->height.Set(5);
    ASSERT_TRUE(texture->SizePixelStore(6 * 5 * 4 + 4));
    texture->levels.Append({6, 5, 0, 120});
    texture->levels.Append({1, 1, 120, 4});
    constexpr uint32_t kBlocks[][2] = {{TextureFormat::AtcRgb, 32},
                                       {TextureFormat::AtcRgbaExplicitAlpha, 64}};
    for (auto const& [format, size] : kBlocks) {
        texture->format.Set(format);
        ASSERT_EQ(texture->levels.Count(), 1u);
        EXPECT_EQ(texture->levels[0], (TextureLevel{6, 5, 0, size}));
        EXPECT_EQ(texture->GetBytesPerPixel(), 1u);
    }
    texture->format.Set(TextureFormat::Rgba8888);
    ASSERT_EQ(texture->levels.Count(), 2u);
    EXPECT_EQ(texture->levels[1], (TextureLevel{1, 1, 120, 4}));
    ASSERT_TRUE(texture->SizePixelStore(16));
    EXPECT_TRUE(texture->levels.IsEmpty());
}

TEST(Shader, RegistryHoldsTheLatestOfANumber) {
    RefT<Shader> shaders[] = {RefT<Shader>(new Shader), RefT<Shader>(new Shader)};
    for (RefT<Shader> const& shader : shaders) {
        shader->identifier.Set(77);
        Shader::Add(shader.Get());
        EXPECT_EQ(shader->references, 2);
        EXPECT_EQ(Shader::Find(77), shader.Get());
    }
    EXPECT_EQ(shaders[0]->references, 1);
    Shader::ReleaseAll();
    EXPECT_EQ(Shader::Find(77), nullptr);
    EXPECT_EQ(shaders[1]->references, 1);
}

}  // namespace
}  // namespace zorvan::test
