// Abstract reader and writer of scene data: objects of named values, and arrays.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/api.h"
#include "core/fixed.h"
#include "core/memory_budget.h"
#include "core/mstring.h"
#include "core/referenced.h"

namespace zorvan {

class ClassRegistry;
class Font;
class PictureCache;
class Texture;

// Reads the members of one current object or array. A missing key leaves the value as it was and returns
// false; a value of the wrong type or range does too and records an error. Only the first error is kept.
class ZORVAN_CORE_API Deserializer {
  public:
    // What is loaded takes at most so many bytes.
    explicit Deserializer(uint64_t memoryLimit = MemoryBudget::DefaultLimit());
    Deserializer(Deserializer const&) = delete;
    Deserializer& operator=(Deserializer const&) = delete;
    virtual ~Deserializer();

    virtual bool Has(char const* key) = 0;
    virtual bool Read(char const* key, bool& value) = 0;
    virtual bool Read(char const* key, int32_t& value) = 0;
    virtual bool Read(char const* key, uint32_t& value) = 0;
    virtual bool Read(char const* key, RealFixed& value) = 0;
    // Exactly count numbers from an array.
    virtual bool Read(char const* key, RealFixed* values, uint32_t count) = 0;
    virtual bool Read(char const* key, std::string& value) = 0;
    virtual bool Read(char const* key, MStringT<wchar_t>& value) = 0;
    virtual bool Read(char const* key, std::vector<uint8_t>& blob) = 0;
    // Shared resources by their names; null in the data gives null.
    virtual bool Read(char const* key, RefT<Texture>& texture) = 0;
    virtual bool Read(char const* key, RefT<Font>& font) = 0;

    // Makes the object or array under key the current one; Leave goes back. Leaving an object whose
    // members were not all asked for is an error: unknown keys are not skipped silently.
    virtual bool Enter(char const* key) = 0;
    // The same for an element of the current array.
    virtual bool Enter(uint32_t index) = 0;
    virtual void Leave() = 0;
    // Number of elements of the current array, 0 for an object.
    virtual uint32_t Count() = 0;

    // Records an error at the member key of the current object (at the object itself for null).
    virtual void Fail(char const* key, std::string const& message) = 0;
    virtual bool Failed() const = 0;

    // Path of a file that the data names, relative to the data's own folder.
    virtual std::string ResolvePath(std::string const& path) const = 0;
    virtual ClassRegistry& Registry() = 0;

    // To be asked before memory is taken. What stays after loading is not given back.
    MemoryBudget& Budget() { return *budget_; }
    // Asks for bytes that stay: false, with an error at the member key, when they do not fit.
    bool TakeMemory(char const* key, uint64_t bytes, std::string_view what);
    // What this loading has decoded so far.
    PictureCache& Pictures() { return *pictures_; }

  private:
    RefT<MemoryBudget> budget_;
    std::unique_ptr<PictureCache> pictures_;
};

// Calls read(index) inside each element of the array under key, which may be missing. False after an error.
template <typename Read>
bool ForEachElement(Deserializer& reader, char const* key, Read&& read) {
    if (!reader.Enter(key)) {
        return !reader.Failed();
    }
    const uint32_t count = reader.Count();
    for (uint32_t i = 0; i < count && reader.Enter(i); ++i) {
        read(i);
        reader.Leave();
    }
    reader.Leave();
    return !reader.Failed();
}

// Writes one document; keys are null inside arrays.
class ZORVAN_CORE_API Serializer {
  public:
    virtual ~Serializer();

    virtual void Write(char const* key, bool value) = 0;
    virtual void Write(char const* key, int32_t value) = 0;
    virtual void Write(char const* key, uint32_t value) = 0;
    virtual void Write(char const* key, RealFixed value) = 0;
    virtual void Write(char const* key, RealFixed const* values, uint32_t count) = 0;
    virtual void Write(char const* key, std::string const& value) = 0;
    virtual void Write(char const* key, MStringT<wchar_t> const& value) = 0;
    virtual void Write(char const* key, std::vector<uint8_t> const& blob) = 0;
    virtual void Write(char const* key, RefT<Texture> const& texture) = 0;
    virtual void Write(char const* key, RefT<Font> const& font) = 0;
    // A character literal is text, not a truth value.
    void Write(char const* key, char const* text) { Write(key, std::string(text)); }

    virtual void BeginObject(char const* key) = 0;
    virtual void EndObject() = 0;
    virtual void BeginArray(char const* key) = 0;
    virtual void EndArray() = 0;
};

}  // namespace zorvan
