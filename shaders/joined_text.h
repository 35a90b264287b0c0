// Shader texts joined at compile time.
#pragma once

#include <array>
#include <cstddef>

namespace zorvan {

// String literals, one after another, zero-terminated.
template <size_t... N>
constexpr auto JoinText(char const (&... parts)[N]) {
    std::array<char, (N + ...) - sizeof...(N) + 1> text{};
    size_t end = 0;
    const auto append = [&](char const* part, size_t length) {
        for (size_t i = 0; i < length; ++i) {
            text[end++] = part[i];
        }
    };
    (append(parts, N - 1), ...);
    return text;
}

// The first lines of every fragment shader.
inline constexpr char kFragmentHeader[] =
    "#ifdef GL_FRAGMENT_PRECISION_HIGH\n"
    "   precision highp float;\n"
    "#else\n"
    "   precision mediump float;\n"
    "#endif\n";

}  // namespace zorvan
