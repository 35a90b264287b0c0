// A rectangle filled with a colour or a texture.
#pragma once

#include "core/texture.h"
#include "core/transform_node.h"

namespace zorvan {

class ZORVAN_CORE_API Sprite : public TransformNode {
  public:
    Sprite() = default;
    Sprite(Sprite const& other);

    uint32_t IsKindOf(ClassId id) override;
    bool Load(Deserializer& reader) override;

  protected:
    void RegisterProperties() override;
    // Projects the corners and tests the selection point against them.
    bool IsSelect(GraphicsDevice& device) override;

  public:
    // Null for a solid sprite.
    virtual Texture* GetTexture();
    // Takes a reference.
    virtual void SetTexture(Texture* texture);

    // Pixels, 0 to 32767 in scene data. The back end makes the geometry from them when the sprite is loaded.
    PropertyT<int32_t> width{OwnProperties()};
    PropertyT<int32_t> height{OwnProperties()};
    // Fill of a solid sprite; textured ones show their texture untinted.
    PropertyT<ColorT<RealFixed>> color{OwnProperties(),
                                       {kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>}};

  protected:
    RefT<Texture> texture_;

  private:
    // Lets tracks change the texture through SetTexture.
    class TextureProperty final : public PropertyBase {
      public:
        explicit TextureProperty(Sprite& sprite) : sprite_(sprite) {}
        bool Load(Deserializer& reader, char const* key, PropertyRange const* range) override;
        void Save(Serializer& writer, char const* key) const override;
        uint32_t KeyComponents() const override { return 1; }
        bool LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                     KeyValue& value) const override;
        void SaveKey(Serializer& writer, char const* key, KeyValue const& value) const override;
        void Apply(KeyValue const& value) override;

      private:
        Sprite& sprite_;
    };

    TextureProperty textureProperty_{*this};
};

}  // namespace zorvan
