// Scene data in JSON.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "core/font.h"
#include "core/serializer.h"
#include "core/texture.h"

namespace zorvan {

namespace json {
struct Document;
struct Value;
}  // namespace json

// Reads one JSON text, from a file or from memory. The first error is kept as one line, "SOURCE:LINE:
// COLUMN: /path/of/the/value: got this, expected that"; after it every read returns false. Numbers
// become the nearest 16.16 value. Whole numbers without sign read "none" as 0xFFFFFFFF. Keys passed in
// must live until their object is left.
class ZORVAN_CORE_API JsonReader final : public Deserializer {
  public:
    // Nodes are made by the registry, which must outlive the reader. The limit holds for what loading takes
    // of main memory, and once more for the textures that nodes and fonts hand to the device.
    explicit JsonReader(ClassRegistry& registry, uint64_t memoryLimit = MemoryBudget::DefaultLimit());
    ~JsonReader() override;

    // Both make the text's root object the current one. Paths in the data are relative to the file's
    // folder, or to the working directory. Source names the text in errors.
    bool Open(std::string const& path);
    bool Parse(std::string_view text, std::string const& source = "<memory>");
    // Leaves the root object; true when nothing failed.
    bool Finish();
    std::string const& Error() const { return error_; }
    // Whether the error is about reaching the file, not about what it holds.
    bool IsFileError() const { return isFileError_; }
    // Whether it is about something that does not fit into memory.
    bool IsMemoryError() const { return isMemoryError_; }

    // Resources that the data may name.
    void AddTexture(Texture* texture) { textures_[texture->name] = texture; }
    void AddFont(Font* font) { fonts_[font->name] = font; }

    bool Has(char const* key) override;
    bool Read(char const* key, bool& value) override;
    bool Read(char const* key, int32_t& value) override;
    bool Read(char const* key, uint32_t& value) override;
    bool Read(char const* key, RealFixed& value) override;
    bool Read(char const* key, RealFixed* values, uint32_t count) override;
    bool Read(char const* key, std::string& value) override;
    bool Read(char const* key, MStringT<wchar_t>& value) override;
    bool Read(char const* key, std::vector<uint8_t>& blob) override;
    bool Read(char const* key, RefT<Texture>& texture) override;
    bool Read(char const* key, RefT<Font>& font) override;

    bool Enter(char const* key) override;
    bool Enter(uint32_t index) override;
    void Leave() override;
    uint32_t Count() override;

    void Fail(char const* key, std::string const& message) override;
    bool Failed() const override { return !error_.empty(); }

    std::string ResolvePath(std::string const& path) const override;
    ClassRegistry& Registry() override { return registry_; }

  private:
    // The current object or array, and those around it.
    struct Level {
        uint32_t value;
        uint32_t element = 0;  // of an array: the one that cursor stands at
        uint32_t cursor = 0;
        size_t keysBegin = 0;  // of the keys asked for here, in keys_
    };

    // Counts the text, what its strings are stored as and what is decoded from them.
    bool TakeText(uint64_t bytes, std::string const& source);
    bool ParseText(std::string const& source);
    json::Value* Find(char const* key);
    json::Value const* FindTyped(char const* key, bool (*fits)(json::Value const&), char const* expected);
    bool ReadReal(json::Value const& value, RealFixed& number);
    void FailAt(json::Value const& value, std::string const& message);
    void FailType(json::Value const& value, char const* expected);
    void FailUnknown(Level const& level, json::Value const& unknown);
    void Push(json::Value const& value);
    template <typename T>
    bool ReadResource(char const* key, std::unordered_map<std::string, T*> const& resources,
                      RefT<T>& resource, char const* expected);

    ClassRegistry& registry_;
    MemoryClaim textClaim_{Budget()};
    MemoryBudget shownBudget_;
    std::unordered_set<Texture const*> shown_;  // whose bytes are taken from it
    std::string source_;
    std::string folder_;
    std::string text_;
    std::unique_ptr<json::Document> document_;
    std::vector<Level> levels_;
    std::vector<char const*> keys_;
    std::unordered_map<std::string, Texture*> textures_;
    std::unordered_map<std::string, Font*> fonts_;
    std::string error_;
    bool isFileError_ = false;
    bool isMemoryError_ = false;
};

}  // namespace zorvan
