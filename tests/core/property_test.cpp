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
    EXPECT_EQ(listener.heard, (std::vector<int32_t>{0x8000, 0x8000}));
    // A copy has the value, but not the listener.
    RefT<Node> copy(node->Clone());
    static_cast<TransformNode*>(copy.Get())->opacity.Set(RealFixed{});
    EXPECT_EQ(listener.heard.size(), 2u);
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
        EXPECT_EQ(node->registrations, 0);
        use(*node, device);
        use(*node, device);
        EXPECT_EQ(node->registrations, 1);
    }
}

TEST(Property, IsFoundByName) {
    RefT<FakeCamera> camera(new FakeCamera);
    PropertyList& list = camera->GetProperties();
    EXPECT_EQ(list.Find("opacity"), &camera->opacity);
    EXPECT_EQ(list.Find("viewRectangle"), &camera->viewRectangle);
    EXPECT_EQ(list.Find("Opacity"), nullptr);
}

TEST(Texture, RewritesItsLevelsWithTheFormat) {
    RefT<FakeTexture> texture(new FakeTexture);
    texture->width.Set(6);
    texture->height.Set(5);
    ASSERT_TRUE(texture->SizePixelStore(6 * 5 * 4 + 4));
    texture->levels.Append({6, 5, 0, 120});
    texture->levels.Append({1, 1, 120, 4});
    const List<TextureLevel> plain = texture->levels;
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
    EXPECT_EQ(texture->levels[1], plain[1]);
    ASSERT_TRUE(texture->SizePixelStore(16));
    EXPECT_TRUE(texture->levels.IsEmpty());
}

TEST(Shader, RegistryHoldsItsPrograms) {
    RefT<Shader> shader(new Shader);
    shader->identifier.Set(77);
    Shader::Add(shader.Get());
    EXPECT_EQ(shader->references, 2);
    EXPECT_EQ(Shader::Find(77), shader.Get());
    RefT<Shader> other(new Shader);
    other->identifier.Set(77);
    Shader::Add(other.Get());
    EXPECT_EQ(Shader::Find(77), other.Get());
    EXPECT_EQ(shader->references, 1);
    Shader::ReleaseAll();
    EXPECT_EQ(Shader::Find(77), nullptr);
    EXPECT_EQ(other->references, 1);
}

}  // namespace
}  // namespace zorvan::test
