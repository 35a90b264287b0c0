#include "core/text.h"

namespace zorvan {

Text::Text(Text const& other)
    : TransformNode(other),
      font(OwnProperties(), other.font.Get()),
      string(OwnProperties(), other.string.Get()),
      color(OwnProperties(), other.color.Get()),
      hasBox(OwnProperties(), other.hasBox.Get()),
      box(OwnProperties(), other.box.Get()),
      alignment(OwnProperties(), other.alignment.Get()),
      letterSpacing(OwnProperties(), other.letterSpacing.Get()),
      lineSpacing(OwnProperties(), other.lineSpacing.Get()) {}

bool Text::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Text") || TransformNode::IsKindOf(id);
}

bool Text::Load(Deserializer& reader) {
    return TransformNode::Load(reader);
}

void Text::RegisterProperties() {
    TransformNode::RegisterProperties();
    PropertyList& list = OwnProperties();
    list.Add("font", font);
    list.Add("string", string);
    list.Add("color", color);
    list.Add("hasBox", hasBox);
    list.Add("box", box);
    list.Add("alignment", alignment);
    list.Add("letterSpacing", letterSpacing);
    list.Add("lineSpacing", lineSpacing);
}

}  // namespace zorvan
