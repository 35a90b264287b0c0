// The engine's own CPU time per sprite and frame, and its allocations: on GL functions that do nothing.
#include <cstdio>
#include <cstdlib>

#include "bench/allocation_count.h"
#include "bench/sprite_scene.h"
#include "tests/recording_gl/recording_gl.h"

int main() {
    using zorvan::SpriteScene;
    recording_gl::script.logging = false;
    SpriteScene scene;
    const auto times =
        zorvan::MedianTimes(101, {[&scene] { scene.BareFrame(); }, [&scene] { scene.EngineFrame(false); },
                                  [&scene] { scene.EngineFrame(true); }});
    const uint64_t before = zorvan::bench::AllocationCount();
    for (int i = 0; i < 10; ++i) {
        scene.EngineFrame(i % 2 == 0);
    }
    const uint64_t during = zorvan::bench::AllocationCount() - before;
    const auto perSprite = [](double nanoseconds) { return nanoseconds / SpriteScene::kSprites; };
    std::printf("%d textured sprites, GL functions empty; CPU ns per sprite and frame\n",
                SpriteScene::kSprites);
    std::printf("bare loop     %7.1f\n", perSprite(times[0].cpu));
    std::printf("still scene   %7.1f  %7.1f on top of the bare loop\n", perSprite(times[1].cpu),
                perSprite(times[1].cpu - times[0].cpu));
    std::printf("moving scene  %7.1f  %7.1f on top of the bare loop\n", perSprite(times[2].cpu),
                perSprite(times[2].cpu - times[0].cpu));
    std::printf("allocations in 10 frames: %llu\n", static_cast<unsigned long long>(during));
    return 0;
}
