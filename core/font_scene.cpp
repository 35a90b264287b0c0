// Fonts in scene data.
#include <map>

#include "core/class_registry.h"
#include "core/font.h"
#include "core/font_file.h"

namespace zorvan {
namespace {

// One code point, or 0 for the empty string, which stands for missing characters.
bool ReadCharacter(Deserializer& reader, char const* key, uint32_t& character) {
    MStringT<wchar_t> text;
    if (!reader.Read(key, text)) {
        return false;
    }
    if (text.Length() > 1) {
        reader.Fail(key, "got \"" + ToUtf8(text) + "\", expected one character");
        return false;
    }
    character = text.Length() == 1 ? static_cast<uint32_t>(text[0]) : 0;
    return true;
}

// Between a pixel's edge and its texture coordinate.
RealFixed ToCoordinate(RealFixed edge, int32_t side) {
    return edge / RealFixed::FromInt(side);
}
RealFixed ToEdge(RealFixed coordinate, int32_t side) {
    return RealFixed::FromInt(static_cast<int32_t>((int64_t{coordinate.raw} * side + 0x8000) >> 16));
}

bool IsWhole(RealFixed value) {
    return (value.raw & 0xFFFF) == 0;
}

std::wstring ToString(uint32_t character) {
    return character == 0 ? std::wstring() : std::wstring(1, static_cast<wchar_t>(character));
}

}  // namespace

bool Font::Load(Deserializer& reader) {
    reader.Read("name", name);
    return reader.Has("pages") ? LoadTables(reader) : LoadFileEntry(reader);
}

bool Font::LoadFileEntry(Deserializer& reader) {
    if (!reader.Read("file", path_)) {
        reader.Fail(nullptr, "got a font without \"file\" and \"pages\", expected one of them");
        return false;
    }
    if (!reader.Read("size", size_)) {
        reader.Fail(nullptr, "got a font without \"size\", expected its size in pixels");
        return false;
    }
    reader.Read("characters", characters_);
    if (reader.Failed()) {
        return false;
    }
    if (size_ < 1 || size_ > FontFile::kMostPixels) {
        reader.Fail("size", "got " + std::to_string(size_) + ", expected 1 to " +
                                std::to_string(FontFile::kMostPixels) + " pixels");
        return false;
    }
    budget_ = &reader.Budget();
    std::string error;
    if (!LoadFile(reader.Registry(), reader.ResolvePath(path_), size_, error) ||
        !AddCharacters(FromUtf8(characters_).View(), error)) {
        reader.Fail("file", error);
        return false;
    }
    return true;
}

bool Font::LoadTables(Deserializer& reader) {
    for (auto [key, length] : {std::pair{"lineHeight", &lineHeight}, std::pair{"ascent", &ascent}}) {
        if (!reader.Read(key, *length)) {
            reader.Fail(nullptr, std::string("got a font without \"") + key + "\", expected it in pixels");
            return false;
        }
    }
    ForEachElement(reader, "pages", [&](uint32_t) { LoadPage(reader); });
    if (pages_.empty() || pages_.size() > INT16_MAX) {
        reader.Fail("pages", pages_.empty() ? "got no pages, expected at least one"
                                            : "got too many pages, expected at most 32767");
    }
    ForEachElement(reader, "glyphs", [&](uint32_t) { LoadGlyph(reader); });
    ForEachElement(reader, "kerning", [&](uint32_t) { LoadKerning(reader); });
    return !reader.Failed();
}

void Font::LoadPage(Deserializer& reader) {
    RefT<Texture> page;
    if (!reader.Read("texture", page) || !page) {
        reader.Fail(nullptr, "got a page without \"texture\", expected the name of a texture");
        return;
    }
    pages_.push_back(std::move(page));
}

void Font::LoadGlyph(Deserializer& reader) {
    uint32_t character = 0;
    if (!ReadCharacter(reader, "character", character)) {
        reader.Fail(nullptr, "got a glyph without \"character\", expected it");
        return;
    }
    int32_t number = 0;
    reader.Read("page", number);
    if (number < 0 || static_cast<size_t>(number) >= pages_.size()) {
        reader.Fail("page",
                    "got " + std::to_string(number) + ", expected 0 to " + std::to_string(pages_.size() - 1));
    }
    RealFixed edges[4];  // left, top, right, bottom, from the top left of the image
    if (!reader.Read("rectangle", edges, 4)) {
        reader.Fail(nullptr, "got a glyph without \"rectangle\", expected its place on the page");
        return;
    }
    Texture const& page = *pages_[static_cast<size_t>(number)];
    const RealFixed width = RealFixed::FromInt(page.usedWidth.Get());
    const RealFixed height = RealFixed::FromInt(page.usedHeight.Get());
    bool fits = edges[0].raw >= 0 && edges[1].raw >= 0 && edges[0] <= edges[2] && edges[1] <= edges[3] &&
                edges[2] <= width && edges[3] <= height;
    for (RealFixed edge : edges) {
        fits = fits && IsWhole(edge);
    }
    if (!fits) {
        reader.Fail("rectangle",
                    "got a rectangle outside the page or between pixels, expected whole left, "
                    "top, right and bottom");
        return;
    }
    Glyph glyph;
    glyph.index = character;
    glyph.page = static_cast<int16_t>(number);
    glyph.width = static_cast<uint16_t>((edges[2] - edges[0]).raw >> 16);
    glyph.height = static_cast<uint16_t>((edges[3] - edges[1]).raw >> 16);
    glyph.uLeft = ToCoordinate(edges[0], page.width.Get());
    glyph.uRight = ToCoordinate(edges[2], page.width.Get());
    glyph.vTop = ToCoordinate(height - edges[3], page.height.Get());
    glyph.vBottom = ToCoordinate(height - edges[1], page.height.Get());
    RealFixed offset[2] = {RealFixed{}, -ascent};
    reader.Read("offset", offset, 2);
    glyph.offsetX = offset[0];
    glyph.offsetY = offset[1];
    glyph.advance = edges[2] - edges[0];
    reader.Read("advance", glyph.advance);
    if (character == 0) {
        missing_ = glyph;
        hasMissing_ = true;
    } else {
        AddGlyph(character, glyph);
    }
}

void Font::LoadKerning(Deserializer& reader) {
    uint32_t left = 0, right = 0;
    RealFixed add;
    if (!ReadCharacter(reader, "left", left) || !ReadCharacter(reader, "right", right) ||
        !reader.Read("add", add)) {
        reader.Fail(nullptr, "got a pair without \"left\", \"right\" and \"add\", expected all of them");
        return;
    }
    AddKerning(left, right, add);
}

void Font::Save(Serializer& writer) const {
    if (!name.empty()) {
        writer.Write("name", name);
    }
    if (!file_) {
        SaveTables(writer);
        return;
    }
    writer.Write("file", path_);
    writer.Write("size", size_);
    if (!characters_.empty()) {
        writer.Write("characters", characters_);
    }
}

void Font::SaveTables(Serializer& writer) const {
    writer.Write("lineHeight", lineHeight);
    writer.Write("ascent", ascent);
    writer.BeginArray("pages");
    for (RefT<Texture> const& page : pages_) {
        writer.BeginObject(nullptr);
        writer.Write("texture", page);
        writer.EndObject();
    }
    writer.EndArray();
    writer.BeginArray("glyphs");
    for (auto const& [character, glyph] : std::map(glyphs_.begin(), glyphs_.end())) {
        SaveGlyph(writer, ToString(character), glyph);
    }
    if (hasMissing_) {
        SaveGlyph(writer, {}, missing_);
    }
    writer.EndArray();
    if (kerning_.empty()) {
        return;
    }
    writer.BeginArray("kerning");
    for (auto const& [pair, add] : std::map(kerning_.begin(), kerning_.end())) {
        writer.BeginObject(nullptr);
        writer.Write("left", MStringT<wchar_t>(ToString(static_cast<uint32_t>(pair >> 32))));
        writer.Write("right", MStringT<wchar_t>(ToString(static_cast<uint32_t>(pair))));
        writer.Write("add", add);
        writer.EndObject();
    }
    writer.EndArray();
}

void Font::SaveGlyph(Serializer& writer, std::wstring const& character, Glyph const& glyph) const {
    Texture const& page = *pages_[static_cast<size_t>(glyph.page)];
    const RealFixed height = RealFixed::FromInt(page.usedHeight.Get());
    const RealFixed edges[4] = {
        ToEdge(glyph.uLeft, page.width.Get()), height - ToEdge(glyph.vBottom, page.height.Get()),
        ToEdge(glyph.uRight, page.width.Get()), height - ToEdge(glyph.vTop, page.height.Get())};
    const RealFixed offset[2] = {glyph.offsetX, glyph.offsetY};
    writer.BeginObject(nullptr);
    writer.Write("character", MStringT<wchar_t>(character));
    writer.Write("page", int32_t{glyph.page});
    writer.Write("rectangle", edges, 4);
    writer.Write("offset", offset, 2);
    writer.Write("advance", glyph.advance);
    writer.EndObject();
}

}  // namespace zorvan
