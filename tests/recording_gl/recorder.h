// How the recording libraries turn a call into a log entry.
#pragma once

#include <GLES2/gl2.h>

#include <type_traits>

#include "tests/recording_gl/recording_gl.h"

namespace recording_gl {

// The error that glGetError tells next.
extern GLenum pendingError;
extern bool raised;  // whether the last call raised a scripted error
void ForgetObjects();

std::string FormatInteger(int64_t value, bool isUnsigned);
std::string Format(float value);
std::string Format(char const* text);
inline std::string Format(std::string const& shown) {
    return shown;
}
template <typename T>
std::string Format(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return value == nullptr ? "null" : "*";
    } else {
        return FormatInteger(value, std::is_unsigned_v<T>);
    }
}

template <typename... Arguments>
void Record(char const* function, Arguments const&... arguments) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Format(arguments)), ...);
    Append(function, text);
}

}  // namespace recording_gl

// A function with C linkage: the log shows the last arguments; then it evaluates its answer.
#define ANSWERED(result, name, parameters, answer, ...)             \
    extern "C" result name parameters {                             \
        if (recording_gl::script.logging) {                         \
            recording_gl::Record(#name __VA_OPT__(, ) __VA_ARGS__); \
        }                                                           \
        return result(answer);                                      \
    }
#define LOGGED(name, parameters, ...) ANSWERED(void, name, parameters, 0, __VA_ARGS__)
