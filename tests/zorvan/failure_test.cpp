// What the program does not accept: one exit code and one line each. Needs no EGL.
#include "tests/zorvan/run_tool.h"

namespace zorvan::tool {
namespace {

struct OptionRow {
    char const* name;
    std::vector<std::string> arguments;  // "SCENE" and "OUT" stand for good paths
    char const* message;
};

class Options : public ToolTest {};

TEST_F(Options, WrongOnesAreUsageErrors) {
    const OptionRow rows[] = {
        {"no verb", {}, "A subcommand is required"},
        {"unknown verb", {"draw", "SCENE", "OUT"}, "subcommand"},
        {"no scene", {"render"}, "SCENE is required"},
        {"no output", {"render", "SCENE"}, "OUT is required"},
        {"too many", {"render", "SCENE", "OUT", "more"}, "not expected: more"},
        {"unknown option", {"render", "SCENE", "OUT", "--fast"}, "not expected: --fast"},
        {"option of another verb", {"info", "SCENE", "--fps", "2"}, "not expected"},
        {"size without height", {"render", "SCENE", "OUT", "--size", "64"}, "--size: got '64', expected"},
        {"size of zero", {"render", "SCENE", "OUT", "--size", "0x64"}, "got '0x64'"},
        {"huge size", {"render", "SCENE", "OUT", "--size", "16385x1"}, "each 1 to 16384"},
        {"size beyond 32 bits",
         {"render", "SCENE", "OUT", "--size", "4294967297x1"},
         "expected WIDTHxHEIGHT"},
        {"negative size", {"render", "SCENE", "OUT", "--size=-4x4"}, "got '-4x4'"},
        {"size with a tail", {"bench", "SCENE", "--size", "64x64x"}, "got '64x64x'"},
        {"falling frames", {"render", "SCENE", "OUT", "--frames", "5..3"}, "in rising order"},
        {"frames without end", {"render", "SCENE", "OUT", "--frames", "5.."}, "got '5..'"},
        {"too late", {"render", "SCENE", "OUT", "--frames", "40000", "--fps", "1"}, "at most 32767"},
        {"late by time", {"render", "SCENE", "OUT", "--frames", "60", "--time", "32767"}, "at most 32767"},
        {"negative time", {"render", "SCENE", "OUT", "--time=-1"}, "--time: got '-1'"},
        {"time that is no number", {"render", "SCENE", "OUT", "--time", "nan"}, "got 'nan'"},
        {"no sampling", {"render", "SCENE", "OUT", "--supersample", "9"}, "--supersample"},
        {"no rate", {"render", "SCENE", "OUT", "--fps", "0"}, "--fps"},
        {"unknown surface", {"render", "SCENE", "OUT", "--surface", "332"}, "expected 565, 888 or 8888"},
        {"short colour", {"render", "SCENE", "OUT", "--background", "#fff"}, "expected #rrggbb"},
        {"colour of no digits", {"render", "SCENE", "OUT", "--background", "#12345g"}, "got '#12345g'"},
        {"camera of one unit", {"render", "SCENE", "OUT", "--camera2d", "1x64"}, "or 'none'"},
        {"raw into a file", {"render", "SCENE", "OUT", "--raw", "rgba"}, "expected - (standard output)"},
        {"unknown raw", {"render", "SCENE", "-", "--raw", "avi"}, "expected rgba or y4m"},
        {"sheet of no rows",
         {"render", "SCENE", "OUT", "--sheet", "4x0"},
         "expected COLUMNSxROWS, each 1 to 100"},
        {"sheet on a stream", {"render", "SCENE", "-", "--sheet", "4x4"}, "expected a PNG file"},
        {"huge sheet", {"render", "SCENE", "OUT", "--frames", "0..2", "--sheet", "100x100"}, "at most 16384"},
        {"no frames to measure", {"bench", "SCENE", "--frames", "0"}, "--frames"},
    };
    for (OptionRow const& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::string> arguments = row.arguments;
        for (std::string& argument : arguments) {
            argument = argument == "SCENE" ? Example("hello.json")
                       : argument == "OUT" ? Path("a.png")
                                           : argument;
        }
        ExpectFailure(RunTool(arguments), 1, row.message);
        EXPECT_TRUE(Files().empty());
    }
}

TEST_F(Options, NamesOfFramesMustFit) {
    const struct {
        char const* name;
        char const* frames;
        char const* message;
    } rows[] = {
        {"a.png", "0..1", "got one name for 2 frames"},
        {"a%s.png", "0", "expected one %d or %0Nd"},
        {"a%d%d.png", "0..1", "expected one %d"},
        {"a%.png", "0", "expected one %d"},
        {"a%", "0", "expected one %d"},
        {"a%0d.png", "0", "expected one %d"},
        {"a%04x.png", "0..1", "expected one %d or %0Nd"},
        {"a%99d.png", "0", "expected one %d or %0Nd"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        ExpectFailure(RunTool({"render", Example("hello.json"), Path(row.name), "--frames", row.frames}), 1,
                      row.message);
        EXPECT_TRUE(Files().empty());
    }
}

class Failures : public ToolTest {};

TEST_F(Failures, UnreachableFiles) {
    ExpectFailure(RunTool({"render", Path("no.json"), Path("a.png")}), 2, "no.json: ");
    ExpectFailure(RunTool({"info", Path("no.json")}), 2, "no.json: ");
    ExpectFailure(RunTool({"bench", Path("no.json")}), 2, "no.json: ");
    ExpectFailure(RunTool({"info", Path("")}), 2, "got a folder, expected a file");
    ExpectFailure(RunTool({"render", Example("hello.json"), Path("no/a.png")}), 2, "there is no folder");
    EXPECT_TRUE(Files().empty());
}

struct SceneRow {
    char const* name;
    char const* text;
    char const* message;
};

TEST_F(Failures, BrokenScenes) {
    const SceneRow rows[] = {
        {"empty", "", "scene.json:1:1"},
        {"no JSON", "\x89PNG\r\n\x1a\n", "scene.json:1:1"},
        {"cut off", R"({"version": 1, "root": {"children": [)", "scene.json:1:"},
        {"no object", "[1]", "expected an object"},
        {"no version", R"({"root": {}})", "\"version\": 1"},
        {"no root", R"({"version": 1})", "\"root\""},
        {"unknown key", R"({"version": 1, "root": {"colour": [1, 1, 1, 1]}})", "/root/colour"},
        {"wrong type",
         "{\"version\": 1,\n\"root\": {\"children\": [{\"class\": \"Sprite\", \"width\": \"a\"}]}}",
         "scene.json:2:"},
        {"unknown class", R"({"version": 1, "root": {"children": [{"class": "Cube"}]}})", "Cube"},
        {"unknown texture",
         R"({"version": 1, "root": {"children": [{"class": "Sprite", "width": 1, "height": 1, "texture": "t"}]}})",
         "/root/children/0/texture"},
        {"mode out of range",
         R"({"version": 1, "root": {"children": [{"class": "Sprite", "transferMode": 37}]}})", "37"},
        {"image that is none",
         R"({"version": 1, "textures": [{"name": "t", "file": "scene.json"}], "root": {}})", "scene.json"},
        {"absurd size", R"({"version": 1, "size": [20000, 2], "root": {}})", "1 to 16384"},
    };
    for (SceneRow const& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string scene = File("scene.json", row.text);
        ExpectFailure(RunTool({"render", scene, Path("a.png")}), 3, row.message);
        EXPECT_EQ(Files(), std::vector<std::string>{"scene.json"});
    }
}

TEST_F(Failures, MissingImageOfAScene) {
    const std::string scene =
        File("scene.json", R"({"version": 1, "textures": [{"name": "t", "file": "no.png"}], "root": {}})");
    const ToolRun run = RunTool({"info", scene});
    EXPECT_TRUE(run.code == 2 || run.code == 3) << run.code;
    ExpectFailure(run, run.code, "no.png");
}

TEST_F(Failures, PlugIns) {
    const std::string text = File("text.so", "not a library");
    const struct {
        std::string path;
        int code;
        char const* message;
    } rows[] = {
        {Path("no.so"), 2, "no such plug-in"},
        {text, 3, "expected a plug-in library"},
        {ZORVAN_CORE_LIBRARY, 3, "it has no function 'Initialize'"},
        {ZORVAN_REFUSING_PLUGIN, 4, "refused to start"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.path);
        ExpectFailure(RunTool({"render", Example("hello.json"), Path("a.png"), "--plugin", row.path}),
                      row.code, row.message);
        ExpectFailure(RunTool({"info", Example("hello.json"), "--plugin", row.path}), row.code, row.message);
    }
    EXPECT_EQ(Files(), std::vector<std::string>{"text.so"});
}

}  // namespace
}  // namespace zorvan::tool
