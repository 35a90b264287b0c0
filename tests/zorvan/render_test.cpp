// zorvan render and bench on a real EGL.
#include <cmath>

#include "tests/zorvan/tool.h"

namespace zorvan::tool {
namespace {

constexpr uint32_t kRed = 0xFF0000FF, kGreen = 0x00FF00FF, kBlue = 0x0000FFFF, kBlack = 0x000000FF;

class Render : public ZorvanTest {
  protected:
    // Renders a scene into out.png and reads it.
    Image Picture(std::string const& options, std::string const& scene = "scene.json") const {
        const ToolRun run = Run("render " + scene + " out.png " + options);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(run.err, "");
        return ReadPicture("out.png");
    }
};

TEST_F(Render, PlacesSpritesToThePixel) {
    const Image image = Picture("");
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

TEST_F(Render, OptionsSetTimeSizeColorsAndCamera) {
    const struct {
        char const* options;
        uint32_t x, y, color;
    } rows[] = {
        // The green square's edges, for the same second reached in four ways.
        {"--time 0.5", 157, 0, kBlue},
        {"--time 0.5", 158, 0, kGreen},
        {"--frames 15", 158, 0, kGreen},
        {"--frames 30 --fps 60", 173, 0, kGreen},
        {"--frames 1 --fps 4 --time 0.25", 174, 0, kBlue},
        {"--size 512x300", 64, 60, kRed},  // the camera's 256 units cover 512 pixels
        {"--background '#102030'", 0, 0, 0x102030FF},
        {"--camera2d 513x513", 16, 24, kRed},
        {"--surface 8888 --background '#00000000'", 0, 0, 0},
        {"--surface 888 --background '#00000000'", 0, 0, kBlack},
        {"--surface 565", 32, 48, kRed},
        // Without it the device's own camera shows units as pixels, whatever the size.
        {"--size 512x512 --camera2d none", 40, 56, kRed},
        {"--size 512x512 --camera2d none", 70, 100, kBlue},
        {"--supersample 2 --camera2d none", 40, 56, kRed},
        // A part of the picture, without alpha.
        {"--area 30,60,9x6", 1, 3, kBlue},
        {"--area 30,60,9x6", 2, 3, kRed},
        {"--area 30,60,9x6 --supersample 2", 2, 4, kBlue},
        {"--surface 8888 --background '#00000000' --area 0,0,3x3", 0, 0, kBlack},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(PixelAt(Picture(row.options), row.x, row.y), row.color) << row.options;
    }
    EXPECT_EQ(Picture("--size 512x300").height, 300u);
}

TEST_F(Render, SupersamplingAveragesALargerSurface) {
    EXPECT_TRUE(Picture("--supersample 3") == Picture(""));
    WriteText("tilted.json", R"({"version": 1, "size": [64, 64], "camera2d": [65, 65], "root": {"children": [
        {"class": "Sprite", "width": 40, "height": 40, "position": [32, 4, 0], "rotation": [0, 0, 40]}]}})");
    const Image small = Picture("--supersample 4", "tilted.json");
    const Image large = Picture("--size 256x256", "tilted.json");
    uint32_t shades = 0;
    for (uint32_t x = 0; x < 64; ++x) {
        for (uint32_t y = 0; y < 64; ++y) {
            uint32_t sum = 8;
            for (uint32_t n = 0; n < 16; ++n) {
                sum += PixelAt(large, 4 * x + n % 4, 4 * y + n / 4) >> 24;
            }
            ASSERT_EQ(PixelAt(small, x, y) >> 24, sum / 16) << x << ", " << y;
            shades += sum / 16 % 255 != 0 ? 1 : 0;
        }
    }
    EXPECT_GT(shades, 20u);
}

TEST_F(Render, TellsWhereNodesLie) {
    const auto json = Json(
        "render scene.json l%d.png --frames 14..15 --supersample 2 --locate runner --locate "
        "/root/children/0");
    ASSERT_EQ(json["places"].size(), 2u);
    const auto place = json["places"][1];
    EXPECT_EQ(place["frame"], 15);
    EXPECT_NEAR(place["nodes"]["runner"][0], 158, 0.1);
    EXPECT_NEAR(place["nodes"]["runner"][1], 0, 0.1);
    EXPECT_NEAR(place["nodes"]["/root/children/0"][0], 32, 0.1);
    EXPECT_NEAR(place["nodes"]["/root/children/0"][1], 48, 0.1);
}

TEST_F(Render, FramesHaveNumbersAndAreTheSameAlone) {
    EXPECT_TRUE(
        Shell("$TOOL render scene.json f_%04d.png --frames 9..12 && "
              "$TOOL render scene.json g%d.png --frames 12 && $TOOL render scene.json h.png --frames 12"));
    EXPECT_EQ(Names(), (std::vector<std::string>{"f_0009.png", "f_0010.png", "f_0011.png", "f_0012.png",
                                                 "g12.png", "h.png", "scene.json"}));
    EXPECT_TRUE(Shell("cmp g12.png h.png && cmp g12.png f_0012.png && ! cmp g12.png f_0011.png"));
}

TEST_F(Render, StreamsFramesToStandardOutput) {
    const Image picture = Picture("");
    const ToolRun rgba = Run("render scene.json - --raw rgba --frames 0..1 --json");
    ASSERT_EQ(rgba.out.size(), 2 * picture.rgba.size());
    EXPECT_EQ(rgba.out.substr(0, picture.rgba.size()), std::string(picture.rgba.begin(), picture.rgba.end()));
    EXPECT_TRUE(nlohmann::json::accept(rgba.err)) << rgba.err;

    const std::string header = "YUV4MPEG2 W256 H256 F24:1 Ip A1:1 C444\nFRAME\n";
    const ToolRun y4m = Run("render scene.json - --frames 0..2 --fps 24");
    const size_t plane = 256 * 256;
    ASSERT_EQ(y4m.out.size(), header.size() + 3 * 3 * plane + 2 * 6);
    EXPECT_EQ(y4m.out.substr(0, header.size()), header);
    // Blue at (0, 0), then red at (32, 48), as BT.601 defines them.
    const int expected[2][3] = {{41, 240, 110}, {81, 90, 240}};
    for (size_t i = 0; i < 6; ++i) {
        const size_t at = header.size() + i % 3 * plane + i / 3 * (48 * 256 + 32);
        EXPECT_EQ(static_cast<uint8_t>(y4m.out[at]), expected[i / 3][i % 3]) << i;
    }
}

TEST_F(Render, StatisticsAreJson) {
    const auto json =
        Json("render '" ZORVAN_SOURCE "/examples/hello.json' h%d.png --frames 0..3 --gl-info --size 64x40");
    EXPECT_EQ(json["frames"], 4);
    EXPECT_EQ(json["draw_calls"], 4 * 3);
    EXPECT_EQ(json["texture_bytes"], 4 * (640 * 400 + 256 * 256 + 160 * 192));
    EXPECT_EQ(json["width"], 64);
    EXPECT_GT(json["frame_ms"]["median"], 0);
    EXPECT_GE(json["frame_ms"]["p95"], json["frame_ms"]["median"]);
    EXPECT_NE(json["gl"]["version"].get<std::string>().find("OpenGL ES"), std::string::npos);
    EXPECT_NE(json["gl"]["plugin"].get<std::string>().find("libzorvanGraphics_alpha.so"), std::string::npos);
    const auto bench = Json("bench scene.json --frames 7");
    EXPECT_EQ(bench["sprites"], 2);
    EXPECT_EQ(bench["frames"], 7);
    EXPECT_EQ(bench["draw_calls"], 14);
    EXPECT_GT(bench["sprites_per_second"], 0);
}

TEST_F(Render, FailsInOneLine) {
    std::filesystem::create_directory(Path("folder.png"));
    const FailureRow rows[] = {
        {"render scene.json a.png --area 250,0,7x1", 1,
         "--area: got an end at 257, 1, expected one inside the 256x256 of the picture"},
        {"render scene.json a.png --locate walker", 1,
         "--locate: got 'walker', expected a node's name, or a path such as /root/children/0"},
        {"render scene.json a.png --size 16384x16384", 5,
         "EGL: got size 16384x16384, this display allows 4096x4096 at most"},
        {"render scene.json a.png --size 4000x10 --supersample 8", 5,
         "EGL: got size 32000x80, this display allows 4096x4096 at most"},
        {"render scene.json a.png --frames 0..2 --sheet 100x100", 1,
         "--sheet: got a sheet of 26004x26004 pixels, expected at most 16384 each way; see --size"},
        {"render scene.json folder.png", 2, "folder.png: cannot write: got a folder, expected a file"},
        {"render scene.json - --raw rgba >/dev/full", 2,
         "standard output: cannot write: No space left on device"},
        {"render scene.json - --size 8x8 >/dev/full", 2,
         "standard output: cannot write: No space left on device"},
    };
    ExpectFailures(rows);
}

TEST_F(Render, AtitcIsToldAboutOrDecodedByTheHost) {
    // Opaque orange without alpha on the left, half transparent red on the right.
    std::string orange, red;
    for (int i = 0; i < 16; ++i) {
        orange += "/4AA";  // a multiple of three bytes: no padding between the pixels
        red += i % 3 == 2 ? "/wAAgP8AAID/AACA" : "";
    }
    WriteText(
        "atitc.json",
        R"({"version": 1, "size": [16, 16], "camera2d": [17, 17], "textures": [
        {"name": "a", "format": "rgb888", "width": 4, "height": 4, "compress": true, "levels": [{"data": ")" +
            orange +
            R"("}]}, {"name": "b", "format": "rgba8888", "width": 4, "height": 4, "compress": true, "levels": [{"data": ")" +
            red + R"(/wAAgA=="}]}], "root": {"children": [
        {"class": "Sprite", "width": 8, "height": 16, "texture": "a"},
        {"class": "Sprite", "width": 8, "height": 16, "texture": "b", "position": [8, 0, 0]}]}})");
    const Image image = Picture("--decode-atitc", "atitc.json");
    const struct {
        uint32_t x;
        int colors[3];
    } pixels[] = {{4, {255, 128, 0}}, {12, {136, 0, 0}}};  // alpha has 16 levels: 8 / 15
    for (auto const& [x, colors] : pixels) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(PixelAt(image, x, 8) >> (24 - 8 * i) & 255, colors[i], 4) << x << ", " << i;
        }
    }
    const ToolRun told = Run("render atitc.json a.png --gl-info");
    EXPECT_EQ(told.code, 0);
    if (told.out.find("llvmpipe") != std::string::npos) {
        EXPECT_EQ(
            told.err,
            "zorvan: warning: this driver cannot show ATITC textures: 'a' (atc-rgb) and 1 more will draw "
            "black; --decode-atitc shows them\n");
    }
}

TEST_F(Render, SheetsSpreadOverTheFrames) {
    Image sheet = Picture("--frames 0..30 --sheet 3x2");
    EXPECT_EQ(sheet.width, 3u * 260 + 4);
    EXPECT_EQ(sheet.height, 2u * 260 + 4);
    for (uint32_t cell = 0; cell < 6; ++cell) {  // frames 0, 6, 12, 18, 24, 30; the square moves by 2 a frame
        const uint32_t x = 4 + cell % 3 * 260 + 128 + 12 * cell, y = 4 + cell / 3 * 260;
        EXPECT_EQ(PixelAt(sheet, x, y), kGreen) << cell;
        EXPECT_EQ(PixelAt(sheet, x - 1, y), kBlue) << cell;
        EXPECT_EQ(PixelAt(sheet, x, y - 1), kBlack) << cell;
    }
    // Fewer frames than cells leave room.
    sheet = Picture("--frames 5..6 --sheet 2x2");
    EXPECT_EQ(PixelAt(sheet, 264 + 140, 4), kGreen);
    EXPECT_EQ(PixelAt(sheet, 4, 264), kBlack);
}

// Mean difference of all channels, or a huge number for different sizes.
double Difference(Image const& a, Image const& b) {
    double sum = a.width == b.width && a.height == b.height ? 0 : 1e99;
    for (size_t i = 0; i < a.rgba.size() && sum < 1e99; ++i) {
        sum += std::abs(a.rgba[i] - b.rgba[i]);
    }
    return sum / static_cast<double>(a.rgba.size());
}

TEST_F(Render, ExamplesLookLikeTheirPictures) {
    struct Example {
        std::string name, time;
        bool letters;
    };
    const bool fonts =
        std::filesystem::exists("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf") &&
        std::filesystem::exists("/usr/share/fonts/truetype/liberation2/LiberationSerif-Italic.ttf");
    const Example examples[] = {{"hello", "0", false},   {"transfer-modes", "0", false},
                                {"camera", "0", false},  {"crowd", "0", false},
                                {"showcase", "4", true}, {"timelines", "3", true},
                                {"text", "0", true}};
    for (auto const& [name, time, letters] : examples) {
        if (letters && !fonts) {
            continue;  // Debian: fonts-dejavu-core, fonts-liberation2
        }
        const Image image = Picture("--time " + time, "'" ZORVAN_BINARY "/examples/" + name + ".json'");
        // Releases of FreeType differ in the edges of letters.
        EXPECT_LT(Difference(image, ReadPicture(ZORVAN_SOURCE "/docs/images/" + name + ".png")),
                  letters ? 0.5 : 0.25)
            << name;
    }
}

TEST_F(Render, GeneratedExamplesAreTheStoredOnes) {
    const std::filesystem::path stored = ZORVAN_SOURCE "/examples", built = ZORVAN_BINARY "/examples";
    size_t images = 0;
    for (auto const& entry : std::filesystem::directory_iterator(stored / "images")) {
        EXPECT_LT(
            Difference(ReadPicture(entry.path()), ReadPicture(built / "images" / entry.path().filename())),
            0.01)
            << entry.path();
        ++images;
    }
    EXPECT_GE(images, 20u);
    for (char const* name : {"transfer-modes.json", "camera.json"}) {
        EXPECT_EQ(Read(stored / name), Read(built / name)) << name;
    }
}

}  // namespace
}  // namespace zorvan::tool
