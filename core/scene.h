// A scene file: resources, the tree of nodes, and how the scene wants to be shown.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/font.h"
#include "core/shader.h"
#include "core/texture.h"
#include "core/timeline.h"

namespace zorvan {

class JsonReader;
class JsonWriter;

class ZORVAN_CORE_API Scene {
  public:
    // Replaces the scene by a file's or a text's. Objects come from the registry, whose back end must
    // outlive the scene. False after an error: then the scene is as it was. Paths in a text are relative
    // to the working directory; source names the text in errors.
    bool Load(std::string const& path, ClassRegistry& registry);
    bool Parse(std::string_view text, ClassRegistry& registry, std::string const& source = "<memory>");
    // One line about the last failure: where, what was got, what was expected.
    std::string const& Error() const { return error_; }
    // Whether that was about reaching a file, not about what it holds.
    bool IsFileError() const { return isFileError_; }
    // Whether that was about something that did not fit into the limit or into memory. Of the latter the
    // scene's objects may have told no more than a note (OutOfMemory, which loading clears).
    bool IsMemoryError() const { return isMemoryError_; }
    // What Load and Parse may take, in bytes: of main memory, and once more for the textures that the device
    // gets. MemoryBudget::DefaultLimit() without this.
    void SetMemoryLimit(uint64_t bytes) { memoryLimit_ = bytes; }

    // The scene as text, which Parse reads back to the same scene. Names of image files are written as
    // they were read. False when a texture without a file has given its pixels to the device.
    bool Save(std::string& text);
    // The same into a file, which is either the old or the whole new one.
    bool SaveFile(std::string const& path);

    // Surface in pixels that the scene was made for; 0 when it does not say.
    SizeT<int32_t> size;
    ColorT<RealFixed> background{RealFixed{}, RealFixed{}, RealFixed{}, kOne<RealFixed>};
    // Size of the orthographic camera in pixels, or none for the device's default camera.
    std::optional<SizeT<RealFixed>> camera2d;
    std::vector<RefT<Texture>> textures;
    // With the pages that the scene's texts need.
    std::vector<RefT<Font>> fonts;
    // Also in the registry of shaders, from which the host releases them.
    std::vector<RefT<Shader>> shaders;
    RefT<Timeline> root;

  private:
    bool Read(JsonReader& reader, std::string const& source);
    bool FailWithoutMemory(std::string const& source);
    bool ReadAll(JsonReader& reader);
    bool ReadHeader(JsonReader& reader);
    bool ReadTextures(JsonReader& reader);
    bool ReadFonts(JsonReader& reader);
    bool ReadShaders(JsonReader& reader);
    bool ReadRoot(JsonReader& reader);
    bool InitializeFonts(JsonReader& reader);
    void WriteHeader(JsonWriter& writer) const;

    std::string error_;
    bool isFileError_ = false;
    bool isMemoryError_ = false;
    std::optional<uint64_t> memoryLimit_;
};

}  // namespace zorvan
