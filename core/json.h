// Text to a tree of JSON values with their places, and back. The tree lies in flat arrays: a value's
// members or elements follow it, each behind the previous one's whole subtree.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zorvan {
class MemoryClaim;
}

namespace zorvan::json {

enum class Type : uint8_t { Null, Bool, Integer, Real, String, Array, Object };

// In Document::strings.
struct StringRange {
    uint32_t begin, length;
};

struct Value {
    Type type = Type::Null;
    bool asked = false;     // by a reader, as a member of its object
    uint32_t place = 0;     // of its first character in the text, in bytes
    uint32_t next = 0;      // index of the first value behind this one's subtree
    uint32_t count = 0;     // members or elements
    uint32_t keyBegin = 0;  // into Document::strings
    uint32_t keyLength = 0;
    union {
        int64_t integer = 0;  // truth values too
        double real;
        StringRange text;
    };
};

struct Document {
    std::vector<Value> values;  // the root is the first
    std::string strings;

    std::string_view Key(Value const& value) const {
        return std::string_view(strings).substr(value.keyBegin, value.keyLength);
    }
    std::string_view Text(Value const& value) const {
        return std::string_view(strings).substr(value.text.begin, value.text.length);
    }
};

struct ParseError {
    uint32_t place = 0;  // in bytes
    std::string message;
};

// Arrays and objects inside each other.
inline constexpr uint32_t kDeepestNesting = 200;
// About 1.3 GiB of them; a sprite has ten to twenty.
inline constexpr uint32_t kMostValues = 1u << 25;

// Parses a whole text of less than 4 GiB. Refuses what is no JSON, repeated keys and too deep nesting, and
// more values than fit into the claim's budget.
bool Parse(std::string_view text, Document& document, ParseError& error, MemoryClaim& claim);

// A string as JSON writes it, with quotes; malformed UTF-8 becomes U+FFFD.
std::string Quote(std::string_view text);

}  // namespace zorvan::json
