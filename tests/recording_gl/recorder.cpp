#include "tests/recording_gl/recorder.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <utility>

namespace recording_gl {
namespace {

std::string log;

// Every enumerant that the plug-in uses, except those below 0x300, which names of objects may be.
#define ENUMERANTS(...)                          \
    constexpr int64_t kValues[] = {__VA_ARGS__}; \
    constexpr std::string_view kNames = #__VA_ARGS__
ENUMERANTS(GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_DST_COLOR,
           GL_ONE_MINUS_DST_COLOR, GL_FUNC_ADD, GL_STENCIL_TEST, GL_SCISSOR_TEST, GL_CCW, GL_DITHER,
           GL_CULL_FACE, GL_DEPTH_TEST, GL_LEQUAL, GL_BLEND, GL_FIXED, GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
           GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE, GL_LINEAR,
           GL_LINEAR_MIPMAP_LINEAR, GL_RGB, GL_RGBA, GL_UNSIGNED_BYTE, GL_UNSIGNED_SHORT_5_6_5,
           GL_UNSIGNED_SHORT_5_5_5_1, GL_UNSIGNED_SHORT_4_4_4_4, GL_UNPACK_ALIGNMENT, GL_PACK_ALIGNMENT,
           GL_RED_BITS, GL_GREEN_BITS, GL_BLUE_BITS, GL_VERTEX_SHADER, GL_FRAGMENT_SHADER, GL_COMPILE_STATUS,
           GL_LINK_STATUS);

template <typename T>
std::string Print(char const* format, T value) {
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

Script script;
int addressLookups = 0;
GLenum pendingError = GL_NO_ERROR;
bool raised = false;

std::string FormatInteger(int64_t value, bool isUnsigned) {
    auto const* const found = std::find(std::begin(kValues), std::end(kValues), value);
    if (found == std::end(kValues)) {
        return isUnsigned && value >= 0x300 ? Print("0x%lX", static_cast<long>(value))
                                            : std::to_string(value);
    }
    size_t at = 0;
    for (auto const* before = std::begin(kValues); before != found; ++before) {
        at = kNames.find(',', at) + 2;
    }
    return std::string(kNames.substr(at + 3, kNames.find(',', at) - at - 3));
}

std::string Format(float value) {
    return Print("%g", static_cast<double>(value));
}

std::string Format(char const* text) {
    return '"' + std::string(text) + '"';
}

void Append(std::string const& function, std::string const& arguments) {
    const std::string name = function.substr(function.starts_with("gl") ? 2 : 0);
    std::deque<uint32_t>& errors = script.errors[name];
    raised = !errors.empty() && errors.front() != GL_NO_ERROR;
    pendingError = raised && pendingError == GL_NO_ERROR ? errors.front() : pendingError;
    errors.erase(errors.begin(), errors.begin() + !errors.empty());
    log += (log.empty() ? "" : "\n") + name + '(' + arguments + ')';
}

void Reset() {
    log.clear();
    script = {};
    pendingError = GL_NO_ERROR;
    ForgetObjects();
}

std::string TakeLog() {
    return std::exchange(log, {});
}

}  // namespace recording_gl
