#include "core/json_reader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "core/base64.h"
#include "core/file_bytes.h"
#include "core/json.h"
#include "core/node.h"

namespace zorvan {
namespace {

using json::Type;
using json::Value;

constexpr uint32_t kLargestFile = 512u << 20;

bool IsNumber(Value const& value) {
    return value.type == Type::Integer || value.type == Type::Real;
}

bool IsContainer(Value const& value) {
    return value.type == Type::Object || value.type == Type::Array;
}

template <Type kType>
bool Is(Value const& value) {
    return value.type == kType;
}

// Pointers into the text escape their separators.
std::string EscapeKey(std::string_view key) {
    std::string out;
    for (char c : key) {
        out += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return out;
}

}  // namespace

JsonReader::JsonReader(ClassRegistry& registry) : registry_(registry) {}

JsonReader::~JsonReader() = default;

bool JsonReader::Open(std::string const& path) {
    FileBytes file = ReadFileBytes(path, kLargestFile);
    if (!file.error.empty()) {
        error_ = path + ": " + file.error;
        isFileError_ = true;
        return false;
    }
    folder_ = std::filesystem::path(path).parent_path().string();
    return Parse({reinterpret_cast<char const*>(file.bytes.data()), file.bytes.size()}, path);
}

bool JsonReader::Parse(std::string_view text, std::string const& source) {
    source_ = source;
    text_ = text;
    levels_.clear();
    keys_.clear();
    document_ = std::make_unique<json::Document>();
    json::ParseError parseError;
    if (!json::Parse(text_, *document_, parseError)) {
        error_ = PlaceText(parseError.place) + parseError.message;
        return false;
    }
    if (document_->values[0].type != Type::Object) {
        FailType(document_->values[0], "an object");
        return false;
    }
    Push(document_->values[0]);
    return true;
}

bool JsonReader::Finish() {
    if (!levels_.empty()) {
        Leave();
    }
    return !Failed();
}

void JsonReader::Push(Value const& value) {
    const auto index = static_cast<uint32_t>(&value - document_->values.data());
    levels_.push_back({index, 0, index + 1, keys_.size()});
}

Value* JsonReader::Find(char const* key) {
    if (Failed() || levels_.empty()) {
        return nullptr;
    }
    Level const& level = levels_.back();
    Value const& object = document_->values[level.value];
    if (object.type != Type::Object) {
        FailType(object, "an object");
        return nullptr;
    }
    keys_.push_back(key);
    const std::string_view wanted = key;
    uint32_t index = level.value + 1;
    for (uint32_t i = 0; i < object.count; ++i) {
        Value& member = document_->values[index];
        if (document_->Key(member) == wanted) {
            member.asked = true;
            return &member;
        }
        index = member.next;
    }
    return nullptr;
}

Value const* JsonReader::FindTyped(char const* key, bool (*fits)(Value const&), char const* expected) {
    Value const* value = Find(key);
    if (value != nullptr && !fits(*value)) {
        FailType(*value, expected);
        return nullptr;
    }
    return value;
}

bool JsonReader::Has(char const* key) {
    return Find(key) != nullptr;
}

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
    return ReadResource(key, textures_, texture, "the name of a texture of this scene, or null");
}

bool JsonReader::Read(char const* key, RefT<Font>& font) {
    return ReadResource(key, fonts_, font, "the name of a font of this scene, or null");
}

bool JsonReader::Enter(char const* key) {
    Value const* found = FindTyped(key, &IsContainer, "an array or an object");
    if (found == nullptr) {
        return false;
    }
    Push(*found);
    return true;
}

bool JsonReader::Enter(uint32_t index) {
    if (Failed() || levels_.empty()) {
        return false;
    }
    Level& level = levels_.back();
    Value const& array = document_->values[level.value];
    if (array.type != Type::Array || index >= array.count) {
        return false;
    }
    if (index < level.element) {
        level.element = 0;
        level.cursor = level.value + 1;
    }
    for (; level.element < index; ++level.element) {
        level.cursor = document_->values[level.cursor].next;
    }
    Value const& element = document_->values[level.cursor];
    if (!IsContainer(element)) {
        FailType(element, "an object");
        return false;
    }
    Push(element);
    return true;
}

void JsonReader::Leave() {
    const Level level = levels_.back();
    Value const& value = document_->values[level.value];
    if (!Failed() && value.type == Type::Object) {
        // An object that is entered twice keeps what was asked for the first time.
        uint32_t index = level.value + 1;
        for (uint32_t i = 0; i < value.count; ++i) {
            Value const& member = document_->values[index];
            if (!member.asked) {
                FailUnknown(level, member);
                break;
            }
            index = member.next;
        }
    }
    keys_.resize(level.keysBegin);
    levels_.pop_back();
}

uint32_t JsonReader::Count() {
    Value const& value = document_->values[levels_.back().value];
    if (value.type != Type::Array) {
        FailType(value, "an array");
        return 0;
    }
    return value.count;
}

void JsonReader::Fail(char const* key, std::string const& message) {
    if (Failed() || levels_.empty()) {
        return;
    }
    Value const* member = key == nullptr ? nullptr : Find(key);
    FailAt(member == nullptr ? document_->values[levels_.back().value] : *member, message);
}

void JsonReader::FailAt(Value const& value, std::string const& message) {
    if (!Failed()) {
        const std::string path = PathOf(value);
        error_ = PlaceText(value.place) + (path.empty() ? "/" : path) + ": " + message;
    }
}

void JsonReader::FailType(Value const& value, char const* expected) {
    FailAt(value, "got " + Describe(value) + ", expected " + expected);
}

void JsonReader::FailUnknown(Level const& level, Value const& unknown) {
    std::vector<std::string_view> known(keys_.begin() + static_cast<std::ptrdiff_t>(level.keysBegin),
                                        keys_.end());
    std::sort(known.begin(), known.end());
    known.erase(std::unique(known.begin(), known.end()), known.end());
    std::string expected;
    for (std::string_view key : known) {
        expected += (expected.empty() ? "" : ", ") + std::string(key);
    }
    FailAt(unknown,
           "got the unknown key " + json::Quote(document_->Key(unknown)) + ", expected one of " + expected);
}

std::string JsonReader::Describe(Value const& value) const {
    constexpr size_t kLongest = 40;
    switch (value.type) {
        case Type::Null:
            return "null";
        case Type::Array:
            return "an array of " + std::to_string(value.count);
        case Type::Object:
            return "an object";
        case Type::String: {
            const std::string_view text = document_->Text(value);
            return text.size() <= kLongest ? json::Quote(text)
                                           : "a string of " + std::to_string(text.size()) + " bytes";
        }
        default: {
            // As it stands in the text.
            const size_t end = text_.find_first_of(" \t\r\n,]}", value.place);
            return text_.substr(value.place, std::min(end - value.place, kLongest));
        }
    }
}

std::string JsonReader::PathOf(Value const& value) const {
    const auto wanted = static_cast<uint32_t>(&value - document_->values.data());
    std::string path;
    // From the root down, into the member whose subtree holds the value.
    for (uint32_t container = 0; container != wanted;) {
        uint32_t index = container + 1;
        uint32_t number = 0;
        while (document_->values[index].next <= wanted) {
            index = document_->values[index].next;
            ++number;
        }
        const bool isArray = document_->values[container].type == Type::Array;
        path +=
            "/" + (isArray ? std::to_string(number) : EscapeKey(document_->Key(document_->values[index])));
        container = index;
    }
    return path;
}

std::string JsonReader::PlaceText(uint32_t place) const {
    const std::string_view before = std::string_view(text_).substr(0, place);
    const size_t lines = static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
    const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    return source_ + ":" + std::to_string(lines + 1) + ":" + std::to_string(place - lineStart + 1) + ": ";
}

std::string JsonReader::ResolvePath(std::string const& path) const {
    return (std::filesystem::path(folder_) / path).string();
}

}  // namespace zorvan
