// The program zorvan, with scenes for it.
#pragma once

#include <nlohmann/json.hpp>

#include "core/image_file.h"
#include "tests/tool_test.h"

namespace zorvan::tool {

// 256x256 pixels, one unit each: a red square of 16 pixels at (32, 48), and a green one that is at
// x = 128 at first and 60 pixels further right after a second.
inline constexpr char kScene[] = R"({
  "version": 1, "size": [256, 256], "camera2d": [257, 257], "background": [0, 0, 1, 1],
  "root": {"length": 30, "rate": 30, "mode": "once",
    "tracks": [{"node": "runner", "property": "position",
                "keys": [{"frame": 0, "value": [128, 0, 0]}, {"frame": 30, "value": [188, 0, 0]}]}],
    "children": [
      {"class": "Sprite", "width": 16, "height": 16, "position": [32, 48, 0], "color": [1, 0, 0, 1]},
      {"class": "Sprite", "name": "runner", "width": 16, "height": 16, "color": [0, 1, 0, 1]}]}})";

class ZorvanTest : public ToolTest {
  protected:
    ZorvanTest() : ToolTest(ZORVAN_TOOL) { WriteText("scene.json", kScene); }

    void WriteText(const std::string& name, std::string_view text) const { Write(name, text); }
    // Runs a command that must succeed; returns the JSON that it prints.
    nlohmann::json Json(const std::string& arguments) const {
        const ToolRun run = Run(arguments + " --json");
        EXPECT_EQ(run.code, 0) << run.err;
        return nlohmann::json::parse(run.out, nullptr, false);
    }
    Image ReadPicture(const std::string& path) const {
        Image image{1, 1, {0, 0, 0, 0}};
        EXPECT_EQ(ReadImage(Path(path), image), "");
        return image;
    }
};

// As 0xRRGGBBAA.
inline uint32_t PixelAt(Image const& image, uint32_t x, uint32_t y) {
    uint8_t const* p = &image.rgba[4 * (size_t{y} * image.width + x)];
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

}  // namespace zorvan::tool
