// qonvert without one of its allocations.
#include "tests/allocation/injection.h"
#include "tests/qonvert/samples.h"

namespace qonvert {
namespace {

class QonvertInjection : public InjectionTest {
  protected:
    QonvertInjection() : InjectionTest(PROGRAM, 4) {
        Write("a.png", NoiseFile("png", FMT_RGBA8888, 20, 12));
        Write("b.dds", NoiseFile("dds", FMT_RGB565, 9, 7));
        Write("c.ktx", NoiseFile("ktx", FMT_ETC1_RGB8, 20, 12));
        Write("p.png", NoiseFile("png", FMT_P4_RGB565, 11, 10));
        Write("f.ktx", NoiseFile("ktx", FMT_RGB16F, 12, 8));
        Write("levels.ktx",
              WriteContainer(*FindContainer("ktx"), NoiseTexture(FMT_ATITC_RGB, 16, 16, 3), {}));
        Write("old.ktx", Noise(100, 1));
#ifdef QONVERT_JPEG
        Write("j.jpg", JpegSample(17, 9, false));
#endif
    }
};

// Threads add places that depend on chance.
#define ALONE " --threads 1"

constexpr Command kCommands[] = {
    {"convert a.png old.ktx --overwrite -f atitc_rgba_explicit --mips --report" ALONE},
    {.arguments = "convert a.png o.raw -f p8_rgb565" ALONE, .quantizes = true},
    {"convert p.png o.ktx -f rgba8888 -s 33x41 --filter cubic" ALONE},
    {"convert f.ktx o.ktx -f rgba32f -s 20x5 --filter cubic --mirror-x" ALONE},
    {"convert a.png o.raw -f rgba16f -s 9x14 --filter four" ALONE},
    {"convert a.png o.raw -f l8 -s 9x14 --filter point" ALONE},
    {"convert a.png o.png --normal-map sobel --wrap --mirror-x --flip-y" ALONE},
    {"convert b.dds o.png" ALONE},
    {"convert levels.ktx o.png" ALONE},
#ifdef QONVERT_JPEG
    {"convert j.jpg o.pkm" ALONE},
#endif
    {"convert a.png b.dds c.ktx --out-dir out --container dds -f rgba8888" ALONE},
    {"convert a.png b.dds --out-dir out --container ktx -f rgb888 --json" ALONE},
    {"info levels.ktx --json"},
    {"compare a.png c.ktx --min-psnr 1 --diff o.png"},
    {"compare f.ktx f.ktx --json"},
    {"validate levels.ktx"},
    {"formats"},
    {"formats --json"},
};

TEST_F(QonvertInjection, EndsAsDocumented) {
    for (const Command& command : kCommands) {
        Inject(command);
    }
}

}  // namespace
}  // namespace qonvert
