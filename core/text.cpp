#include "core/text.h"

namespace zorvan {
namespace {

constexpr PropertyRange kSpacing = {-32767, 32767, "pixels"};  // what 16.16 holds
constexpr PropertyRange kBoxSide = {0, PropertyRange::kNoBound, "pixels"};

}  // namespace

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

uint32_t Text::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Text") || TransformNode::IsKindOf(id);
}

bool Text::Load(Deserializer& reader) {
    if (!TransformNode::Load(reader)) {
        return false;
    }
    if (!reader.Has("font")) {
        reader.Fail(nullptr, "got a text without \"font\", expected the name of a font");
        return false;
    }
    // The string, in the property and in the font's memory of layouts, and the place of each glyph.
    const uint64_t characterBytes = 2 * sizeof(wchar_t) + sizeof(PlacedGlyph);
    if (!reader.TakeMemory("string", string.Get().Length() * characterBytes, "a string")) {
        return false;
    }
    std::string error;
    if (font.Get() && !font.Get()->AddCharacters(string.Get().View(), error)) {
        reader.Fail("string", error);
        return false;
    }
    return true;
}

void Text::RegisterProperties() {
    TransformNode::RegisterProperties();
    PropertyList& list = OwnProperties();
    list.Add("font", font);
    list.Add("string", string);
    list.Add("color", color);
    list.Add("box", boxProperty_, &kBoxSide);
    list.Add("alignment", alignmentProperty_);
    list.Add("letterSpacing", letterSpacing, &kSpacing);
    list.Add("lineSpacing", lineSpacing, &kSpacing);
}

bool Text::BoxProperty::Load(Deserializer& reader, char const* key, PropertyRange const* range) {
    if (!reader.Has(key)) {
        return true;
    }
    if (!text_.box.Load(reader, key, range)) {
        return false;
    }
    text_.hasBox.Set(true);
    return true;
}

void Text::BoxProperty::Save(Serializer& writer, char const* key) const {
    if (text_.hasBox.Get()) {
        text_.box.Save(writer, key);
    }
}

bool Text::BoxProperty::LoadKey(Deserializer& reader, char const* key, PropertyRange const* range,
                                KeyValue& value) const {
    return text_.box.LoadKey(reader, key, range, value);
}

void Text::BoxProperty::SaveKey(Serializer& writer, char const* key, KeyValue const& value) const {
    text_.box.SaveKey(writer, key, value);
}

void Text::BoxProperty::Apply(KeyValue const& value) {
    text_.box.Apply(value);
    text_.hasBox.Set(true);
}

bool Text::AlignmentProperty::Load(Deserializer& reader, char const* key, PropertyRange const*) {
    std::string words;
    if (!reader.Read(key, words)) {
        return !reader.Failed();
    }
    const std::optional<int32_t> value = ParseTextAlignment(words);
    if (!value) {
        reader.Fail(key, "got \"" + words +
                             "\", expected left, center or right, and top, middle or bottom, such as "
                             "\"center middle\"");
        return false;
    }
    text_.alignment.Set(*value);
    return true;
}

void Text::AlignmentProperty::Save(Serializer& writer, char const* key) const {
    writer.Write(key, TextAlignmentWords(text_.alignment.Get()));
}

}  // namespace zorvan
