// Fonts in scene data.
#include "core/class_registry.h"
#include "core/font.h"
#include "core/font_file.h"

namespace zorvan {

bool Font::Load(Deserializer& reader) {
    reader.Read("name", name);
    if (!reader.Read("file", path_)) {
        reader.Fail(nullptr, "got a font without \"file\", expected the path of a font file");
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
    std::string error;
    if (!LoadFile(reader.Registry(), reader.ResolvePath(path_), size_, error) ||
        !AddCharacters(FromUtf8(characters_).View(), error)) {
        reader.Fail("file", error);
        return false;
    }
    return true;
}

void Font::Save(Serializer& writer) const {
    if (!name.empty()) {
        writer.Write("name", name);
    }
    writer.Write("file", path_);
    writer.Write("size", size_);
    if (!characters_.empty()) {
        writer.Write("characters", characters_);
    }
}

}  // namespace zorvan
