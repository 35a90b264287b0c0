// A string drawn with a font.
#pragma once

#include "core/font.h"
#include "core/transform_node.h"

namespace zorvan {

class ZORVAN_CORE_API Text : public TransformNode {
  public:
    Text() = default;
    Text(Text const& other);

    bool IsKindOf(ClassId id) override;
    bool Load(Deserializer& reader) override;

  protected:
    void RegisterProperties() override;

  public:
    PropertyT<RefT<Font>> font{OwnProperties()};
    PropertyT<MStringT<wchar_t>> string{OwnProperties()};
    PropertyT<ColorT<RealFixed>> color{OwnProperties(),
                                       {kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>}};
    // The box that the text is aligned in, used when hasBox is true.
    PropertyT<bool> hasBox{OwnProperties(), false};
    PropertyT<SizeT<RealFixed>> box{OwnProperties()};
    // How the lines stand in the box; 0 is left and top.
    PropertyT<int32_t> alignment{OwnProperties()};
    // Added between letters and between lines, in pixels.
    PropertyT<int32_t> letterSpacing{OwnProperties()};
    PropertyT<int32_t> lineSpacing{OwnProperties()};
};

}  // namespace zorvan
