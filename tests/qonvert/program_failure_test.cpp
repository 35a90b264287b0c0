// Every failure is one line, its documented exit code, and nothing left behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/qonvert/samples.h"
#include "tests/qonvert/tool.h"

namespace qonvert {
namespace {

class Failure : public ToolTest {
  protected:
    Failure() {
        WritePicture("a.png", 8, 8);
        WritePicture("taken.png", 8, 8);
        std::filesystem::create_directory(Path("sub"));
        std::filesystem::copy(Path("a.png"), Path("sub/a.png"));
        const TextureFile etc = NoiseTexture(FMT_ETC1_RGB8, 8, 8);
        Bytes ktx = WriteContainer(*FindContainer("ktx"), etc, {});
        Write("ktx.ktx", ktx);
        PatchWord(ktx, 36, 0x7FFFFFFF);
        Write("huge.ktx", ktx);
        Write("short.pkm", Bytes{'P', 'K', 'M', ' ', '1'});
        Write("noise.dds", Noise(300, 3));
        Write("noise", Noise(300, 4));
        Write("empty.png", Bytes{});
        Write("lost.txt", Bytes{'n', 'o', '.', 'p', 'n', 'g', '\n'});
        Write("px.raw", Noise(30, 5));
    }
};

struct Row {
    const char* arguments;
    int exit;
    const char* says;
};

const Row kRows[] = {
    // Usage.
    {"", 1, "subcommand is required"},
    {"transmogrify", 1, "--help"},
    {"convert", 1, "required"},
    {"convert a.png", 1, "an output are needed"},
    {"convert a.png b.ktx --formt rgb565", 1, "--formt"},
    {"convert a.png b.ktx --format rgb56", 1, "nearest are RGB565"},
    {"convert a.png b.xyz", 1, "does not name a container"},
    {"convert a.png -", 1, "standard output does not name a container"},
    {"convert a.png b.ktx --container zip", 1, "\"zip\""},
    {"convert a.png b.ktx --scale 0x8", 1, "--scale takes"},
    {"convert a.png b.ktx --scale 8", 1, "--scale takes"},
    {"convert a.png b.ktx --scale -50%", 1, "--scale takes"},
    {"convert a.png b.ktx --scale 50% --filter lanczos", 1, "lanczos"},
    {"convert a.png b.ktx --filter box", 1, "--scale"},
    {"convert a.png b.ktx --wrap", 1, "--normal-map"},
    {"convert a.png b.ktx --normal-map sobel --strength 0", 1, "--strength takes"},
    {"convert a.png b.ktx --normal-map sobel --strength 1e99", 1, "--strength takes"},
    {"convert a.png b.ktx --mips=0", 1, "--mips takes"},
    {"convert a.png b.ktx --mips=many", 1, "--mips takes"},
    {"convert a.png b.ktx --threads many", 1, "--threads"},
    {"convert px.raw b.ktx", 1, "--raw WxH:FORMAT"},
    {"convert px.raw b.ktx --raw 8x8", 1, "--raw takes"},
    {"convert px.raw b.ktx --raw 8x8:rgb", 1, "nearest"},
    {"convert a.png ktx.ktx b.dds", 1, "2 inputs"},
    {"convert a.png sub/a.png --out-dir new", 1, "would both become"},
    {"convert - --out-dir new <a.png", 1, "standard input has no name"},
    {"compare - - <a.png", 1, "only one"},
    {"info", 1, "required"},
    // Input and output.
    {"convert none.png b.ktx", 2, "none.png: No such file"},
    {"convert a.png taken.png", 2, "taken.png: exists"},
    {"convert none.png sub --container png", 2, "none.png"},
    {"convert a.png nowhere/b.ktx", 2, "nowhere/b.ktx"},
    {"convert @none.txt --out-dir new", 2, "none.txt"},
    {"convert @lost.txt --out-dir sub", 2, "no.png"},
    {"convert sub b.ktx", 2, "sub: Is a directory"},
    {"info none.png", 2, "none.png"},
    {"compare a.png taken.png --diff taken.png", 2, "exists"},
    // Bad files.
    {"convert huge.ktx b.dds", 3, "huge.ktx: error 104"},
    {"convert short.pkm b.ktx", 3, "short.pkm: error 101: version: got 1 bytes left in the file, expected 2"},
    {"convert noise.dds b.ktx", 3, "noise.dds: error 102"},
    {"convert noise b.ktx", 3, "noise: error 110"},
    {"convert empty.png b.ktx", 3, "empty.png: error 101"},
    {"convert - b.ktx <empty.png", 3, "standard input: error 110"},
    {"convert px.raw b.ktx --raw 8x8:rgb565", 3, "px.raw: error 105"},
    {"convert px.raw b.ktx --raw 7x4:l8", 3, "px.raw: error"},
    {"info huge.ktx", 3, "error 104"},
    {"compare a.png huge.ktx", 3, "huge.ktx: error 104"},
    // Not supported.
    {"convert a.png b.pkm --format rgb565", 5, "these can: ktx, dds, raw"},
    {"convert a.png b.dds --format rgba16f", 5, "these can: ktx, raw"},
    {"convert a.png b.png --format p1_rgba8888 --mips", 5, "png holds one level"},
    {"convert a.png b.ktx --format p8_rgb888 --mips", 5, "one colour table"},
    {"convert a.png b.jpg", 5, "only read"},
    {"convert a.png b.dds --assign-origin bottom-left", 5, "records no origin"},
    {"convert a.png b.ktx --scale 70000x70000", 5, "70000 x 70000"},
};

TEST_F(Failure, IsOneLineItsExitCodeAndNoFile) {
    const std::set<std::string> before = Names();
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.arguments);
        const ToolResult result = Run(row.arguments);
        EXPECT_EQ(result.exit, row.exit);
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        if (std::string(row.arguments).find("--out-dir sub") == std::string::npos) {
            EXPECT_EQ(result.out, "");
        }
        std::set<std::string> after = Names();
        after.erase("sub/a.png");
        after.insert("sub/a.png");
        EXPECT_EQ(after, before);
    }
}

TEST_F(Failure, IsAnObjectWithJson) {
    const ToolResult result = Run("info huge.ktx --json");
    EXPECT_EQ(result.exit, 3);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["error"]["exit"], 3);
    EXPECT_EQ(nlohmann::json::parse(Run("convert huge.ktx b.dds --json").out)["files"][0]["error"]["exit"],
              3);
}

TEST_F(Failure, ValidateListsFindingsWithTheirNumbers) {
    Bytes file = Read("ktx.ktx");
    PatchWord(file, 32, 0x1908);  // base format: a warning
    file.pop_back();              // and a level cut short
    Write("two.ktx", file);
    const ToolResult result = Run("validate two.ktx --json");
    EXPECT_EQ(result.exit, 3);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["valid"], false);
    ASSERT_EQ(json["findings"].size(), 2u);
    EXPECT_EQ(json["findings"][0]["number"], 303);
    EXPECT_EQ(json["findings"][0]["severity"], "warning");
    EXPECT_EQ(json["findings"][1]["number"], 105);
    EXPECT_EQ(json["findings"][1]["got"], "31 bytes left in the file");
    EXPECT_EQ(json["findings"][1]["expected"], "32");
    EXPECT_EQ(Run("validate ktx.ktx").exit, 0);
    PatchWord(file, 52, 6);
    Write("cube.ktx", file);
    EXPECT_EQ(Run("validate cube.ktx").exit, 5);
}

TEST_F(Failure, FullDeviceIsReported) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no /dev/full";
    }
    EXPECT_EQ(Run("convert a.png /dev/full --container ktx --overwrite").exit, 2);
    EXPECT_TRUE(Shell("! '" QONVERT_PROGRAM "' info a.png >/dev/full"));
}

TEST_F(Failure, OneBrokenFileAmongTwoHundred) {
    std::filesystem::create_directory(Path("in"));
    std::string list;
    for (int i = 0; i < 200; ++i) {
        const std::string name = "in/" + std::to_string(1000 + i) + ".png";
        std::filesystem::copy(Path("a.png"), Path(name));
        list += name + "\n";
    }
    Bytes broken = Read("in/1077.png");
    broken.resize(broken.size() / 2);
    Write("in/1077.png", broken);
    Write("list.txt", Bytes(list.begin(), list.end()));

    const ToolResult result = Run("convert @list.txt --out-dir out --format etc1_rgb8 --keep-going --json");
    EXPECT_EQ(result.exit, 3);
    EXPECT_NE(result.err.find("in/1077.png: error 109"), std::string::npos) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["converted"], 199);
    EXPECT_EQ(json["failed"], 1);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Path("out")), {}), 199);

    // Without --keep-going it ends early.
    const ToolResult early = Run("convert @list.txt --out-dir out2 --threads 1");
    EXPECT_EQ(early.exit, 3);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Path("out2")), {}), 77);
}

}  // namespace
}  // namespace qonvert
