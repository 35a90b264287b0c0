// Single values out of JSON: their types and ranges.
#include <algorithm>
#include <cmath>

#include "core/base64.h"
#include "core/json.h"
#include "core/json_reader.h"

namespace zorvan {
namespace {

using json::Type;
using json::Value;

bool IsNumber(Value const& value) {
    return value.type == Type::Integer || value.type == Type::Real;
}

template <Type kType>
bool Is(Value const& value) {
    return value.type == kType;
}

}  // namespace

bool JsonReader::Read(char const* key, bool& value) {
    Value const* found = FindTyped(key, &Is<Type::Bool>, "true or false");
    if (found == nullptr) {
        return false;
    }
    value = found->integer != 0;
    return true;
}

bool JsonReader::Read(char const* key, int32_t& value) {
    constexpr char const* kExpected = "a whole number from -2147483648 to 2147483647";
    Value const* found = FindTyped(key, &Is<Type::Integer>, kExpected);
    if (found == nullptr) {
        return false;
    }
    if (found->integer < INT32_MIN || found->integer > INT32_MAX) {
        FailType(*found, kExpected);
        return false;
    }
    value = static_cast<int32_t>(found->integer);
    return true;
}

bool JsonReader::Read(char const* key, uint32_t& value) {
    constexpr char const* kExpected = "a whole number from 0 to 4294967295 or \"none\"";
    Value const* found = Find(key);
    if (found == nullptr) {
        return false;
    }
    if (found->type == Type::String && document_->Text(*found) == "none") {
        value = UINT32_MAX;
        return true;
    }
    if (found->type != Type::Integer || found->integer < 0 || found->integer > UINT32_MAX) {
        FailType(*found, kExpected);
        return false;
    }
    value = static_cast<uint32_t>(found->integer);
    return true;
}

bool JsonReader::ReadReal(Value const& value, RealFixed& number) {
    if (!IsNumber(value)) {
        FailType(value, "a number");
        return false;
    }
    const double real = value.type == Type::Real ? value.real : static_cast<double>(value.integer);
    const double raw = std::floor(real * 65536.0 + 0.5);
    if (!(raw >= INT32_MIN && raw <= INT32_MAX)) {
        FailType(value, "a number from -32768 to below 32768");
        return false;
    }
    number = RealFixed::FromRaw(static_cast<int32_t>(raw));
    return true;
}

bool JsonReader::Read(char const* key, RealFixed& value) {
    Value const* found = Find(key);
    return found != nullptr && ReadReal(*found, value);
}

bool JsonReader::Read(char const* key, RealFixed* values, uint32_t count) {
    Value const* found = Find(key);
    if (found == nullptr) {
        return false;
    }
    if (found->type != Type::Array || found->count != count) {
        FailType(*found, ("an array of " + std::to_string(count) + " numbers").c_str());
        return false;
    }
    std::vector<RealFixed> numbers(count);
    for (uint32_t i = 0; i < count; ++i) {
        // Each element is a scalar, so they lie side by side; anything else fails before it matters.
        if (!ReadReal(found[1 + i], numbers[i])) {
            return false;
        }
    }
    std::copy(numbers.begin(), numbers.end(), values);
    return true;
}

bool JsonReader::Read(char const* key, std::string& value) {
    Value const* found = FindTyped(key, &Is<Type::String>, "a string");
    if (found == nullptr) {
        return false;
    }
    value = document_->Text(*found);
    return true;
}

bool JsonReader::Read(char const* key, MStringT<wchar_t>& value) {
    std::string text;
    if (!Read(key, text)) {
        return false;
    }
    value = FromUtf8(text);
    return true;
}

bool JsonReader::Read(char const* key, std::vector<uint8_t>& blob) {
    Value const* found = FindTyped(key, &Is<Type::String>, "bytes in base64");
    if (found == nullptr) {
        return false;
    }
    if (!DecodeBase64(document_->Text(*found), blob)) {
        FailAt(*found,
               "got text that is no base64, expected groups of four of A-Z a-z 0-9 + / with = at the end");
        return false;
    }
    return true;
}

template <typename T>
bool JsonReader::ReadResource(char const* key, std::unordered_map<std::string, T*> const& resources,
                              RefT<T>& resource, char const* expected) {
    Value const* found = Find(key);
    if (found == nullptr) {
        return false;
    }
    if (found->type == Type::Null) {
        resource = RefT<T>();
        return true;
    }
    if (found->type != Type::String) {
        FailType(*found, expected);
        return false;
    }
    const auto named = resources.find(std::string(document_->Text(*found)));
    if (named == resources.end()) {
        FailType(*found, expected);
        return false;
    }
    resource = RefT<T>(named->second);
    return true;
}

bool JsonReader::Read(char const* key, RefT<Texture>& texture) {
    if (!ReadResource(key, textures_, texture, "the name of a texture of this scene, or null")) {
        return false;
    }
    if (texture && shown_.insert(texture.Get()).second && !shownBudget_.Take(texture->pixels.size)) {
        Fail(key, shownBudget_.Refusal("a texture on the device"));
    }
    return !Failed();
}

bool JsonReader::Read(char const* key, RefT<Font>& font) {
    return ReadResource(key, fonts_, font, "the name of a font of this scene, or null");
}

}  // namespace zorvan
