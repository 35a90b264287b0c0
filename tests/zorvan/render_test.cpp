// zorvan render and bench on a real EGL.
#include <cmath>
#include <nlohmann/json.hpp>

#include "core/image_file.h"
#include "tests/zorvan/run_tool.h"

namespace zorvan::tool {
namespace {

using Json = nlohmann::json;

// 256x256 pixels, one unit each: a red square of 16 pixels at (32, 48), and a green one that is at
// x = 128 at first and 60 pixels further right after a second.
constexpr char const* kScene = R"({
  "version": 1, "size": [256, 256], "camera2d": [257, 257], "background": [0, 0, 1, 1],
  "root": {"length": 30, "rate": 30, "mode": "once",
    "tracks": [{"node": "runner", "property": "position",
                "keys": [{"frame": 0, "value": [128, 0, 0]}, {"frame": 30, "value": [188, 0, 0]}]}],
    "children": [
      {"class": "Sprite", "width": 16, "height": 16, "position": [32, 48, 0], "color": [1, 0, 0, 1]},
      {"class": "Sprite", "name": "runner", "width": 16, "height": 16, "color": [0, 1, 0, 1]}]}})";

constexpr uint32_t kRed = 0xFF0000FF;
constexpr uint32_t kGreen = 0x00FF00FF;
constexpr uint32_t kBlue = 0x0000FFFF;

uint32_t PixelAt(Image const& image, uint32_t x, uint32_t y) {
    uint8_t const* p = &image.rgba[4 * (size_t{y} * image.width + x)];
    return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

class Render : public ToolTest {
  protected:
    // Renders the scene above with more options and reads the picture back.
    Image Picture(std::vector<std::string> const& options) {
        std::vector<std::string> arguments = {"render", File("scene.json", kScene), Path("a.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ToolRun run = RunTool(arguments);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(Files(), (std::vector<std::string>{"a.png", "scene.json"}));
        Image image;
        EXPECT_EQ(ReadImage(Path("a.png"), image), "");
        return image;
    }
};

TEST_F(Render, PlacesSpritesToThePixel) {
    const Image image = Picture({});
    ASSERT_EQ(image.width, 256u);
    ASSERT_EQ(image.height, 256u);
    const struct {
        uint32_t x, y, color;
    } pixels[] = {{32, 48, kRed},  {47, 63, kRed},   {31, 48, kBlue},   {48, 48, kBlue},   {32, 47, kBlue},
                  {32, 64, kBlue}, {128, 0, kGreen}, {143, 15, kGreen}, {127, 0, kBlue},   {144, 0, kBlue},
                  {0, 0, kBlue},   {255, 0, kBlue},  {0, 255, kBlue},   {255, 255, kBlue}, {128, 16, kBlue}};
    for (auto const& pixel : pixels) {
        EXPECT_EQ(PixelAt(image, pixel.x, pixel.y), pixel.color) << pixel.x << ", " << pixel.y;
    }
}

TEST_F(Render, TimeIsFrameOverRatePlusStart) {
    // The green square's left edge, for the same second reached in four ways.
    const std::vector<std::vector<std::string>> ways = {{"--time", "0.5"},
                                                        {"--frames", "15"},
                                                        {"--frames", "30", "--fps", "60"},
                                                        {"--frames", "1", "--fps", "4", "--time", "0.25"}};
    for (auto const& way : ways) {
        const Image image = Picture(way);
        EXPECT_EQ(PixelAt(image, 158, 0), kGreen);
        EXPECT_EQ(PixelAt(image, 157, 0), kBlue);
        EXPECT_EQ(PixelAt(image, 174, 0), kBlue);
    }
}

TEST_F(Render, OptionsOverrideTheScene) {
    const Image large = Picture({"--size", "512x300"});
    EXPECT_EQ(large.width, 512u);
    EXPECT_EQ(large.height, 300u);
    EXPECT_EQ(PixelAt(large, 64, 60), kRed);  // the camera's 256 units cover 512 pixels
    EXPECT_EQ(PixelAt(Picture({"--background", "#102030"}), 0, 0), 0x102030FFu);
    EXPECT_EQ(PixelAt(Picture({"--camera2d", "513x513"}), 16, 24), kRed);
    EXPECT_EQ(PixelAt(Picture({"--surface", "8888", "--background", "#00000000"}), 0, 0), 0u);
    EXPECT_EQ(PixelAt(Picture({"--surface", "888", "--background", "#00000000"}), 0, 0), 0x000000FFu);
    EXPECT_EQ(PixelAt(Picture({"--surface", "565"}), 32, 48), kRed);
    // Without it the device's own camera shows units as pixels, whatever the size.
    const Image own = Picture({"--size", "512x512", "--camera2d", "none"});
    EXPECT_EQ(PixelAt(own, 40, 56), kRed);
    EXPECT_EQ(PixelAt(own, 70, 100), kBlue);
    // More pixels on the surface do not change what the cameras see.
    EXPECT_EQ(PixelAt(Picture({"--supersample", "2", "--camera2d", "none"}), 40, 56), kRed);
    EXPECT_TRUE(Picture({"--supersample", "3"}) == Picture({}));
}

TEST_F(Render, SupersamplingSmoothsEdges) {
    const std::string scene = File("tilted.json", R"({"version": 1, "size": [64, 64], "camera2d": [65, 65],
        "root": {"children": [{"class": "Sprite", "width": 40, "height": 40, "position": [32, 4, 0],
                               "rotation": [0, 0, 40]}]}})");
    const auto shades = [&](char const* factor) {
        Image image;
        EXPECT_EQ(RunTool({"render", scene, Path("a.png"), "--supersample", factor}).code, 0);
        EXPECT_EQ(ReadImage(Path("a.png"), image), "");
        size_t count = 0;
        for (size_t i = 0; i < image.rgba.size(); i += 4) {
            count += image.rgba[i] != 0 && image.rgba[i] != 255 ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(shades("1"), 0u);
    EXPECT_GT(shades("4"), 20u);
}

TEST_F(Render, NamesFramesByNumber) {
    const std::string scene = File("scene.json", kScene);
    ASSERT_EQ(RunTool({"render", scene, Path("f_%04d.png"), "--frames", "9..11", "--size", "16x16"}).code, 0);
    ASSERT_EQ(RunTool({"render", scene, Path("g%d.png"), "--frames", "0..1", "--size", "16x16"}).code, 0);
    EXPECT_EQ(Files(), (std::vector<std::string>{"f_0009.png", "f_0010.png", "f_0011.png", "g0.png", "g1.png",
                                                 "scene.json"}));
}

TEST_F(Render, FramesAreTheSameAloneAndInARow) {
    const std::string scene = File("scene.json", kScene);
    ASSERT_EQ(RunTool({"render", scene, Path("row%d.png"), "--frames", "0..12"}).code, 0);
    ASSERT_EQ(RunTool({"render", scene, Path("alone.png"), "--frames", "12"}).code, 0);
    ASSERT_EQ(RunTool({"render", scene, Path("again.png"), "--frames", "12"}).code, 0);
    const std::string alone = ReadText(Path("alone.png"));
    EXPECT_EQ(alone, ReadText(Path("again.png")));
    EXPECT_EQ(alone, ReadText(Path("row12.png")));
    EXPECT_NE(alone, ReadText(Path("row11.png")));
}

TEST_F(Render, StreamsFramesToStandardOutput) {
    const std::string scene = File("scene.json", kScene);
    Image picture = Picture({});
    const ToolRun rgba = RunTool({"render", scene, "-", "--raw", "rgba", "--frames", "0..1", "--json"});
    ASSERT_EQ(rgba.code, 0);
    ASSERT_EQ(rgba.out.size(), 2 * picture.rgba.size());
    EXPECT_EQ(rgba.out.substr(0, picture.rgba.size()), std::string(picture.rgba.begin(), picture.rgba.end()));
    EXPECT_FALSE(Json::parse(rgba.err, nullptr, false).is_discarded()) << rgba.err;

    const std::string header = "YUV4MPEG2 W256 H256 F24:1 Ip A1:1 C444\n";
    const ToolRun y4m = RunTool({"render", scene, "-", "--frames", "0..2", "--fps", "24"});
    ASSERT_EQ(y4m.code, 0);
    const size_t plane = 256 * 256;
    ASSERT_EQ(y4m.out.size(), header.size() + 3 * (6 + 3 * plane));
    EXPECT_EQ(y4m.out.substr(0, header.size() + 6), header + "FRAME\n");
    // Blue, then red at (32, 48), as BT.601 defines them.
    const auto sample = [&](size_t number, size_t x, size_t y) {
        return static_cast<int>(
            static_cast<uint8_t>(y4m.out[header.size() + 6 + number * plane + y * 256 + x]));
    };
    EXPECT_EQ(sample(0, 0, 0), 41);
    EXPECT_EQ(sample(1, 0, 0), 240);
    EXPECT_EQ(sample(2, 0, 0), 110);
    EXPECT_EQ(sample(0, 32, 48), 81);
    EXPECT_EQ(sample(1, 32, 48), 90);
    EXPECT_EQ(sample(2, 32, 48), 240);
}

TEST_F(Render, StatisticsAreJson) {
    const ToolRun run = RunTool({"render", Example("hello.json"), Path("h%d.png"), "--frames", "0..3",
                                 "--json", "--gl-info", "--size", "64x40"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Json json = Json::parse(run.out, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << run.out;
    EXPECT_EQ(json["frames"], 4);
    EXPECT_EQ(json["draw_calls"], 4 * 3);
    EXPECT_EQ(json["texture_bytes"], 4 * (640 * 400 + 256 * 256 + 160 * 192));
    EXPECT_EQ(json["width"], 64);
    EXPECT_GT(json["frame_ms"]["median"], 0);
    EXPECT_GE(json["frame_ms"]["p95"], json["frame_ms"]["median"]);
    EXPECT_NE(json["gl"]["version"].get<std::string>().find("OpenGL ES"), std::string::npos);
    EXPECT_NE(json["gl"]["plugin"].get<std::string>().find("libzorvanGraphics_alpha.so"), std::string::npos);
}

TEST_F(Render, BenchCountsSpritesAndDraws) {
    const ToolRun run = RunTool({"bench", File("scene.json", kScene), "--frames", "7", "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Json json = Json::parse(run.out, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << run.out;
    EXPECT_EQ(json["sprites"], 2);
    EXPECT_EQ(json["frames"], 7);
    EXPECT_EQ(json["draw_calls"], 14);
    EXPECT_GT(json["sprites_per_second"], 0);
    EXPECT_EQ(Files(), std::vector<std::string>{"scene.json"});
}

TEST_F(Render, WhatTheMachineCannotDo) {
    const std::string scene = File("scene.json", kScene);
    ExpectFailure(RunTool({"render", scene, Path("a.png"), "--size", "16384x16384"}), 5,
                  "got size 16384x16384");
    ExpectFailure(RunTool({"render", scene, Path("a.png"), "--size", "4000x10", "--supersample", "8"}), 5,
                  "got size 32000x80");
    EXPECT_EQ(Files(), std::vector<std::string>{"scene.json"});
}

TEST_F(Render, UnwritableOutput) {
    const std::string scene = File("scene.json", kScene);
    std::filesystem::create_directory(Path("folder.png"));
    ExpectFailure(RunTool({"render", scene, Path("folder.png")}), 2, "folder.png: cannot write");
    EXPECT_EQ(Files(), (std::vector<std::string>{"folder.png", "scene.json"}));
    ExpectFailure(RunTool({"render", scene, "-", "--raw", "rgba"}, "/dev/full"), 2,
                  "standard output: cannot write");
    ExpectFailure(RunTool({"render", scene, "-", "--size", "8x8"}, "/dev/full"), 2,
                  "standard output: cannot write");
}

TEST_F(Render, UnknownTextureFormatIsToldAbout) {
    const std::string scene = File("scene.json", R"({"version": 1, "size": [16, 16],
        "textures": [{"name": "leaf", "format": "atc-rgb", "width": 4, "height": 4,
                      "levels": [{"data": "AAAAAAAAAAA="}]}],
        "root": {"children": [{"class": "Sprite", "width": 4, "height": 4, "texture": "leaf"}]}})");
    const ToolRun info = RunTool({"render", scene, Path("a.png"), "--gl-info"});
    EXPECT_EQ(info.code, 0);
    if (info.out.find("llvmpipe") != std::string::npos) {
        EXPECT_NE(
            info.err.find("cannot show ATITC textures: 'leaf' (atc-rgb) will draw black; --decode-atitc"),
            std::string::npos)
            << info.err;
    }
}

TEST_F(Render, AtitcCanBeDecodedByTheHost) {
    // Opaque orange without alpha on the left, half transparent red on the right.
    std::string orange, red;
    for (int i = 0; i < 16; ++i) {
        orange += "/4AA";  // a multiple of three bytes: no padding between the pixels
    }
    for (int i = 0; i < 5; ++i) {
        red += "/wAAgP8AAID/AACA";
    }
    red += "/wAAgA==";
    const std::string scene =
        File("scene.json", R"({"version": 1, "size": [16, 16], "camera2d": [17, 17], "textures": [
        {"name": "a", "format": "rgb888", "width": 4, "height": 4, "compress": true, "levels": [{"data": ")" +
                               orange + R"("}]},
        {"name": "b", "format": "rgba8888", "width": 4, "height": 4, "compress": true, "levels": [{"data": ")" +
                               red + R"("}]}], "root": {"children": [
        {"class": "Sprite", "width": 8, "height": 16, "texture": "a"},
        {"class": "Sprite", "width": 8, "height": 16, "texture": "b", "position": [8, 0, 0]}]}})");
    const ToolRun run = RunTool({"render", scene, Path("a.png"), "--decode-atitc"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.err, "");
    Image image;
    ASSERT_EQ(ReadImage(Path("a.png"), image), "");
    const struct {
        uint32_t x;
        int red, green, blue;
    } pixels[] = {{4, 255, 128, 0}, {12, 136, 0, 0}};  // alpha has 16 levels: 8 / 15
    for (auto const& pixel : pixels) {
        uint8_t const* p = &image.rgba[4 * (size_t{8} * image.width + pixel.x)];
        EXPECT_NEAR(p[0], pixel.red, 4);
        EXPECT_NEAR(p[1], pixel.green, 4);
        EXPECT_NEAR(p[2], pixel.blue, 4);
    }
}

TEST_F(Render, SheetsSpreadOverTheFrames) {
    const std::string scene = File("scene.json", kScene);
    const ToolRun run = RunTool({"render", scene, Path("sheet.png"), "--frames", "0..30", "--sheet", "3x2"});
    ASSERT_EQ(run.code, 0) << run.err;
    Image sheet;
    ASSERT_EQ(ReadImage(Path("sheet.png"), sheet), "");
    EXPECT_EQ(sheet.width, 3u * 260 + 4);
    EXPECT_EQ(sheet.height, 2u * 260 + 4);
    for (uint32_t cell = 0; cell < 6; ++cell) {  // frames 0, 6, 12, 18, 24, 30; the square moves by 2 a frame
        const uint32_t x = 4 + cell % 3 * 260 + 128 + 12 * cell;
        const uint32_t y = 4 + cell / 3 * 260;
        EXPECT_EQ(PixelAt(sheet, x, y), kGreen) << cell;
        EXPECT_EQ(PixelAt(sheet, x - 1, y), kBlue) << cell;
        EXPECT_EQ(PixelAt(sheet, x, y - 1), 0x000000FFu) << cell;
    }
    // Fewer frames than cells leave room.
    ASSERT_EQ(RunTool({"render", scene, Path("sheet.png"), "--frames", "5..6", "--sheet", "2x2"}).code, 0);
    ASSERT_EQ(ReadImage(Path("sheet.png"), sheet), "");
    EXPECT_EQ(PixelAt(sheet, 264 + 140, 4), kGreen);
    EXPECT_EQ(PixelAt(sheet, 4, 264), 0x000000FFu);
}

TEST_F(Render, FilmsAreMadeByFfmpeg) {
    if (std::system("command -v ffmpeg ffprobe >/dev/null") != 0) {
        GTEST_SKIP() << "needs the program ffmpeg";
    }
    const std::string scene = File("scene.json", kScene);
    for (std::string name : {"a.gif", "a.mp4", "a.WebM"}) {
        SCOPED_TRACE(name);
        const ToolRun run =
            RunTool({"render", scene, Path(name), "--frames", "0..9", "--fps", "10", "--size", "64x48"});
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(Files(), (std::vector<std::string>{name, "scene.json"}));
        const std::string probe =
            "ffprobe -v error -count_frames -show_entries stream=width,height,nb_read_frames "
            "-of csv=p=0 " +
            Path(name) + " >" + Path("probe");
        ASSERT_EQ(std::system(probe.c_str()), 0);
        EXPECT_EQ(ReadText(Path("probe")), "64,48,10\n");
        // And back: each picture replaces the one before, up to the last.
        ASSERT_EQ(
            std::system(("ffmpeg -v error -i " + Path(name) + " -update 1 " + Path("last.png")).c_str()), 0);
        Image image;
        ASSERT_EQ(ReadImage(Path("last.png"), image), "");
        const uint32_t pixel = PixelAt(image, 48, 1);  // the green square, at 182 units
        EXPECT_GT(pixel >> 16 & 255, 180u);
        EXPECT_LT(pixel >> 24, 80u);
        for (std::string const& file : {name, std::string("probe"), std::string("last.png")}) {
            std::filesystem::remove(Path(file));
        }
    }
}

TEST_F(Render, FilmsThatFailLeaveNothingBehind) {
    const std::string scene = File("scene.json", kScene);
    const std::string path = std::getenv("PATH");
    setenv("PATH", Path("bin").c_str(), 1);
    ExpectFailure(RunTool({"render", scene, Path("a.gif")}), 5, "ffmpeg, which is not on the path");
    // One that stops at once, with a reason.
    std::filesystem::create_directory(Path("bin"));
    File("bin/ffmpeg", "#!/bin/sh\necho first >&2; echo no such codec >&2; exit 1\n");
    std::filesystem::permissions(Path("bin/ffmpeg"), std::filesystem::perms::owner_all);
    ExpectFailure(RunTool({"render", scene, Path("a.mp4"), "--frames", "0..9"}), 2,
                  "a.mp4: cannot write: ffmpeg: no such codec");
    setenv("PATH", path.c_str(), 1);
    ExpectFailure(RunTool({"render", scene, Path("no/a.webm")}), 2, "there is no folder");
    EXPECT_EQ(Files(), (std::vector<std::string>{"bin", "scene.json"}));
}

// Mean difference of all channels, or a huge number for different sizes.
double Difference(Image const& a, Image const& b) {
    if (a.width != b.width || a.height != b.height) {
        return 1e9;
    }
    double sum = 0;
    for (size_t i = 0; i < a.rgba.size(); ++i) {
        sum += std::abs(a.rgba[i] - b.rgba[i]);
    }
    return sum / static_cast<double>(a.rgba.size());
}

TEST_F(Render, ExamplesLookLikeTheirPictures) {
    const struct {
        std::string name;
        char const* time;
    } pictures[] = {{"hello", "0"}, {"transfer-modes", "0"}, {"camera", "0"},
                    {"crowd", "0"}, {"showcase", "4"},       {"timelines", "3"}};
    for (auto const& [name, time] : pictures) {
        SCOPED_TRACE(name);
        const std::string scene = std::string(ZORVAN_BUILT_EXAMPLES) + "/" + name + ".json";
        const ToolRun run = RunTool({"render", scene, Path(name + ".png"), "--time", time});
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(run.err, "");
        Image now, documented;
        ASSERT_EQ(ReadImage(Path(name + ".png"), now), "");
        ASSERT_EQ(ReadImage(std::string(ZORVAN_PICTURES) + "/" + name + ".png", documented), "");
        EXPECT_LT(Difference(now, documented), 0.25);
    }
}

TEST_F(Render, GeneratedExamplesAreTheStoredOnes) {
    const std::filesystem::path stored = ZORVAN_EXAMPLES;
    const std::filesystem::path built = ZORVAN_BUILT_EXAMPLES;
    size_t images = 0;
    for (auto const& entry : std::filesystem::directory_iterator(stored / "images")) {
        SCOPED_TRACE(entry.path());
        Image a, b;
        ASSERT_EQ(ReadImage(entry.path(), a), "");
        ASSERT_EQ(ReadImage(built / "images" / entry.path().filename(), b), "");
        EXPECT_LT(Difference(a, b), 0.01);
        ++images;
    }
    EXPECT_GE(images, 20u);
    for (char const* name : {"hello.json", "transfer-modes.json", "camera.json"}) {
        EXPECT_EQ(ReadText(stored / name), ReadText(built / name)) << name;
    }
}

}  // namespace
}  // namespace zorvan::tool
