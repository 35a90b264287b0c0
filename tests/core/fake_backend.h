// A back end that draws nothing and keeps a log instead.
#pragma once

#include <string>
#include <vector>

#include "core/class_registry.h"
#include "core/graphics_device.h"
#include "core/json_reader.h"
#include "core/scene.h"
#include "core/sprite.h"
#include "core/text.h"
#include "core/timeline.h"
#include "core/visitor.h"

namespace zorvan::test {

class FakeDevice final : public GraphicsDevice {
  public:
    Vector2T<DoubleRealFixed> ProjectCoordinate(Matrix4T<RealFixed> const& world,
                                                Vector4T<RealFixed> const& point) override {
        // The window is the plane z = 0.
        return {DoubleRealFixed::FromReal(world[0] * point.x + world[4] * point.y + world[12]),
                DoubleRealFixed::FromReal(world[1] * point.x + world[5] * point.y + world[13])};
    }
    void Present() override {}
    uint32_t ReadPixels(RectangleT<int> const&, Texture**) override { return 0; }
    void PushMasks(List<Mask*>&) override {}
    void PopMasks(List<Mask*>&) override {}
    void PushCamera(Camera*) override { log += "camera; "; }
    void PushCamera2D(RealFixed const&, RealFixed const&) override {}
    void PopCamera() override { log += "pop camera; "; }
    void PushCameraDepth(bool depth) override { log += depth ? "depth 1; " : "depth 0; "; }
    void PopCameraDepth(bool) override { log += "pop depth; "; }
    void SetCameraDepth(bool depth) override { log += depth ? "set 1; " : "set 0; "; }

    std::string log;
};

// A concrete class on top of an abstract one of the core.
template <typename Base, int kClass>
class Fake : public Base {
  public:
    static constexpr char const* kNames[] = {"CameraGL", "SpriteGL", "TextGL", "TimelineGL"};

    Node* Clone() override { return new Fake(*this); }
    char const* GetClassName() override { return kNames[kClass]; }
    ClassId GetClassId() override { return 0; }
    void Visit(Visitor& visitor) override { visitor.VisitTransformNode(*this); }
    Node* CloneDeep() override { return CloneChildren(*this, Clone()); }

    int transforms = 0;          // of the world matrix
    std::vector<uint32_t> keys;  // the device's effect keys during the last update

  protected:
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override {
        Base::PushEffect(device);
        keys.assign(device.effectKeys.begin(), device.effectKeys.end());
        Base::InternalUpdate(device, time, delta, force);
        Base::PopEffect(device);
    }
    void InternalRender(GraphicsDevice& device) override {
        static_cast<FakeDevice&>(device).log += "draw " + Base::name + "; ";
        Base::InternalRender(device);
    }
    void CalculateTransform() override {
        ++transforms;
        Base::CalculateTransform();
    }
};

using FakeCamera = Fake<Camera, 0>;
using FakeText = Fake<Text, 2>;
using FakeTimeline = Fake<Timeline, 3>;

class FakeSprite final : public Fake<Sprite, 1> {
  public:
    Node* Clone() override { return new FakeSprite(*this); }
    void SetTexture(Texture* texture) override {
        ++textureChanges;
        Sprite::SetTexture(texture);
    }
    int textureChanges = 0;
};

class FakeTexture final : public Texture {
  public:
    bool Compress() override {
        if (format.Get() != TextureFormat::Rgba8888) {
            return false;
        }
        format.Set(TextureFormat::AtcRgbaExplicitAlpha);
        return SizePixelStore(levels[0].size) && levels.Append({4, 4, 0, 16});
    }
};

// Keeps what was to be drawn.
class FakeFont final : public Font {
  public:
    struct Draw {
        Glyph const* glyph;
        Vector2T<RealFixed> position;
        ColorT<RealFixed> color;
    };

    void RenderGlyph(GraphicsDevice&, Glyph const* glyph, Vector2T<RealFixed> const& position,
                     ColorT<RealFixed> const& color) override {
        draws.push_back({glyph, position, color});
    }

    std::vector<Draw> draws;
};

template <typename T>
class Container final : public ClassContainer {
  public:
    using ClassContainer::ClassContainer;
    void* Create() override { return new T; }
};

struct FakeBackend {
    FakeBackend() {
        registry.RegisterClass(new Container<FakeCamera>(MakeClassId(u"Camera")));
        registry.RegisterClass(new Container<FakeSprite>(MakeClassId(u"Sprite")));
        registry.RegisterClass(new Container<FakeText>(MakeClassId(u"Text")));
        registry.RegisterClass(new Container<FakeTimeline>(MakeClassId(u"Timeline")));
        registry.RegisterClass(new Container<FakeTexture>(MakeClassId(u"Texture")));
        registry.RegisterClass(new Container<FakeFont>(MakeClassId(u"Font")));
        registry.RegisterClass(new Container<Shader>(MakeClassId(u"Shader")));
    }
    ~FakeBackend() { Shader::ReleaseAll(); }

    ClassRegistry registry;
};

inline RefT<FakeSprite> Named(char const* name, std::initializer_list<Node*> children = {}) {
    RefT<FakeSprite> node(new FakeSprite);
    node->name = name;
    for (Node* child : children) {
        node->Attach(child);
    }
    return node;
}

// The node of a name in a tree, cameras of timelines left out; null when there is none.
template <typename T = FakeSprite>
T* Find(Node& root, std::string const& name) {
    T* found = root.name == name ? static_cast<T*>(&root) : nullptr;
    for (uint32_t i = 0; found == nullptr && i < root.GetChildren().Count(); ++i) {
        found = Find<T>(*root.GetChildren()[i], name);
    }
    return found;
}

constexpr RealFixed Fix(double value) {
    return RealFixed::FromRaw(static_cast<int32_t>(value * 65536.0));
}

}  // namespace zorvan::test
