// An off-screen surface of the installed driver.
#include <GLES2/gl2.h>

#include <cstdio>

#include "bench/gl_context.h"
#include "tests/pixels/surface.h"

namespace zorvan::bench {

bool MakeContextCurrent(int width, int height) {
    static const std::unique_ptr<Surface> surface = Surface::Make(width, height, {8, 8, 8, 8});
    if (!surface) {
        std::fprintf(stderr, "the driver has no off-screen surface\n");
        return false;
    }
    std::printf("%s\n", reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
    return true;
}

void FinishDrawing() {
    glFinish();
}

}  // namespace zorvan::bench
