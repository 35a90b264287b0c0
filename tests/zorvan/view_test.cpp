// zorvan view in a window of a virtual X server, with real key and pointer events.
#include <chrono>
#include <thread>

#include "tests/zorvan/tool.h"

namespace zorvan::tool {
namespace {

std::string SceneText(std::string const& box) {
    return R"({"version": 1, "size": [200, 200], "camera2d": [201, 201],
      "textures": [{"name": "dot", "file": "dot.png"}],
      "root": {"length": 50, "rate": 25, "tracks": [{"node": "runner", "property": "position",
          "keys": [{"frame": 0, "value": [0, 150, 0]}, {"frame": 50, "value": [100, 150, 0]}]}],
        "children": [{"class": "TransformNode", "children": [
          {"class": "Sprite", "name": "box", "width": 60, "height": 60, "position": [20, 60, 0], "color": )" +
           box + R"(}]}, {"class": "Sprite", "name": "runner", "width": 10, "height": 10}]}})";
}

// The window is 200x200 pixels at the screen's top left, the scene is paused at its start.
class ViewWindow : public ZorvanTest {
  protected:
    void SetUp() override {
        if (!Installed("Xvfb") || !Installed("xdotool")) {
            GTEST_SKIP() << "needs the programs Xvfb and xdotool (Debian: xvfb, xdotool)";
        }
        WriteText("scene.json", SceneText("[1, 0, 0, 1]"));
        WriteDot({1, 1, {0, 0, 255, 255}});
        ASSERT_TRUE(
            Shell("Xvfb -displayfd 1 -screen 0 400x300x24 -nolisten tcp >server 2>server.err & echo $! "
                  ">server.pid"));
        ASSERT_TRUE(WaitFor("server", "\n"));
        setenv("DISPLAY", (":" + Read("server").substr(0, Read("server").find('\n'))).c_str(), 1);
        setenv("SDL_VIDEODRIVER", "x11", 1);
        ASSERT_TRUE(
            Shell("{ $TOOL view scene.json --paused >said 2>errors; echo $? >code; } & echo $! >viewer.pid"));
        ASSERT_EQ(NextLine().rfind("scene.json: 200x200;", 0), 0u);
        Do("search --sync --name zorvan windowmove 0 0 windowfocus");
        // Nothing happens before the window is where it is meant to be.
        while (Click(100, 10).find("100, 10:") == std::string::npos) {
        }
    }
    void TearDown() override {
        if (!Read("server.pid").empty()) {
            Shell("xdotool key q; kill $(cat server.pid)");
            WaitFor("code", "\n");
        }
    }

    void WriteDot(Image const& image) const { EXPECT_EQ(WritePng(Path("dot.png"), image), ""); }
    // Waits until a file holds a text, two minutes at most.
    bool WaitFor(std::string const& file, std::string const& text, size_t from = 0) const {
        for (int i = 0; i < 2400; ++i) {
            if (Read(file).find(text, from) != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ADD_FAILURE() << file << " lacks: " << text << "\nit holds: " << Read(file) << Read("errors");
        return false;
    }
    void Do(std::string const& commands) const { EXPECT_TRUE(Shell("xdotool " + commands)) << commands; }
    // What the viewer prints next.
    std::string NextLine() {
        const bool there = WaitFor("said", "\n", heard_);
        const std::string said = Read("said");
        const size_t from = std::exchange(heard_, said.find('\n', heard_) + 1);
        return there ? said.substr(from, heard_ - 1 - from) : "100, 10: given up";
    }
    std::string Click(int x, int y) {
        Do("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
        return NextLine();
    }
    Image Screenshot() {
        Do("key F12");
        const std::string line = NextLine();
        EXPECT_EQ(line.rfind("screenshot: scene-000", 0), 0u) << line;
        return ReadPicture(line.substr(line.find(' ') + 1));
    }
    // Of a screenshot, as 0xRRGGBB.
    uint32_t Shown(uint32_t x, uint32_t y) { return PixelAt(Screenshot(), x, y) >> 8; }

    size_t heard_ = 0;  // bytes of the viewer's output
};

TEST_F(ViewWindow, ClicksTellWhatIsThere) {
    const std::string box = "30, 100: /root/children/0/children/0  Sprite  box  {\"position\":[20,60,0]";
    EXPECT_EQ(Click(10, 100), "10, 100: nothing");
    EXPECT_EQ(Click(30, 100).rfind(box, 0), 0u);
    // The wheel takes the box away from a point, and dragging brings it back.
    Do("mousemove 199 100 click 4 click 4 click 4");
    EXPECT_EQ(Click(30, 100), "30, 100: nothing");
    Do("mousemove 50 100 mousedown 1 mousemove 100 100 mousemove 195 100 mouseup 1");
    EXPECT_EQ(Click(30, 100).rfind(box, 0), 0u);
    Do("key r");
    EXPECT_EQ(Click(10, 100), "10, 100: nothing");
    EXPECT_NE(Click(79, 119).find("box"), std::string::npos);
}

TEST_F(ViewWindow, KeysMoveTheTime) {
    const struct {
        char const* keys;
        uint32_t x, color;  // of the runner, which moves by two pixels a frame
    } rows[] = {
        {"o", 5, 0xFFFFFF},
        {"period period period period period period period period period period", 5, 0},
        {"comma period", 25, 0xFFFFFF},
        {"5", 55, 0xFFFFFF},
        {"Home", 5, 0xFFFFFF},
    };
    for (auto const& row : rows) {
        Do(std::string("key ") + row.keys);
        EXPECT_EQ(Shown(row.x, 155), row.color) << row.keys;
    }
    // Running, it leaves its place in the end; paused, it stays wherever it is.
    Do("key space");
    for (int i = 0; i < 1000 && Shown(1, 155) == 0xFFFFFF; ++i) {
    }
    Do("key space");
    EXPECT_EQ(Screenshot(), Screenshot());
    Do("key q");
    EXPECT_TRUE(WaitFor("code", "0\n"));
    EXPECT_EQ(Read("errors"), "");
}

TEST_F(ViewWindow, FilesAreLoadedAgain) {
    Do("key o");
    EXPECT_EQ(Shown(50, 100), 0xFF0000u);
    // A broken scene leaves the old one, and says why once.
    WriteText("scene.json", SceneText("\"green\""));
    ASSERT_TRUE(WaitFor("errors", "/root/children/0/children/0/color"));
    EXPECT_EQ(Shown(50, 100), 0xFF0000u);
    WriteText("scene.json", SceneText("[0, 1, 0, 1]"));
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(Shown(50, 100), 0x00FF00u);
    // Images count as well.
    WriteText("scene.json", SceneText("[0, 1, 0, 1], \"texture\": \"dot\""));
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(Shown(50, 100), 0x0000FFu);
    WriteDot({2, 1, {255, 255, 0, 255, 255, 255, 0, 255}});
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(Shown(50, 100), 0xFFFF00u);
    Do("key F5");
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
}

TEST_F(ViewWindow, AMissingSceneLeavesTheLastOne) {
    Do("key o");
    const struct {
        char const* commands;
        std::string said;
    } rows[] = {
        {"mkdir scene.json", "scene.json: got a folder, expected a file\n"},
        {"rm -r scene.json", "scene.json: No such file or directory\n"},
        // Not waited for; the link to nowhere before it is no news.
        {"ln -s nowhere scene.json; sleep 0.6; mkfifo pipe; mv pipe scene.json",
         "scene.json: got a pipe or a device, expected a file to load again\n"},
    };
    ASSERT_TRUE(Shell("rm scene.json"));
    ASSERT_TRUE(WaitFor("errors", "\n"));
    for (auto const& row : rows) {
        SCOPED_TRACE(row.commands);
        const size_t before = Read("errors").size();
        ASSERT_TRUE(Shell(row.commands));
        ASSERT_TRUE(WaitFor("errors", "\n", before));
        // Time for the watch to come by again, and to repeat itself.
        ASSERT_TRUE(Shell("[ ! -d scene.json ] || touch scene.json/a; sleep 0.6"));
        EXPECT_EQ(Shown(50, 100), 0xFF0000u);
        EXPECT_EQ(Read("errors").substr(before), "zorvan: " + row.said);
    }
    ASSERT_TRUE(Shell("rm scene.json"));
    WriteText("scene.json", SceneText("[0, 1, 0, 1]"));
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(Shown(50, 100), 0x00FF00u);
    // Rights that change may make it readable.
    ASSERT_TRUE(Shell("chmod 600 scene.json"));
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
}

TEST_F(ViewWindow, RunsUnseenWhenAskedTo) {
    ASSERT_TRUE(Shell("SDL_VIDEODRIVER=offscreen $TOOL view scene.json >second 2>&1 & echo $! >second.pid"));
    EXPECT_TRUE(WaitFor("second", "scene.json: 200x200;"));
    EXPECT_TRUE(Shell("kill $(cat second.pid)"));
}

TEST_F(ViewWindow, GoesWithoutAFont) {
    ASSERT_TRUE(
        Shell("HOME=. XDG_DATA_DIRS=. $TOOL view scene.json >second 2>second.errors & echo $! >second.pid"));
    EXPECT_TRUE(WaitFor("second", "scene.json: 200x200;"));
    EXPECT_EQ(Read("second.errors"), "zorvan: found no font for the overlay (Debian: fonts-dejavu-core)\n");
    EXPECT_TRUE(Shell("kill $(cat second.pid)"));
}

TEST_F(ViewWindow, TheOverlayIsDrawnByTheEngine) {
    if (Read("errors").find("no font") != std::string::npos) {
        GTEST_SKIP() << "needs a font (Debian: fonts-dejavu-core)";
    }
    const auto bright = [this] {
        const Image image = Screenshot();
        size_t count = 0;
        for (uint32_t i = 0; i < 46 * image.width; ++i) {
            count += PixelAt(image, i % image.width, i / image.width) == 0xFFFFFFFF ? 1 : 0;
        }
        return count;
    };
    EXPECT_GT(bright(), 50u);
    Do("key o");
    EXPECT_EQ(bright(), 0u);
}

}  // namespace
}  // namespace zorvan::tool
