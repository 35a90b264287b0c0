// A string drawn with a font.
#pragma once

#include "core/font.h"
#include "core/transform_node.h"

namespace zorvan {

class ZORVAN_CORE_API Text : public TransformNode {
  public:
    Text() = default;
    Text(Text const& other);

    uint32_t IsKindOf(ClassId id) override;
    // Has the font rasterise what the string needs.
    bool Load(Deserializer& reader) override;

  protected:
    void RegisterProperties() override;

  public:
    PropertyT<RefT<Font>> font{OwnProperties()};
    PropertyT<MStringT<wchar_t>> string{OwnProperties()};
    PropertyT<ColorT<RealFixed>> color{OwnProperties(),
                                       {kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>}};
    // The box that the text is aligned and wrapped in, used when hasBox is true; see TextLayoutOptions.
    PropertyT<bool> hasBox{OwnProperties(), false};
    // From 0 up in scene data; a negative side does not wrap, like 0.
    PropertyT<SizeT<RealFixed>> box{OwnProperties()};
    // How the lines stand in the box, see TextAlignment.
    PropertyT<int32_t> alignment{OwnProperties()};
    // Added between letters and between lines, in pixels: -32767 to 32767 in scene data, and clamped to that
    // by the layout.
    PropertyT<int32_t> letterSpacing{OwnProperties()};
    PropertyT<int32_t> lineSpacing{OwnProperties()};

  private:
    // Stands in scene data only where the text has a box.
    class BoxProperty final : public PropertyBase {
      public:
        explicit BoxProperty(Text& text) : text_(text) {}
        bool Load(Deserializer& reader, char const* key, PropertyRange const* range) override;
        void Save(Serializer& writer, char const* key) const override;
        uint32_t KeyComponents() const override { return text_.box.KeyComponents(); }
        bool Blends() const override { return true; }
        bool LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                     KeyValue& value) const override;
        void SaveKey(Serializer& writer, char const* key, KeyValue const& value) const override;
        void Apply(KeyValue const& value) override;

      private:
        Text& text_;
    };

    // Words in scene data.
    class AlignmentProperty final : public PropertyBase {
      public:
        explicit AlignmentProperty(Text& text) : text_(text) {}
        bool Load(Deserializer& reader, char const* key, PropertyRange const* range) override;
        void Save(Serializer& writer, char const* key) const override;

      private:
        Text& text_;
    };

    BoxProperty boxProperty_{*this};
    AlignmentProperty alignmentProperty_{*this};
};

}  // namespace zorvan
