#include "core/mstring.h"

#include <cstdint>

namespace zorvan {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsScalar(char32_t c) {
    return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

// Takes one code point from the front of text.
char32_t TakeUtf8(std::string_view& text) {
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<uint8_t>(text.front());
    text.remove_prefix(1);
    if (lead < 0x80) {
        return lead;
    }
    const int extra = lead >= 0xF0 && lead < 0xF8 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC0 || lead >= 0xF8) {
        return kReplacement;
    }
    char32_t c = lead & (0x3Fu >> extra);
    for (int i = 0; i < extra; ++i) {
        if (text.empty() || (static_cast<uint8_t>(text.front()) & 0xC0) != 0x80) {
            return kReplacement;
        }
        c = (c << 6) | (static_cast<uint8_t>(text.front()) & 0x3Fu);
        text.remove_prefix(1);
    }
    return IsScalar(c) && c >= kSmallest[extra] ? c : kReplacement;
}

void AppendUtf8(std::string& out, char32_t c) {
    if (!IsScalar(c)) {
        c = kReplacement;
    }
    if (c < 0x80) {
        out += static_cast<char>(c);
        return;
    }
    const int extra = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr uint8_t kLead[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLead[extra] | (c >> (6 * extra)));
    for (int i = extra - 1; i >= 0; --i) {
        out += static_cast<char>(0x80 | ((c >> (6 * i)) & 0x3F));
    }
}

}  // namespace

MStringT<wchar_t> FromUtf8(std::string_view text) {
    static_assert(sizeof(wchar_t) == 4);
    std::wstring out;
    out.reserve(text.size());
    while (!text.empty()) {
        out += static_cast<wchar_t>(TakeUtf8(text));
    }
    return MStringT<wchar_t>(std::move(out));
}

std::string ToUtf8(MStringT<wchar_t> const& text) {
    std::string out;
    out.reserve(text.Length());
    for (wchar_t c : text.View()) {
        AppendUtf8(out, static_cast<char32_t>(c));
    }
    return out;
}

}  // namespace zorvan
