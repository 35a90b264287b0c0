#include "tools/common/printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace tools {

namespace {

struct Character {
    char32_t code;
    std::size_t bytes;
    bool wellFormed;
};

// The first character of a text that is not empty; a byte that begins none stands for itself.
Character First(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    if (lead < 0x80) {
        return {lead, 1, true};
    }
    const Character none{lead, 1, false};
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes > text.size()) {
        return none;
    }
    char32_t code = lead & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return none;
        }
        code = code << 6 | (byte(i) & 0x3Fu);
    }
    constexpr char32_t kLeast[] = {0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kLeast[bytes - 2] || code > 0x10FFFF || surrogate ? none : Character{code, bytes, true};
}

bool IsHarmless(char32_t code) {
    constexpr struct {
        char32_t first, last;
    } kEscaped[] = {{0, 0x1F}, {0x7F, 0x9F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
    return std::none_of(std::begin(kEscaped), std::end(kEscaped),
                        [code](const auto& range) { return code >= range.first && code <= range.last; });
}

// Each character as it is, or as `escape` appends it.
template <typename Escape>
std::string Filter(std::string_view text, Escape escape) {
    std::string filtered;
    while (!text.empty()) {
        const Character character = First(text);
        const std::string_view bytes = text.substr(0, character.bytes);
        if (character.wellFormed && IsHarmless(character.code)) {
            filtered += bytes;
        } else {
            escape(filtered, character, bytes);
        }
        text.remove_prefix(character.bytes);
    }
    return filtered;
}

}  // namespace

std::string Printable(std::string_view text) {
    return Filter(text, [](std::string& out, const Character&, std::string_view bytes) {
        for (const char c : bytes) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02x", unsigned{static_cast<unsigned char>(c)});
            out += escape;
        }
    });
}

std::string PrintableJson(std::string_view json) {
    return Filter(json, [](std::string& out, const Character& character, std::string_view) {
        char escape[7] = "\n";
        if (character.code != '\n') {
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character.code) & 0xFFFF);
        }
        out += escape;
    });
}

}  // namespace tools
