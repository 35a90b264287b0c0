// Small option values.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

namespace qonvert {

// A whole text as a number.
template <typename T>
bool ParseNumber(std::string_view text, T& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

// "WxH", both at least 1.
inline bool ParseSize(std::string_view text, std::uint32_t& width, std::uint32_t& height) {
    const std::size_t x = text.find_first_of("xX");
    return x != std::string_view::npos && ParseNumber(text.substr(0, x), width) &&
           ParseNumber(text.substr(x + 1), height) && width != 0 && height != 0;
}

}  // namespace qonvert
