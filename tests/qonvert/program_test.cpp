// The program as a user runs it, and other programs reading its files.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/qonvert/tool.h"
#include "tools/qonvert/transform.h"

namespace qonvert {
namespace {

class Program : public QonvertTest {
  protected:
    // Runs a command that must succeed; returns what it prints with --json.
    nlohmann::json Json(const std::string& arguments) const {
        const ToolRun run = Run(arguments + " --json");
        EXPECT_EQ(run.code, 0) << arguments << ": " << run.err;
        return nlohmann::json::parse(run.out, nullptr, false);
    }
};

// Each command of the guide's code blocks prints what the guide says.
TEST_F(Program, TheGuidesExamplesAreTrue) {
    const std::filesystem::path source = QONVERT_SOURCE;
    for (const auto& image : std::filesystem::directory_iterator(source / "examples/images")) {
        std::filesystem::copy(image, Path(""));
    }
    ASSERT_TRUE(Shell("mkdir icons && cp pane-[012].png icons && head -c 600 pane-3.png >icons/broken.png"));
    std::istringstream guide(Read(source / "docs/qonvert.md"));
    std::string expected, got;
    bool inBlock = false;
    for (std::string line; std::getline(guide, line);) {
        if (line.starts_with("```")) {
            inBlock = line == "```" && !inBlock;
            EXPECT_EQ(got, expected);
            got = expected = "";
        } else if (line.starts_with("$ ")) {
            EXPECT_EQ(got, expected);
            Shell("qonvert() { \"$TOOL\" \"$@\"; }; { " + line.substr(2) +
                  "; } >printed 2>&1; code=$?; [ $code = 0 ] || echo exit code $code >>printed");
            got = line + '\n' + Read("printed");
            expected = line + '\n';
        } else if (inBlock) {
            expected += line + '\n';
        }
    }
}

TEST_F(Program, SameBytesForEveryNumberOfThreads) {
    for (const char* name : {"a.png", "b.png", "c.png"}) {
        WritePicture(name, 70, 90);
    }
    for (const std::string format : {"atitc_rgba_interpolated", "etc1_rgb8", "3dc_xy", "la88", "rgb565"}) {
        const std::string convert = "convert ?.png --container dds --mips -f " + format;
        EXPECT_EQ(Run(convert + " --threads 1 -o one-" + format).code, 0);
        for (const std::string threads : {"2", "7", "0"}) {
            EXPECT_EQ(Run(convert + " --overwrite -o many --threads " + threads).code, 0);
            EXPECT_TRUE(Shell("diff -r many one-" + format)) << format << ' ' << threads;
        }
    }
}

TEST_F(Program, OptionsReachTheConverter) {
    const TextureFile source = NoiseTexture(FMT_RGBA8888, 20, 12);
    Write("a.dds", WriteContainer(*FindContainer("dds"), source, {}));
    const struct {
        const char* options;
        Recipe recipe;  // format RGBA8888 and 20 x 12 pixels where it says 0
    } rows[] = {
        {"", {}},
        {"--mirror-x", {.steps = {.mirrorX = true}}},
        {"--flip-y", {.steps = {.flipY = true}}},
        {"-s 50%", {.width = 10, .height = 6}},
        {"-s 7x5 --filter point", {.width = 7, .height = 5, .steps = {.filter = 1}}},
        {"-s 7x5 --filter four", {.width = 7, .height = 5, .steps = {.filter = 3}}},
        {"-s 7x5 --filter cubic", {.width = 7, .height = 5, .steps = {.filter = 4}}},
        {"--normal-map diagonal", {.steps = {.normalMap = 1}}},
        {"--normal-map sobel --strength -2.5", {.steps = {.normalMap = 2, .strengthTenths = -25}}},
        {"--normal-map prewitt --wrap", {.steps = {.normalMap = 3, .wrap = true}}},
        {"-f atitc_rgb", {.format = FMT_ATITC_RGB}},
        {"-f atitc_rgb --fast", {.format = FMT_ATITC_RGB, .steps = {.fastCompress = true}}},
        {"--mips", {.levels = UINT32_MAX}},
        {"-m 2", {.levels = 2}},
        {"--mips=3", {.levels = 3}},
    };
    for (auto [options, recipe] : rows) {
        EXPECT_EQ(Run(std::string("convert a.dds b.raw --overwrite ") + options).code, 0) << options;
        recipe.format = recipe.format != 0 ? recipe.format : std::uint32_t{FMT_RGBA8888};
        recipe.width = recipe.width != 0 ? recipe.width : 20;
        recipe.height = recipe.height != 0 ? recipe.height : 12;
        const Bytes expected = WriteContainer(*FindContainer("raw"), Transform(source, recipe).texture, {});
        EXPECT_EQ(Read("b.raw"), std::string(expected.begin(), expected.end())) << options;
    }
}

TEST_F(Program, PipesThroughStandardStreams) {
    WritePicture("a.png", 9, 7);
    ASSERT_TRUE(Shell("$TOOL convert - - --container ktx --format rgba8888 <a.png >b.ktx"));
    const ToolRun back = Run("convert - - --container png <b.ktx");
    EXPECT_EQ(back.code, 0);
    EXPECT_EQ(back.out, Read("a.png"));
    EXPECT_EQ(back.err.find("- -> -: RGBA8888, 9 x 7"), 0u) << back.err;
    EXPECT_EQ(Run("compare a.png - <b.ktx").code, 0);
}

TEST_F(Program, DevicesAndPipesStayWhatTheyAre) {
    WritePicture("a.png", 9, 7);
    ASSERT_EQ(Run("convert a.png b.ktx").code, 0);
    ASSERT_TRUE(Shell("mkfifo pipe.ktx"));
    EXPECT_TRUE(Shell("cat pipe.ktx >got & $TOOL convert a.png pipe.ktx && wait && cmp got b.ktx"));
    EXPECT_TRUE(Shell("cat b.ktx >pipe.ktx & $TOOL compare pipe.ktx a.png && wait && [ -p pipe.ktx ]"));
    // Only the file goes there, not what the tool says; what stood there before stays.
    for (const char* name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        const ToolRun run = Run(std::string("convert a.png --container ktx --overwrite ") + name);
        EXPECT_EQ(run.out, Read("b.ktx")) << name;
        EXPECT_EQ(run.err.find("a.png -> "), 0u);
    }
    EXPECT_TRUE(Shell("[ -L /dev/stdout ]"));
    EXPECT_TRUE(Shell("$TOOL convert a.png /dev/null --container ktx && [ -c /dev/null ]"));
}

TEST_F(Program, OriginIsRecordedMovedAndAssigned) {
    WritePicture("a.png", 8, 8);
    const struct {
        const char* arguments;
        const char* file;
        const char* origin;
        bool same;  // the rows lie as in a.png
    } rows[] = {
        {"convert a.png flipped.ktx --flip-y", "flipped.ktx", "bottom-left", false},
        {"convert flipped.ktx back.ktx --flip-y", "back.ktx", "top-left", true},
        {"convert a.png said.ktx --assign-origin bottom-left", "said.ktx", "bottom-left", true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Run(row.arguments).code, 0) << row.arguments;
        EXPECT_EQ(Json(std::string("info ") + row.file)["origin"], row.origin);
        EXPECT_EQ(Run(std::string("compare a.png ") + row.file).code, row.same ? 0 : 7) << row.file;
    }
    EXPECT_NE(Run("convert said.ktx lost.dds").err.find("--flip-y moves the rows"), std::string::npos);
}

TEST_F(Program, CompareGatesOnPsnrAndDrawsTheDifference) {
    WritePicture("a.png", 16, 16);
    WritePicture("small.png", 8, 8);
    const auto report = Json("convert a.png a.ktx -f rgba4444 --report")["files"][0]["report"];
    EXPECT_EQ(report["channels"], Json("compare a.png a.ktx --min-psnr 20")["channels"]);
    EXPECT_EQ(Run("compare a.png a.ktx").code, 7);
    EXPECT_EQ(Run("compare a.png a.ktx --min-psnr 60 --diff d.png").code, 7);
    EXPECT_EQ(Json("info d.png")["format"], "RGB888");
    EXPECT_EQ(Run("compare a.png small.png --min-psnr 1").code, 7);
}

TEST_F(Program, JsonOfEveryVerb) {
    WritePicture("a.png", 4, 4);
    EXPECT_EQ(Json("validate a.png")["valid"], true);
    EXPECT_EQ(Json("compare a.png a.png")["equal"], true);
    EXPECT_EQ(Json("info a.png")["levels"][0]["bytes"], 64);
    EXPECT_EQ(Json("formats")["formats"].size(), 40u);
    EXPECT_EQ(Json("convert a.png b.ktx")["converted"], 1);
    Write("bad.dds", Noise(300, 1));
    const auto error = [&](const char* arguments) { return nlohmann::json::parse(Run(arguments).out); };
    EXPECT_EQ(error("info bad.dds --json")["error"]["exit"], 3);
    EXPECT_EQ(error("convert bad.dds c.ktx --json")["files"][0]["error"]["exit"], 3);
    // Two findings in one file, and a kind of texture that is not supported.
    Bytes file = NoiseFile("ktx", FMT_ETC1_RGB8, 8, 8);
    PatchWord(file, 32, 0x1908);  // base format: a warning
    file.pop_back();              // and a level cut short
    Write("two.ktx", file);
    const auto findings = error("validate two.ktx --json")["findings"];
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0]["number"], 303);
    EXPECT_EQ(findings[0]["severity"], "warning");
    EXPECT_EQ(findings[1]["number"], 105);
    EXPECT_EQ(findings[1]["got"], "31 bytes left in the file");
    EXPECT_EQ(findings[1]["expected"], "32");
    PatchWord(file, 52, 6);
    Write("cube.ktx", file);
    EXPECT_EQ(Run("validate cube.ktx").code, 5);
}

TEST_F(Program, HeaderlessFilesKeepTheirPixels) {
    const Bytes level = NoiseTexture(FMT_P4_RGB565, 7, 5).levels.front();
    Write("p.raw", level);
    ASSERT_EQ(Run("convert p.raw p.ktx --raw 7x5:p4_rgb565").code, 0);
    ASSERT_EQ(Run("convert p.ktx back.raw").code, 0);
    EXPECT_EQ(Read("back.raw"), std::string(level.begin(), level.end()));
}

TEST_F(Program, WrittenFilesHaveThePermissionsOfNewFiles) {
    WritePicture("a.png", 4, 4);
    EXPECT_TRUE(Shell("umask 027 && $TOOL convert a.png b.ktx && [ $(stat -c %a b.ktx) = 640 ]"));
}

TEST_F(Program, NamesMayBeAsLongAsTheFileSystemAllows) {
    WritePicture("a.png", 4, 4);
    const std::string name = std::string(251, 'n') + ".ktx";
    EXPECT_EQ(Run("convert a.png " + name).code, 0);
    EXPECT_EQ(Run("convert " + name + " --out-dir out --container pkm").code, 0);
    EXPECT_EQ(Names().size(), 4u);
}

TEST_F(Program, BytesTellTheContainerOfAMisnamedFile) {
    WritePicture("a.png", 4, 4);
    EXPECT_TRUE(Shell("mv a.png a.dds"));
    const auto json = Json("info a.dds");
    EXPECT_EQ(json["container"], "png");
    EXPECT_EQ(json["warnings"][0]["number"], 307);
}

TEST_F(Program, DefaultFormatIsTheNearestThatTheContainerCarries) {
    WritePicture("a.png", 8, 8);
    EXPECT_EQ(Json("convert a.png b.pkm")["files"][0]["format"], "ETC1_RGB8");
    EXPECT_EQ(Json("convert b.pkm c.ktx")["files"][0]["format"], "ETC1_RGB8");
    EXPECT_EQ(Json("convert c.ktx d.png")["files"][0]["format"], "RGB888");
    // Blocks went over as they were.
    EXPECT_TRUE(Shell("tail -c 32 b.pkm >blocks && tail -c 32 c.ktx | cmp blocks"));
}

TEST_F(Program, ASignalAmidWritingLeavesNothingBehind) {
    // 64 MB, which take a while; the signal comes when the temporary file is there, or again when it came
    // after the end of the writing.
    EXPECT_TRUE(Shell(R"(head -c 67108864 /dev/zero >big.raw
        for try in $(seq 99); do
            rm -f out.raw; $TOOL convert big.raw out.raw --raw 8192x8192:l8 & tool=$!
            until set -- .zorvan-*.tmp; [ -e "$1" ]; do kill -0 $tool || break; done
            kill $tool; wait $tool; code=$?
            [ $code = 143 ] && [ ! -e out.raw ] && break
        done
        [ $code = 143 ] && [ ! -e out.raw ])"));
    EXPECT_EQ(Names(), std::vector<std::string>{"big.raw"});
    // So does a limit of the file's size.
    EXPECT_TRUE(Shell("(ulimit -f 8 && $TOOL convert big.raw out.raw --raw 8192x8192:l8; [ $? = 2 ])"));
    EXPECT_EQ(Names(), std::vector<std::string>{"big.raw"});
}

TEST_F(Program, OneBrokenFileAmongTwoHundred) {
    WritePicture("a.png", 8, 8);
    ASSERT_TRUE(
        Shell("mkdir in && for i in $(seq 1000 1199); do cp a.png in/$i.png; echo in/$i.png; done >list "
              "&& head -c 60 a.png >in/1077.png && echo >>list"));
    const ToolRun run = Run("convert @list --out-dir out --format etc1_rgb8 --keep-going --json");
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err.find("qonvert: in/1077.png: error 109"), 0u);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    const auto json = nlohmann::json::parse(run.out);
    EXPECT_EQ(json["converted"], 199);
    EXPECT_EQ(json["failed"], 1);
    EXPECT_TRUE(Shell("[ $(ls out | grep -c ktx$) = 199 ]"));
    // Without --keep-going it ends early. A directory as the last name is --out-dir.
    EXPECT_EQ(Run("convert @list in --container dds --threads 1").code, 3);
    EXPECT_TRUE(Shell("[ $(ls in | grep -c dds$) = 77 ]"));
}

TEST_F(Program, FfmpegReadsOurDdsAndIndexedPng) {
    if (!Installed("ffmpeg")) {
        GTEST_SKIP() << "ffmpeg is not installed";
    }
    WritePicture("a.png", 36, 20);
    // Not among them: 32-bit pixels under a DX10 header, where it exchanges red and blue.
    const struct {
        const char* file;
        const char* options;
        const char* channels;  // that both readers define
        double error;          // 3Dc interpolates with other roundings
    } rows[] = {
        {"b.dds", "-f rgba8888", "RGBA", 0},
        {"b.dds", "-f rgb888", "RGB", 0},
        {"b.dds", "-f bgra8888", "RGBA", 0},
        {"b.dds", "-f rgb565", "RGB", 0},
        {"b.dds", "-f l8", "RGB", 0},
        {"b.dds", "-f la88", "RGBA", 0},
        {"b.dds", "-f 3dc_x", "R", 2},
        {"b.dds", "-f 3dc_x --dds-names bc", "R", 2},
        {"b.dds", "-f 3dc_x --dds-names dx10", "R", 2},
        {"b.dds", "-f 3dc_xy --dds-names bc", "RG", 2},
        {"b.dds", "-f 3dc_xy --dds-names dx10", "RG", 2},
        {"b.png", "-f p8_rgba8888", "RGBA", 0},
        {"b.png", "-f p4_rgba8888", "RGBA", 0},
        {"b.png", "-f p1_rgba8888", "RGBA", 0},
    };
    for (const auto& [file, options, channels, error] : rows) {
        SCOPED_TRACE(options);
        ASSERT_EQ(Run(std::string("convert a.png ") + file + " --overwrite " + options).code, 0);
        ASSERT_TRUE(Shell(std::string("ffmpeg -y -i ") + file + " -pix_fmt rgba theirs.png"));
        ASSERT_EQ(Run(std::string("convert ") + file + " ours.png --overwrite -f rgba8888").code, 0);
        const auto measured = Json("compare ours.png theirs.png --min-psnr 0")["channels"];
        for (const char channel : std::string(channels)) {
            EXPECT_LE(measured[std::string(1, channel)]["largestError"], error) << channel;
        }
    }
}

TEST_F(Program, AstcencReadsOurKtx) {
    if (!Installed("astcenc")) {
        GTEST_SKIP() << "astcenc is not installed";
    }
    WritePicture("a.png", 40, 28);
    for (const std::string format : {"rgba8888", "rgb888", "bgra8888", "l8", "la88"}) {
        SCOPED_TRACE(format);
        // It reads, compresses and decompresses; the smooth picture comes back nearly as it was.
        EXPECT_TRUE(Shell("rm -f theirs.png; $TOOL convert a.png a.ktx --overwrite -f " + format +
                          " && astcenc -tl a.ktx theirs.png 4x4 -thorough"
                          " && $TOOL convert a.ktx ours.png --overwrite -f rgba8888"
                          " && $TOOL compare ours.png theirs.png --min-psnr 38"));
    }
}

}  // namespace
}  // namespace qonvert
