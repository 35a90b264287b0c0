// Whole frames of 10,000 sprites on the software driver, beside a bare loop of the same GL calls.
#include <GLES2/gl2.h>

#include <cstdio>

#include "bench/sprite_scene.h"
#include "tests/pixels/surface.h"

int main() {
    using zorvan::SpriteScene;
    const auto surface = zorvan::Surface::Make(SpriteScene::kWidth, SpriteScene::kHeight, {8, 8, 8, 8});
    if (surface == nullptr) {
        std::fprintf(stderr, "sprite_gl_bench: no OpenGL ES 2.0 surface of 8-8-8-8 bits\n");
        return 4;
    }
    SpriteScene scene;
    // The driver draws on threads of its own: a frame counts until its last pixel.
    const auto times = zorvan::MedianTimes(15, {[&scene] {
                                                    scene.BareFrame();
                                                    glFinish();
                                                },
                                                [&scene] {
                                                    scene.EngineFrame(false);
                                                    glFinish();
                                                },
                                                [&scene] {
                                                    scene.EngineFrame(true);
                                                    glFinish();
                                                }});
    std::printf("%d sprites of 16x16 on %dx%d, %s\n", SpriteScene::kSprites, SpriteScene::kWidth,
                SpriteScene::kHeight, reinterpret_cast<char const*>(glGetString(GL_RENDERER)));
    std::printf("bare loop     %8.2f ms\n", times[0].wall / 1e6);
    std::printf("still scene   %8.2f ms  %.3f of the bare loop\n", times[1].wall / 1e6,
                times[1].wall / times[0].wall);
    std::printf("moving scene  %8.2f ms  %.3f of the bare loop\n", times[2].wall / 1e6,
                times[2].wall / times[0].wall);
    return 0;
}
