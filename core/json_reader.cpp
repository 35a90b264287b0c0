#include "core/json_reader.h"

#include <algorithm>
#include <filesystem>

#include "core/file_bytes.h"
#include "core/json.h"
#include "core/json_place.h"

namespace zorvan {
namespace {

using json::Type;
using json::Value;

constexpr uint32_t kLargestFile = 512u << 20;

bool IsContainer(Value const& value) {
    return value.type == Type::Object || value.type == Type::Array;
}

}  // namespace

JsonReader::JsonReader(ClassRegistry& registry, uint64_t memoryLimit)
    : Deserializer(memoryLimit), registry_(registry), shownBudget_(memoryLimit) {}

JsonReader::~JsonReader() = default;

bool JsonReader::TakeText(uint64_t bytes, std::string const& source) {
    constexpr uint64_t kCopies = 3;
    textClaim_.GiveBack(textClaim_.Bytes());
    if (!textClaim_.Take(kCopies * bytes)) {
        error_ = source + ": " + Budget().Refusal("the text");
        isMemoryError_ = true;
    }
    return error_.empty();
}

bool JsonReader::Open(std::string const& path) {
    std::error_code unknown;
    const uintmax_t size = std::filesystem::file_size(path, unknown);
    if (!unknown && !TakeText(size, path)) {
        return false;
    }
    FileBytes file = ReadFileBytes(path, kLargestFile);
    if (!file.error.empty()) {
        error_ = path + ": " + file.error;
        isFileError_ = true;
        return false;
    }
    folder_ = std::filesystem::path(path).parent_path().string();
    if (!TakeText(file.bytes.size(), path)) {
        return false;
    }
    text_.assign(file.bytes.begin(), file.bytes.end());
    file = {};
    return ParseText(path);
}

bool JsonReader::Parse(std::string_view text, std::string const& source) {
    if (!TakeText(text.size(), source)) {
        return false;
    }
    text_ = text;
    return ParseText(source);
}

bool JsonReader::ParseText(std::string const& source) {
    source_ = source;
    levels_.clear();
    keys_.clear();
    document_ = std::make_unique<json::Document>();
    json::ParseError parseError;
    if (!json::Parse(text_, *document_, parseError, textClaim_)) {
        isMemoryError_ = Budget().IsExhausted();
        error_ = source_ + ":" + json::LineAndColumn(text_, parseError.place) + ": " + parseError.message;
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
    if (levels_.empty()) {
        return;
    }
    Value const* member = key == nullptr ? nullptr : Find(key);
    FailAt(member == nullptr ? document_->values[levels_.back().value] : *member, message);
}

void JsonReader::FailAt(Value const& value, std::string const& message) {
    if (!Failed()) {
        // The first error: when something did not fit before it, it is about that.
        isMemoryError_ = Budget().IsExhausted() || shownBudget_.IsExhausted();
        error_ = source_ + ":" + json::LineAndColumn(text_, value.place) + ": " +
                 json::PathOf(*document_, value) + ": " + message;
    }
}

void JsonReader::FailType(Value const& value, char const* expected) {
    FailAt(value, "got " + json::Describe(*document_, text_, value) + ", expected " + expected);
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

std::string JsonReader::ResolvePath(std::string const& path) const {
    return (std::filesystem::path(folder_) / path).string();
}

}  // namespace zorvan
