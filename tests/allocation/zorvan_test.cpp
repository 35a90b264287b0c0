// zorvan without one of its allocations.
#include "core/image_file.h"
#include "tests/allocation/injection.h"
#include "tests/qonvert/samples.h"

namespace zorvan::tool {
namespace {

constexpr char kFont[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

constexpr char kScene[] = R"({
  "version": 1, "size": [48, 32], "camera2d": [49, 33], "background": [0, 0, 1, 1],
  "textures": [{"name": "pane", "file": "pane.png"}],
  "fonts": [{"name": "sans", "file": "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "size": 12}],
  "root": {"length": 30, "rate": 30, "mode": "once",
    "tracks": [{"node": "runner", "property": "position",
                "keys": [{"frame": 0, "value": [12, 0, 0]}, {"frame": 30, "value": [40, 0, 0]}]}],
    "children": [
      {"class": "Sprite", "width": 16, "height": 16, "position": [32, 8, 0], "texture": "pane"},
      {"class": "Text", "font": "sans", "string": "Ag AV", "position": [2, 12, 0]},
      {"class": "Sprite", "name": "runner", "width": 9, "height": 9, "color": [0, 1, 0, 1], "transferMode": 3}]}})";

class ZorvanInjection : public InjectionTest {
  protected:
    ZorvanInjection() : InjectionTest(PROGRAM, 6) {
        Write("scene.json", std::string_view(kScene));
        Write("old.png", std::string_view("old"));
        const Image pane{4, 4, std::vector<uint8_t>(64, 200)};
        EXPECT_EQ(WritePng(Path("pane.png"), pane), "");
#ifdef QONVERT_JPEG
        Write("photo.jpg", qonvert::JpegSample(17, 9, false));
        std::string scene = kScene;
        scene.replace(scene.find("pane.png"), 8, "photo.jpg");
        Write("photo.json", scene);
#endif
    }
    void SetUp() override {
        InjectionTest::SetUp();
        if (!std::filesystem::exists(kFont)) {
            GTEST_SKIP() << "Needs " << kFont;
        }
    }
};

constexpr Command kCommands[] = {
    {.arguments = "info scene.json"},
    {.arguments = "info scene.json --json"},
#ifdef QONVERT_JPEG
    {.arguments = "info photo.json"},
#endif
    {.arguments = "render scene.json old.png", .sameText = false, .traces = true},
    {.arguments = "render scene.json o.png --area 2,4,40x20 --locate runner",
     .sameText = false,
     .traces = true},
    {.arguments = "render scene.json o.png --frames 0..3 --sheet 2x2", .sameText = false, .traces = true},
};

TEST_F(ZorvanInjection, EndsAsDocumented) {
    for (const Command& command : kCommands) {
        Inject(command);
    }
}

}  // namespace
}  // namespace zorvan::tool
