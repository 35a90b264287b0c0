// Fonts, textures and a device without a back end, for tests of the core's text.
#pragma once

#include <string>
#include <vector>

#include "core/class_registry.h"
#include "core/font.h"
#include "core/graphics_device.h"
#include "core/texture.h"

namespace zorvan::test {

class PlainTexture final : public Texture {
  public:
    bool Compress() override { return false; }
};

// Has nothing to draw on.
class NullDevice final : public GraphicsDevice {
  public:
    Vector2T<DoubleRealFixed> ProjectCoordinate(Matrix4T<RealFixed> const&,
                                                Vector4T<RealFixed> const&) override {
        return {};
    }
    void Present() override {}
    uint32_t ReadPixels(RectangleT<int> const&, Texture**) override { return 0; }
    void PushMasks(List<Mask*>&) override {}
    void PopMasks(List<Mask*>&) override {}
    void PushCamera(Camera*) override {}
    void PushCamera2D(RealFixed const&, RealFixed const&) override {}
    void PopCamera() override {}
    void PushCameraDepth(bool) override {}
    void PopCameraDepth(bool) override {}
    void SetCameraDepth(bool) override {}
};

// Keeps what was to be drawn.
class RecordingFont final : public Font {
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
class Maker final : public ClassContainer {
  public:
    explicit Maker(ClassId id) : ClassContainer(id) {}
    void* Create() override { return new T; }
};

// Makes plain textures.
class PlainRegistry final : public ClassRegistry {
  public:
    PlainRegistry() { RegisterClass(new Maker<PlainTexture>(MakeClassId(u"Texture"))); }
};

inline constexpr char const* kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
inline constexpr char const* kLiberation =
    "/usr/share/fonts/truetype/liberation2/LiberationSerif-Regular.ttf";

}  // namespace zorvan::test
