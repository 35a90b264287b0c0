// How the recording libraries turn a call into a log entry.
#pragma once

#include <GLES2/gl2.h>

#include <cstdio>
#include <type_traits>

#include "tests/recording_gl/recording_gl.h"

namespace recording_gl {

struct Enum {
    GLenum value;
};
// Enumerants whose values 0 and 1 mean GL_ZERO and GL_ONE.
struct Factor {
    GLenum value;
};
struct Hex {
    uint32_t value;
};

std::string Format(Enum value);
std::string Format(Factor value);
std::string Format(Hex value);
std::string Format(char const* text);
std::string Format(float value);
template <typename T>
std::string Format(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return value == nullptr ? "null" : "*";
    } else {
        return std::to_string(value);
    }
}

// Appends an entry to the log and raises the error that the script has for this function.
Call& Append(char const* function, std::string const& arguments);
// For look-ups of extension functions.
void CountAddressLookup();

// The new entry, or null when the log is off.
template <typename... Arguments>
Call* Record(char const* function, Arguments... arguments) {
    if (!script.logging) {
        return nullptr;
    }
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Format(arguments)), ...);
    return &Append(function, text);
}

}  // namespace recording_gl
