#include "core/json_place.h"

#include <algorithm>

namespace zorvan::json {
namespace {

// Pointers into the text escape their separators.
std::string EscapeKey(std::string_view key) {
    std::string out;
    for (char c : key) {
        out += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return out;
}

}  // namespace

std::string LineAndColumn(std::string_view text, uint32_t place) {
    const std::string_view before = text.substr(0, place);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const size_t lineStart = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    return std::to_string(lines + 1) + ":" + std::to_string(place - lineStart + 1);
}

std::string PathOf(Document const& document, Value const& value) {
    const auto wanted = static_cast<uint32_t>(&value - document.values.data());
    std::string path;
    // From the root down, into the member whose subtree holds the value.
    for (uint32_t container = 0; container != wanted;) {
        uint32_t index = container + 1;
        uint32_t number = 0;
        while (document.values[index].next <= wanted) {
            index = document.values[index].next;
            ++number;
        }
        const bool isArray = document.values[container].type == Type::Array;
        path += "/" + (isArray ? std::to_string(number) : EscapeKey(document.Key(document.values[index])));
        container = index;
    }
    return path.empty() ? "/" : path;
}

std::string Describe(Document const& document, std::string_view text, Value const& value) {
    constexpr size_t kLongest = 40;
    switch (value.type) {
        case Type::Null:
            return "null";
        case Type::Array:
            return "an array of " + std::to_string(value.count);
        case Type::Object:
            return "an object";
        case Type::String: {
            const std::string_view string = document.Text(value);
            return string.size() <= kLongest ? Quote(string)
                                             : "a string of " + std::to_string(string.size()) + " bytes";
        }
        default: {
            const size_t end = text.find_first_of(" \t\r\n,]}", value.place);
            return std::string(text.substr(value.place, std::min(end - value.place, kLongest)));
        }
    }
}

}  // namespace zorvan::json
