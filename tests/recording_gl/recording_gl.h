// A stand-in for libGLESv2.so.2 and libEGL.so.1: logs each call and answers what a test scripts. It draws
// nothing and checks nothing beyond what the script asks for.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace recording_gl {

// One logged call, with copies of what its pointers pointed to at that moment.
struct Call {
    // As in "BlendFunc(SRC_ALPHA, 1)": without the prefixes of GL. Enumerants below 0x300, such as GL_ONE and
    // GL_TRIANGLE_STRIP (5), stand as numbers. Pointers are "*" or "null", floats "%g", texts quoted.
    std::string text;
    std::vector<float> floats;         // the matrix of glUniformMatrix4fv
    std::vector<std::string> strings;  // the fragments of glShaderSource
    std::vector<uint8_t> bytes;        // texture pixels, program binaries
    // At glDrawArrays: the 32-bit elements of each enabled client array, by attribute location.
    std::map<uint32_t, std::vector<int32_t>> arrays;
};

// The answers. Reset gives the values that stand here.
struct Script {
    // False makes every function as empty as its answer allows, for measuring the caller's own time.
    bool logging = true;
    // Compile and link failures with their logs.
    std::optional<std::string> vertexError, fragmentError, linkError;
    bool refuseObjects = false;  // glCreateShader and glCreateProgram answer 0
    // GL errors that the next calls of a function raise, in order, by its name without "gl"; 0 for none.
    std::map<std::string, std::deque<uint32_t>> errors;
    std::array<int, 3> colorBits = {8, 8, 8};  // red, green, blue
};

extern Script script;
// Number of eglGetProcAddress calls of the whole process; Reset keeps it.
extern int addressLookups;

// Forgets the log, the script, the GL objects and the pending error.
void Reset();
// Moves the log out.
std::vector<Call> TakeCalls();

}  // namespace recording_gl
