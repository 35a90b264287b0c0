// The engine's own CPU time per sprite and frame, and its allocations: on GL functions that do nothing.
#include <cstdio>
#include <cstdlib>

#include "bench/sprite_scene.h"
#include "tests/recording_gl/recording_gl.h"

namespace {
long allocations = 0;
}

// Every allocation of the process, operator new included, comes through here.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);

void* malloc(size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) {
    ++allocations;
    return __libc_realloc(memory, size);
}
}

int main() {
    using zorvan::SpriteScene;
    recording_gl::script.logging = false;
    SpriteScene scene;
    const auto times =
        zorvan::MedianTimes(101, {[&scene] { scene.BareFrame(); }, [&scene] { scene.EngineFrame(false); },
                                  [&scene] { scene.EngineFrame(true); }});
    const long before = allocations;
    for (int i = 0; i < 10; ++i) {
        scene.EngineFrame(i % 2 == 0);
    }
    const long during = allocations - before;
    const auto perSprite = [](double nanoseconds) { return nanoseconds / SpriteScene::kSprites; };
    std::printf("%d textured sprites, GL functions empty; CPU ns per sprite and frame\n",
                SpriteScene::kSprites);
    std::printf("bare loop     %7.1f\n", perSprite(times[0].cpu));
    std::printf("still scene   %7.1f  %7.1f on top of the bare loop\n", perSprite(times[1].cpu),
                perSprite(times[1].cpu - times[0].cpu));
    std::printf("moving scene  %7.1f  %7.1f on top of the bare loop\n", perSprite(times[2].cpu),
                perSprite(times[2].cpu - times[0].cpu));
    std::printf("allocations in 10 frames: %ld\n", during);
    return 0;
}
