// A stand-in for libGLESv2.so.2 and libEGL.so.1: logs each call and answers what a test scripts. It draws
// nothing and checks nothing beyond what the script asks for.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

namespace recording_gl {

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
// Adds a line to the log, as in "BlendFunc(SRC_ALPHA, 1)".
void Append(std::string const& function, std::string const& arguments);
// Moves the log out: the calls, one on each line, without the prefixes of GL. Enumerants below 0x300, such as
// GL_ONE and GL_TRIANGLE_STRIP (5), stand as numbers, texts in quotes, floats as "%g". Data behind pointers
// is shown where GL takes it: the elements of matrices in units of 1/65536, as "[1 2 3]"; the 32-bit elements
// of the enabled client arrays by attribute location in glDrawArrays, as "0[1 2 3]"; images and program
// binaries as "SIZE@FIRST BYTE". Other pointers are "*" or "null".
std::string TakeLog();
// The strings that a shader was given last, each with "#" behind it.
std::string SourceOf(uint32_t shader);

}  // namespace recording_gl
