#include "core/base64.h"

#include <array>

namespace zorvan {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int8_t, 256> MakeValues() {
    std::array<int8_t, 256> values{};
    values.fill(-1);
    for (size_t i = 0; i < kDigits.size(); ++i) {
        values[static_cast<uint8_t>(kDigits[i])] = static_cast<int8_t>(i);
    }
    return values;
}

constexpr std::array<int8_t, 256> kValues = MakeValues();

}  // namespace

std::string EncodeBase64(std::vector<uint8_t> const& bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t rest = bytes.size() - i;
        const uint32_t group = static_cast<uint32_t>(bytes[i]) << 16 |
                               (rest > 1 ? static_cast<uint32_t>(bytes[i + 1]) << 8 : 0) |
                               (rest > 2 ? static_cast<uint32_t>(bytes[i + 2]) : 0);
        text += kDigits[group >> 18];
        text += kDigits[(group >> 12) & 63];
        text += rest > 1 ? kDigits[(group >> 6) & 63] : '=';
        text += rest > 2 ? kDigits[group & 63] : '=';
    }
    return text;
}

bool DecodeBase64(std::string_view text, std::vector<uint8_t>& bytes) {
    bytes.clear();
    if (text.size() % 4 != 0) {
        return false;
    }
    size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') {
        ++padding;
    }
    const size_t digits = text.size() - padding;
    bytes.reserve(text.size() / 4 * 3);
    uint32_t bits = 0;
    for (size_t i = 0; i < digits; ++i) {
        const int8_t value = kValues[static_cast<uint8_t>(text[i])];
        if (value < 0) {
            return false;
        }
        bits = bits << 6 | static_cast<uint32_t>(value);
        if (i % 4 != 0) {
            bytes.push_back(static_cast<uint8_t>(bits >> (6 - 2 * (i % 4))));
        }
    }
    // What the last digit holds beyond the last byte must be zero.
    const uint32_t spare = padding == 2 ? 0xF : padding == 1 ? 0x3 : 0;
    return (bits & spare) == 0;
}

}  // namespace zorvan
