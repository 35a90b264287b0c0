// Scene data as JSON text.
#pragma once

#include <string>

#include "core/serializer.h"

namespace zorvan {

// Writes one object; Text gives it once everything opened is ended. The text reads back to the same values
// bit for bit: numbers are the shortest decimals that do.
class ZORVAN_CORE_API JsonWriter final : public Serializer {
  public:
    JsonWriter();

    using Serializer::Write;
    void Write(char const* key, bool value) override;
    void Write(char const* key, int32_t value) override;
    void Write(char const* key, uint32_t value) override;
    void Write(char const* key, RealFixed value) override;
    void Write(char const* key, RealFixed const* values, uint32_t count) override;
    void Write(char const* key, std::string const& value) override;
    void Write(char const* key, MStringT<wchar_t> const& value) override;
    void Write(char const* key, std::vector<uint8_t> const& blob) override;
    void Write(char const* key, RefT<Texture> const& texture) override;
    void Write(char const* key, RefT<Font> const& font) override;

    void BeginObject(char const* key) override;
    void EndObject() override;
    void BeginArray(char const* key) override;
    void EndArray() override;

    // Ends the root object.
    std::string Text() const;

  private:
    void Begin(char const* key);
    void End(char bracket);

    std::string text_ = "{";
    uint32_t depth_ = 1;
    bool first_ = true;
};

// The shortest decimal number that reads back to the value.
ZORVAN_CORE_API std::string DecimalText(RealFixed value);

}  // namespace zorvan
