#include "core/sprite.h"

#include <algorithm>

#include "core/graphics_device.h"

namespace zorvan {
namespace {

constexpr PropertyRange kSide = {0, 32767, "pixels"};  // what 16.16 holds

using Point = Vector2T<DoubleRealFixed>;

// In 1/256 pixels, limited so that products of differences fit into 64 bits.
int64_t Coordinate(DoubleRealFixed value) {
    constexpr int64_t kFarthest = int64_t{1} << 29;
    return std::clamp(value.raw >> 24, -kFarthest, kFarthest);
}

// Twice the signed area of the triangle a, b, p.
int64_t Side(Point const& a, Point const& b, Point const& p) {
    const int64_t ax = Coordinate(a.x);
    const int64_t ay = Coordinate(a.y);
    return (Coordinate(b.x) - ax) * (Coordinate(p.y) - ay) - (Coordinate(b.y) - ay) * (Coordinate(p.x) - ax);
}

}  // namespace

Sprite::Sprite(Sprite const& other)
    : TransformNode(other),
      width(OwnProperties(), other.width.Get()),
      height(OwnProperties(), other.height.Get()),
      color(OwnProperties(), other.color.Get()),
      texture_(other.texture_) {}

uint32_t Sprite::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Sprite") || TransformNode::IsKindOf(id);
}

// The properties are all there is to load; back ends call this one by its name.
bool Sprite::Load(Deserializer& reader) {
    return TransformNode::Load(reader);
}

void Sprite::RegisterProperties() {
    TransformNode::RegisterProperties();
    PropertyList& list = OwnProperties();
    list.Add("width", width, &kSide);
    list.Add("height", height, &kSide);
    list.Add("color", color);
    list.Add("texture", textureProperty_);
}

bool Sprite::IsSelect(GraphicsDevice& device) {
    const RealFixed zero{};
    const RealFixed right = RealFixed::FromInt(width.Get());
    const RealFixed bottom = RealFixed::FromInt(height.Get());
    const Vector4T<RealFixed> corners[4] = {{zero, zero, zero, kOne<RealFixed>},
                                            {right, zero, zero, kOne<RealFixed>},
                                            {right, bottom, zero, kOne<RealFixed>},
                                            {zero, bottom, zero, kOne<RealFixed>}};
    device.SetCameraDepth(depth.Get());  // the camera that draws this sprite
    Point projected[4];
    for (int i = 0; i < 4; ++i) {
        projected[i] = device.ProjectCoordinate(GetWorldMatrix(), corners[i]);
    }
    const Vector2T<RealFixed> asked = device.GetSelectionPoint();
    const Point point{DoubleRealFixed::FromReal(asked.x), DoubleRealFixed::FromReal(asked.y)};
    int inside = 0;
    for (int i = 0; i < 4; ++i) {
        inside += Side(projected[i], projected[(i + 1) % 4], point) >= 0 ? 1 : -1;
    }
    return inside == 4 || inside == -4;
}

Texture* Sprite::GetTexture() {
    return texture_.Get();
}

void Sprite::SetTexture(Texture* texture) {
    texture_ = RefT<Texture>(texture);
}

bool Sprite::TextureProperty::Load(Deserializer& reader, char const* key, PropertyRange const*) {
    RefT<Texture> texture;
    if (reader.Read(key, texture)) {
        sprite_.texture_ = texture;
    }
    return !reader.Failed();
}

void Sprite::TextureProperty::Save(Serializer& writer, char const* key) const {
    writer.Write(key, sprite_.texture_);
}

bool Sprite::TextureProperty::LoadKey(Deserializer& reader, char const* key, PropertyRange const*,
                                      KeyValue& value) const {
    if (!reader.Read(key, value.texture)) {
        reader.Fail(key, "got a key without \"value\", expected the name of a texture or null");
        return false;
    }
    return true;
}

void Sprite::TextureProperty::SaveKey(Serializer& writer, char const* key, KeyValue const& value) const {
    writer.Write(key, value.texture);
}

void Sprite::TextureProperty::Apply(KeyValue const& value) {
    if (value.texture.Get() != sprite_.GetTexture()) {
        sprite_.SetTexture(value.texture.Get());
    }
}

}  // namespace zorvan
