#include "tools/zorvan/draw_counter.h"

#include <GLES2/gl2.h>
#include <dlfcn.h>

namespace {

uint64_t drawCalls = 0;

}  // namespace

extern "C" __attribute__((visibility("default"))) void glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    using Function = void (*)(GLenum, GLint, GLsizei);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "glDrawArrays"));
    ++drawCalls;
    next(mode, first, count);
}

namespace zorvan::tool {

uint64_t DrawCallCount() {
    return drawCalls;
}

}  // namespace zorvan::tool
