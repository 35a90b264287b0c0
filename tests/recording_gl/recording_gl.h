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
    // As in "glBlendFunc(GL_SRC_ALPHA, GL_ONE)". Pointers are "*" or "null", floats "%g", texts quoted.
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
    // Compile and link failures with their logs; a link fails without a scripted log too when a shader is
    // missing.
    std::optional<std::string> vertexError, fragmentError, linkError;
    bool refuseShaders = false;  // glCreateShader answers 0
    bool refusePrograms = false;
    // GL errors that the next calls of a function raise, in order; 0 for none.
    std::map<std::string, std::deque<uint32_t>> errors;
    // Locations of attributes and uniforms. A program built from sources has only the names that its
    // sources contain.
    std::map<std::string, int> locations = {{"a_vPosition", 0},
                                            {"a_vTexCoord", 1},
                                            {"u_sBaseTexture", 2},
                                            {"u_mModelViewProj", 3},
                                            {"u_vColor", 4}};
    std::array<int, 3> colorBits = {8, 8, 8};  // red, green, blue
    // glReadPixels writes the bytes 1, 2, 3, ... when true and leaves the memory alone otherwise.
    bool fillPixels = true;
};

extern Script script;

// Forgets the log, the script, the GL objects and the pending error.
void Reset();
std::vector<Call> const& Calls();
// The texts of the log, which is empty afterwards.
std::vector<std::string> TakeLines();
// Moves the log out.
std::vector<Call> TakeCalls();
// Number of eglGetProcAddress calls of the whole process; Reset keeps it.
int AddressLookups();

}  // namespace recording_gl
