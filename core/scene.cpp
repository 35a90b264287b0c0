#include "core/scene.h"

#include <new>
#include <unordered_set>

#include "core/class_registry.h"
#include "core/file_bytes.h"
#include "core/json_reader.h"
#include "core/json_writer.h"
#include "core/out_of_memory.h"

namespace zorvan {
namespace {

constexpr int32_t kVersion = 1;
constexpr int32_t kLargestSurface = 16384;

bool IsWholeSide(RealFixed side) {
    return side.raw >= 0x10000 && (side.raw & 0xFFFF) == 0 && side <= RealFixed::FromInt(kLargestSurface);
}

template <typename T>
RefT<T> Create(JsonReader& reader, ClassId id, char const* className) {
    RefT<T> object(static_cast<T*>(reader.Registry().Create(id)));
    if (!object) {
        reader.Fail(nullptr, std::string("got a ") + className + ", for which no back end is loaded");
    }
    return object;
}

// Adds a resource's name to those of its kind.
bool TakeName(JsonReader& reader, std::string const& name, std::unordered_set<std::string>& names,
              char const* kind) {
    if (name.empty() || !names.insert(name).second) {
        reader.Fail("name", "got " + (name.empty() ? "no name" : "\"" + name + "\" again") +
                                ", expected a name that no other " + kind + " has");
        return false;
    }
    return true;
}

template <typename T>
void WriteEach(JsonWriter& writer, char const* key, std::vector<RefT<T>> const& objects) {
    if (objects.empty()) {
        return;
    }
    writer.BeginArray(key);
    for (RefT<T> const& object : objects) {
        writer.BeginObject(nullptr);
        object->Save(writer);
        writer.EndObject();
    }
    writer.EndArray();
}

}  // namespace

bool Scene::Load(std::string const& path, ClassRegistry& registry) try {
    OutOfMemory::Take();
    JsonReader reader(registry, memoryLimit_.value_or(MemoryBudget::DefaultLimit()));
    reader.Open(path);
    return Read(reader, path);
} catch (std::bad_alloc const&) {
    return FailWithoutMemory(path);
}

bool Scene::Parse(std::string_view text, ClassRegistry& registry, std::string const& source) try {
    OutOfMemory::Take();
    JsonReader reader(registry, memoryLimit_.value_or(MemoryBudget::DefaultLimit()));
    reader.Parse(text, source);
    return Read(reader, source);
} catch (std::bad_alloc const&) {
    return FailWithoutMemory(source);
}

bool Scene::FailWithoutMemory(std::string const& source) {
    error_ = source + ": out of memory";
    isFileError_ = false;
    isMemoryError_ = true;
    return false;
}

bool Scene::Read(JsonReader& reader, std::string const& source) {
    Scene loaded;
    const bool read = !reader.Failed() && loaded.ReadAll(reader);
    if (OutOfMemory::Take()) {
        return FailWithoutMemory(source);  // whatever else it led to
    }
    if (!read) {
        error_ = reader.Error();
        isFileError_ = reader.IsFileError();
        isMemoryError_ = reader.IsMemoryError();
        return false;
    }
    for (RefT<Shader> const& shader : loaded.shaders) {
        Shader::Add(shader.Get());
    }
    loaded.memoryLimit_ = memoryLimit_;
    *this = std::move(loaded);
    return true;
}

bool Scene::ReadAll(JsonReader& reader) {
    return ReadHeader(reader) && ReadTextures(reader) && ReadFonts(reader) && ReadShaders(reader) &&
           ReadRoot(reader) && InitializeFonts(reader) && reader.Finish();
}

bool Scene::ReadHeader(JsonReader& reader) {
    int32_t version = 0;
    if (!reader.Read("version", version) || version != kVersion) {
        reader.Fail("version", "got a scene of another or no version, expected \"version\": 1");
        return false;
    }
    RealFixed sides[2];
    if (reader.Read("size", sides, 2)) {
        if (!IsWholeSide(sides[0]) || !IsWholeSide(sides[1])) {
            reader.Fail("size", "got a size out of range, expected whole numbers from 1 to 16384");
            return false;
        }
        size = {sides[0].raw >> 16, sides[1].raw >> 16};
    }
    RealFixed color[4];
    if (reader.Read("background", color, 4)) {
        background = {color[0], color[1], color[2], color[3]};
    }
    if (reader.Read("camera2d", sides, 2)) {
        if (sides[0] <= kOne<RealFixed> || sides[1] <= kOne<RealFixed>) {
            reader.Fail("camera2d", "got a size of 1 or less, expected more on both sides");
            return false;
        }
        camera2d = SizeT<RealFixed>{sides[0], sides[1]};
    }
    return !reader.Failed();
}

bool Scene::ReadTextures(JsonReader& reader) {
    std::unordered_set<std::string> names;
    return ForEachElement(reader, "textures", [&](uint32_t) {
        RefT<Texture> texture = Create<Texture>(reader, MakeClassId(u"Texture"), "texture");
        if (!texture || !texture->Load(reader)) {
            return;
        }
        if (!TakeName(reader, texture->name, names, "texture")) {
            return;
        }
        reader.AddTexture(texture.Get());
        textures.push_back(std::move(texture));
    });
}

bool Scene::ReadFonts(JsonReader& reader) {
    std::unordered_set<std::string> names;
    return ForEachElement(reader, "fonts", [&](uint32_t) {
        RefT<Font> font = Create<Font>(reader, MakeClassId(u"Font"), "font");
        if (!font || !font->Load(reader) || !TakeName(reader, font->name, names, "font")) {
            return;
        }
        reader.AddFont(font.Get());
        fonts.push_back(std::move(font));
    });
}

// The texts have asked for their characters by now.
bool Scene::InitializeFonts(JsonReader& reader) {
    for (RefT<Font> const& font : fonts) {
        if (!font->Initialize()) {
            const std::string what = "the glyph pages of the font \"" + font->name + "\"";
            MemoryBudget& budget = reader.Budget();
            const bool refused = budget.IsExhausted();
            budget.MarkExhausted();
            reader.Fail(nullptr, refused ? budget.Refusal(what) : "out of memory for " + what);
            return false;
        }
    }
    return true;
}

bool Scene::ReadShaders(JsonReader& reader) {
    return ForEachElement(reader, "shaders", [&](uint32_t) {
        RefT<Shader> shader = Create<Shader>(reader, MakeClassId(u"Shader"), "shader");
        if (!shader || !shader->Load(reader)) {
            reader.Fail(nullptr, "got a shader that the back end refused, expected one of its own");
            return;
        }
        if (shader->binary.Get().empty()) {
            reader.Fail("binary", "got no program, expected its bytes in base64");
            return;
        }
        shaders.push_back(std::move(shader));
    });
}

bool Scene::ReadRoot(JsonReader& reader) {
    if (!reader.Enter("root")) {
        reader.Fail(nullptr, "got a scene without \"root\", expected its timeline");
        return false;
    }
    const RefT<Node> node(LoadNode(reader, "Timeline"));
    if (node && !node->IsKindOf(MakeClassId(u"Timeline"))) {
        reader.Fail("class", "got another class, expected Timeline");
    }
    reader.Leave();
    root = RefT<Timeline>(reader.Failed() ? nullptr : static_cast<Timeline*>(node.Get()));
    return !reader.Failed();
}

void Scene::WriteHeader(JsonWriter& writer) const {
    writer.Write("version", kVersion);
    if (size.width > 0 && size.height > 0) {
        const RealFixed sides[2] = {RealFixed::FromInt(size.width), RealFixed::FromInt(size.height)};
        writer.Write("size", sides, 2);
    }
    const RealFixed color[4] = {background.red, background.green, background.blue, background.alpha};
    writer.Write("background", color, 4);
    if (camera2d) {
        const RealFixed sides[2] = {camera2d->width, camera2d->height};
        writer.Write("camera2d", sides, 2);
    }
}

bool Scene::Save(std::string& text) {
    for (RefT<Texture> const& texture : textures) {
        if (!texture->CanSave()) {
            error_ = "the texture \"" + texture->name + "\" has no file and its pixels went to the device";
            isFileError_ = isMemoryError_ = false;
            return false;
        }
    }
    JsonWriter writer;
    WriteHeader(writer);
    WriteEach(writer, "textures", textures);
    WriteEach(writer, "fonts", fonts);
    WriteEach(writer, "shaders", shaders);
    if (root) {
        writer.BeginObject("root");
        root->Save(writer);
        writer.EndObject();
    }
    text = writer.Text();
    return true;
}

bool Scene::SaveFile(std::string const& path) {
    std::string text;
    if (!Save(text)) {
        return false;
    }
    const std::string error = WriteFileBytes(path, text);
    if (!error.empty()) {
        error_ = path + ": " + error;
        isFileError_ = true;
        isMemoryError_ = false;
    }
    return error.empty();
}

}  // namespace zorvan
