#include "tests/recording_gl/recorder.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tests/recording_gl/gl_objects.h"

namespace recording_gl {
namespace {

std::vector<Call> calls;
int addressLookups = 0;

struct Name {
    GLenum value;
    char const* name;
};
#define NAME(x) \
    { x, #x }
constexpr Name kNames[] = {
    NAME(GL_SRC_COLOR),
    NAME(GL_ONE_MINUS_SRC_COLOR),
    NAME(GL_SRC_ALPHA),
    NAME(GL_ONE_MINUS_SRC_ALPHA),
    NAME(GL_DST_COLOR),
    NAME(GL_ONE_MINUS_DST_COLOR),
    NAME(GL_FUNC_ADD),
    NAME(GL_STENCIL_TEST),
    NAME(GL_SCISSOR_TEST),
    NAME(GL_CCW),
    NAME(GL_DITHER),
    NAME(GL_CULL_FACE),
    NAME(GL_DEPTH_TEST),
    NAME(GL_LEQUAL),
    NAME(GL_BLEND),
    NAME(GL_FIXED),
    NAME(GL_TRIANGLE_STRIP),
    NAME(GL_TEXTURE_2D),
    NAME(GL_TEXTURE_MIN_FILTER),
    NAME(GL_TEXTURE_MAG_FILTER),
    NAME(GL_TEXTURE_WRAP_S),
    NAME(GL_TEXTURE_WRAP_T),
    NAME(GL_CLAMP_TO_EDGE),
    NAME(GL_LINEAR),
    NAME(GL_LINEAR_MIPMAP_LINEAR),
    NAME(GL_RGB),
    NAME(GL_RGBA),
    NAME(GL_UNSIGNED_BYTE),
    NAME(GL_UNSIGNED_SHORT_5_6_5),
    NAME(GL_UNSIGNED_SHORT_5_5_5_1),
    NAME(GL_UNSIGNED_SHORT_4_4_4_4),
    NAME(GL_UNPACK_ALIGNMENT),
    NAME(GL_PACK_ALIGNMENT),
    NAME(GL_RED_BITS),
    NAME(GL_GREEN_BITS),
    NAME(GL_BLUE_BITS),
    NAME(GL_VERTEX_SHADER),
    NAME(GL_FRAGMENT_SHADER),
    NAME(GL_COMPILE_STATUS),
    NAME(GL_LINK_STATUS),
};
#undef NAME

}  // namespace

Script script;

std::string Format(Enum value) {
    auto const* found = std::find_if(std::begin(kNames), std::end(kNames),
                                     [value](Name const& name) { return name.value == value.value; });
    return found == std::end(kNames) ? Format(Hex{value.value}) : found->name;
}

std::string Format(Factor value) {
    return value.value == GL_ZERO ? "GL_ZERO" : value.value == GL_ONE ? "GL_ONE" : Format(Enum{value.value});
}

std::string Format(Hex value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", value.value);
    return text;
}

std::string Format(char const* text) {
    return '"' + std::string(text) + '"';
}

std::string Format(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
    return text;
}

Call& Append(char const* function, std::string const& arguments) {
    RaiseScriptedError(function);
    calls.emplace_back().text = function + ('(' + arguments) + ')';
    return calls.back();
}

void CountAddressLookup() {
    ++addressLookups;
}

void Reset() {
    calls.clear();
    script = Script{};
    ForgetObjects();
}

std::vector<Call> const& Calls() {
    return calls;
}

std::vector<Call> TakeCalls() {
    return std::exchange(calls, {});
}

std::vector<std::string> TakeLines() {
    std::vector<std::string> lines;
    for (Call& call : calls) {
        lines.push_back(std::move(call.text));
    }
    calls.clear();
    return lines;
}

int AddressLookups() {
    return addressLookups;
}

}  // namespace recording_gl
