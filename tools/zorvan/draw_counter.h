// Counts the draw calls that reach GL from this process.
//
// The program defines glDrawArrays itself and exports it. The dynamic linker looks in the program first,
// so the plug-in's calls arrive here, are counted and are handed on to the GL library unchanged. Nothing
// else of the plug-in's calls is touched.
#pragma once

#include <cstdint>

namespace zorvan::tool {

// Calls of glDrawArrays since the start of the program.
uint64_t DrawCallCount();

}  // namespace zorvan::tool
