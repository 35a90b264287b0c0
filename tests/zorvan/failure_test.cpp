// What the program does not accept: one exit code and one line each, and no file. Needs no EGL.
#include <unistd.h>

#include "tests/zorvan/tool.h"

namespace zorvan::tool {
namespace {

using Failures = ZorvanTest;

const std::string kHelp = " (see zorvan --help)";
const std::string kUnknownKind =
    ": got an output of unknown kind, expected a name that ends in .png, .gif, .mp4 or .webm, or -";

const FailureRow kRows[] = {
    // Usage.
    {"", 1, "got no verb, expected one of render, view, info, bench" + kHelp},
    {"draw scene.json a.png", 1, "got the verb 'draw', expected one of render, view, info, bench"},
    {"render", 1, "SCENE is required" + kHelp},
    {"render scene.json", 1, "OUT is required" + kHelp},
    {"render scene.json a.png more", 1, "The following argument was not expected: more" + kHelp},
    {"render scene.json a.png --fast", 1, "The following argument was not expected: --fast" + kHelp},
    {"info scene.json --fps 2", 1, "The following arguments were not expected: 2 --fps" + kHelp},
    {"render scene.json a.png --frames 40000 --fps 1", 1,
     "--frames: got a last frame at 40000 seconds, expected at most 32767"},
    {"render scene.json a.png --frames 60 --time 32767", 1,
     "--frames: got a last frame at 32769 seconds, expected at most 32767"},
    {"render scene.json a.png --supersample 9", 1, "--supersample: Value 9 not in range 1 to 8" + kHelp},
    {"render scene.json a.png --fps 0", 1, "--fps: Value 0 not in range 1 to 1000" + kHelp},
    {"render scene.json a.png --raw rgba", 1,
     "--raw: got the file a.png as output, expected - (standard output)"},
    {"render scene.json - --sheet 4x4", 1, "--sheet: got the output -, expected a PNG file"},
    {"bench scene.json --frames 0", 1, "--frames: Value 0 not in range 1 to 100000" + kHelp},
    {"render scene.json a.png --frames 0..1", 1,
     "a.png: got one name for 2 frames, expected a name like out_%04d.png"},
    {"render scene.json scene.json", 1, "scene.json" + kUnknownKind},
    {"render scene.json a.jpg --sheet 2x2", 1, "a.jpg" + kUnknownKind},
    // Files.
    {"render no.json a.png", 2, "no.json: No such file or directory"},
    {"info no.json", 2, "no.json: No such file or directory"},
    {"bench no.json", 2, "no.json: No such file or directory"},
    {"info .", 2, ".: got a folder, expected a file"},
    {"info 'a\nb'", 2, "a\\x0ab: No such file or directory"},
    {"info scene.json >/dev/full", 2, "standard output: cannot write: No space left on device"},
    {"render scene.json no/a.png", 2, "no/a.png: cannot write: there is no folder 'no'"},
    {"render scene.json no/a.webm", 2, "no/a.webm: cannot write: there is no folder 'no'"},
    {"info lost.json", 3, "lost.json:1:51: /textures/0/file: no.png: No such file or directory"},
    // Memory.
    {"info scene.json --memory-limit 0", 1,
     "--memory-limit: got '0', expected a number of bytes, or one with K, M or G behind it, such as 512M" +
         kHelp},
    {"info big.json --memory-limit 64K", 6,
     "big.json: got 90000 bytes for the text beside 0 taken before, expected at most 65536 together (the "
     "memory "
     "limit)"},
    {"render scene.json a.png --memory-limit 2M --supersample 2", 6,
     "surface: got 3145728 bytes for 512x512 pixels, expected at most 2097152 (the memory limit)"},
    // Plug-ins.
    {"render scene.json a.png --plugin no.so", 2, "no.so: no such plug-in; name one with --plugin PATH"},
    {"info scene.json --plugin text.so", 3, "text.so: expected a plug-in library: ..."},
    {"render scene.json a.png --plugin core.so", 3,
     "core.so: not a graphics plug-in: it has no function 'Initialize'"},
    {"info scene.json --plugin refusing.so", 4, "refusing.so: the plug-in refused to start"},
#if ZORVAN_HAS_VIEWER
    {"view no.json", 2, "no.json: No such file or directory"},
    {"view cut.json", 3, "cut.json:1:2: syntax error while parsing..."},
    {"view scene.json", 5, "window: no display: x11 not available"},
#else
    {"view scene.json", 5,
     "view: this zorvan was built without SDL2, which its window needs (Debian: libsdl2-dev)"},
#endif
};

TEST_F(Failures, OfValuesAndNames) {
    const struct {
        std::string option;
        std::vector<std::string> values;
        std::string expected;
    } rows[] = {
        {"--size",
         {"64", "0x64", "16385x1", "4294967297x1", "-4x4", "64x64x"},
         "WIDTHxHEIGHT in pixels, each 1 to 16384"},
        {"--frames", {"5..3", "5.."}, "FIRST..LAST or one frame number, 0 to 10000000, in rising order"},
        {"--time", {"-1", "nan"}, "seconds from 0 to 32767"},
        {"--surface", {"332"}, "565, 888 or 8888"},
        {"--background", {"#fff", "#12345g"}, "#rrggbb or #rrggbbaa"},
        {"--camera2d", {"1x64"}, "WIDTHxHEIGHT in scene units, each above 1 and below 32768, or 'none'"},
        {"--raw", {"avi"}, "rgba or y4m"},
        {"--sheet", {"4x0"}, "COLUMNSxROWS, each 1 to 100"},
    };
    for (auto const& [option, values, expected] : rows) {
        for (std::string const& value : values) {
            const std::string arguments = "render scene.json a.png " + option + "='" + value + "'";
            ExpectFailure(
                {arguments.c_str(), 1, option + ": got '" + value + "', expected " + expected + kHelp});
        }
    }
    for (std::string name : {"a%s.png", "a%d%d.png", "a%.png", "a%", "a%0d.png", "a%04x.png", "a%99d.png"}) {
        const std::string arguments = "render scene.json " + name + " --frames 0..1";
        ExpectFailure({arguments.c_str(), 1, name + ": got a name with '%', expected one %d or %0Nd in it"});
    }
}

TEST_F(Failures, AreOneLineAndNoFile) {
    setenv("DISPLAY", ":54321", 1);
    setenv("SDL_VIDEODRIVER", "x11", 1);
    WriteText("cut.json", "{");
    WriteText("big.json", std::string(30000, ' '));
    WriteText("text.so", "not a library");
    WriteText("lost.json", R"({"version": 1, "textures": [{"name": "t", "file": "no.png"}], "root": {}})");
    std::filesystem::create_symlink(ZORVAN_CORE_LIBRARY, Path("core.so"));
    std::filesystem::create_symlink(ZORVAN_REFUSING_PLUGIN, Path("refusing.so"));
    ExpectFailures(kRows);
}

TEST_F(Failures, OfStandardOutput) {
    // 9 becomes a pipe that nobody reads.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(dup2(ends[1], 9), 9);
    close(ends[0]);
    close(ends[1]);
    for (std::string arguments :
         {"--help", "--version", "view --help", "info scene.json", "info scene.json --json"}) {
        ExpectFailure({(arguments + " >&9").c_str(), 2, "standard output: cannot write: Broken pipe"});
        ExpectFailure(
            {(arguments + " >&-").c_str(), 2, "standard output: cannot write: Bad file descriptor"});
    }
    close(9);
}

#if ZORVAN_HAS_VIEWER
TEST_F(Failures, OfAMissingDisplay) {
    if (std::filesystem::exists("/dev/dri")) {
        GTEST_SKIP() << "this machine may have a display without a window system";
    }
    for (char const* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "SDL_VIDEODRIVER"}) {
        unsetenv(name);
    }
    ExpectFailure({"view scene.json", 5, "window: no display: found neither X11 nor Wayland..."});
}
#endif

TEST_F(Failures, OfScenes) {
    const struct {
        char const* name;
        char const* text;
        char const* message;
    } rows[] = {
        {"empty", "", "scene.json:1:1: syntax error while parsing..."},
        {"no JSON", "\x89PNG\r\n\x1a\n", "scene.json:1:1: syntax error while parsing..."},
        {"cut off", R"({"version": 1, "root": {"children": [)",
         "scene.json:1:38: syntax error while parsing..."},
        {"no object", "[1]", "scene.json:1:1: /: got an array of 1, expected an object"},
        {"no version", R"({"root": {}})",
         "scene.json:1:1: /: got a scene of another or no version, expected \"version\": 1"},
        {"no root", R"({"version": 1})",
         "scene.json:1:1: /: got a scene without \"root\", expected its timeline"},
        {"unknown key", R"({"version": 1, "root": {"colour": [1, 1, 1, 1]}})",
         "scene.json:1:35: /root/colour: got the unknown key \"colour\", expected one of camera, children, "
         "class, depth, length, masks, mode, name, opacity, origin, playing, position, rate, rotation, "
         "scale, start, tracks, transferMode"},
        {"wrong type",
         "{\"version\": 1,\n\"root\": {\"children\": [{\"class\": \"Sprite\", \"width\": \"a\"}]}}",
         "scene.json:2:52: /root/children/0/width: got \"a\", expected a whole number from -2147483648 to "
         "2147483647"},
        {"unknown class", R"({"version": 1, "root": {"children": [{"class": "Cube"}]}})",
         "scene.json:1:48: /root/children/0/class: got \"Cube\", expected TransformNode, Timeline, Camera, "
         "Sprite or Text"},
        {"unknown texture", R"({"version": 1, "root": {"children": [{"class": "Sprite", "texture": "t"}]}})",
         "scene.json:1:69: /root/children/0/texture: got \"t\", expected the name of a texture of this "
         "scene, or null"},
        {"mode", R"({"version": 1, "root": {"children": [{"class": "Sprite", "transferMode": 37}]}})",
         "scene.json:1:74: /root/children/0/transferMode: got 37, expected 0 to 36 or \"none\""},
        {"no image", R"({"version": 1, "textures": [{"name": "t", "file": "scene.json"}], "root": {}})",
         "scene.json:1:51: /textures/0/file: scene.json: got neither a PNG nor a JPEG image"},
        {"zero byte in an image's name",
         R"({"version": 1, "textures": [{"name": "t", "file": "scene.json\u0000.png"}], "root": {}})",
         "scene.json:1:51: /textures/0/file: scene.json\\x00.png: got a name with a zero byte, expected none "
         "in it"},
        {"zero byte in a font's name",
         R"({"version": 1, "fonts": [{"name": "f", "size": 9, "file": "scene.json\u0000"}], "root": {}})",
         "scene.json:1:59: /fonts/0/file: scene.json\\x00: got a name with a zero byte, expected none in it"},
        {"absurd size", R"({"version": 1, "size": [20000, 2], "root": {}})",
         "scene.json:1:24: /size: got a size out of range, expected whole numbers from 1 to 16384"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        WriteText("scene.json", row.text);
        ExpectFailure({"render scene.json a.png", 3, row.message});
    }
}

}  // namespace
}  // namespace zorvan::tool
