// zorvan view in a window of a virtual X server, with real key and pointer events.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "core/image_file.h"
#include "tests/zorvan/run_tool.h"

namespace zorvan::tool {
namespace {

// A program that runs beside the test.
class Process {
  public:
    // Standard output and standard error go to files; argv[0] is looked up on the path.
    Process(std::vector<std::string> const& argv, std::string const& folder, std::string const& output) {
        pid_ = fork();
        if (pid_ == 0) {
            const int out = open((output + ".out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            const int err = open((output + ".err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            std::vector<char*> words;
            for (std::string const& word : argv) {
                words.push_back(const_cast<char*>(word.c_str()));
            }
            words.push_back(nullptr);
            if (dup2(out, STDOUT_FILENO) >= 0 && dup2(err, STDERR_FILENO) >= 0 &&
                chdir(folder.c_str()) == 0) {
                execvp(words[0], words.data());
            }
            _exit(127);
        }
    }
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;
    ~Process() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            Wait();
        }
    }
    // The exit code, or -1 after a signal.
    int Wait() {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t pid_ = 0;
};

bool OnPath(char const* program) {
    return std::system((std::string("command -v ") + program + " >/dev/null").c_str()) == 0;
}

constexpr char const* kSceneStart = R"({"version": 1, "size": [200, 200], "camera2d": [201, 201],
  "root": {"length": 50, "rate": 25, "tracks": [{"node": "runner", "property": "position",
      "keys": [{"frame": 0, "value": [0, 150, 0]}, {"frame": 50, "value": [100, 150, 0]}]}],
    "children": [{"class": "TransformNode", "children": [
      {"class": "Sprite", "name": "box", "width": 60, "height": 60, "position": [20, 60, 0], "color": )";
constexpr char const* kSceneEnd = R"(}]},
      {"class": "Sprite", "name": "runner", "width": 10, "height": 10}]}})";

std::string SceneText(char const* color) {
    return std::string(kSceneStart) + color + kSceneEnd;
}

// The window is 200x200 pixels at the screen's top left, the scene is paused at its start.
class ViewWindow : public ToolTest {
  protected:
    void SetUp() override {
        ToolTest::SetUp();
        for (char const* program : {"Xvfb", "xdotool"}) {
            if (!OnPath(program)) {
                GTEST_SKIP() << "needs the program " << program << " (Debian: xvfb, xdotool)";
            }
        }
        std::filesystem::create_directory(Path("run"));
        server_ = std::make_unique<Process>(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen",
                                                                     "0", "400x300x24", "-nolisten", "tcp"},
                                            Path("run"), Path("server"));
        ASSERT_TRUE(WaitFor("server.out", "\n"));
        const std::string number = ReadText(Path("server.out"));
        setenv("DISPLAY", (":" + number.substr(0, number.find('\n'))).c_str(), 1);
        setenv("SDL_VIDEODRIVER", "x11", 1);
        File("run/scene.json", SceneText("[1, 0, 0, 1]"));
        viewer_ =
            std::make_unique<Process>(std::vector<std::string>{ZORVAN_TOOL, "view", "scene.json", "--paused"},
                                      Path("run"), Path("viewer"));
        ASSERT_EQ(NextLine().rfind("scene.json: 200x200;", 0), 0u);
        Do("search --sync --name zorvan windowmove 0 0 windowfocus");
        // Nothing happens before the window is where it is meant to be.
        while (Click(100, 10).find("100, 10:") == std::string::npos) {
        }
    }
    void TearDown() override {
        viewer_.reset();
        server_.reset();
        ToolTest::TearDown();
    }

    // Waits until a file holds a text, 20 seconds at most.
    bool WaitFor(std::string const& file, std::string const& text) const {
        for (int i = 0; i < 400; ++i) {
            if (ReadText(Path(file)).find(text) != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ADD_FAILURE() << file << " lacks: " << text << "\nit holds: " << ReadText(Path(file))
                      << ReadText(Path("viewer.err"));
        return false;
    }
    void Do(std::string const& commands) const {
        EXPECT_EQ(std::system(("xdotool " + commands + " >/dev/null 2>&1").c_str()), 0) << commands;
    }
    // What the viewer prints next.
    std::string NextLine() {
        for (int i = 0; i < 400; ++i) {
            const std::string text = ReadText(Path("viewer.out"));
            if (const size_t end = text.find('\n', read_); end != std::string::npos) {
                const std::string line = text.substr(read_, end - read_);
                read_ = end + 1;
                return line;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        ADD_FAILURE() << "the viewer says nothing; " << ReadText(Path("viewer.err"));
        return "100, 10: given up";
    }
    std::string Click(int x, int y) {
        Do("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
        return NextLine();
    }
    // Takes a screenshot without the overlay.
    Image Screenshot() {
        Do("key F12");
        const std::string line = NextLine();
        Image image{1, 1, {0, 0, 0, 0}};
        EXPECT_EQ(line.rfind("screenshot: scene-000", 0), 0u) << line;
        EXPECT_EQ(ReadImage(Path("run/" + line.substr(line.find(' ') + 1)), image), "");
        return image;
    }
    static uint32_t PixelAt(Image const& image, uint32_t x, uint32_t y) {
        uint8_t const* p = &image.rgba[4 * (size_t{y} * image.width + x)];
        return uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2];
    }

    std::unique_ptr<Process> server_, viewer_;
    size_t read_ = 0;  // bytes of the viewer's output
};

TEST_F(ViewWindow, ClicksTellWhatIsThere) {
    EXPECT_EQ(Click(10, 100), "10, 100: nothing");
    EXPECT_EQ(
        Click(30, 100).rfind("30, 100: /root/children/0/children/0  Sprite  box  {\"position\":[20,60,0]", 0),
        0u);
    // The wheel takes the box away from a point, and dragging brings it back.
    Do("mousemove 199 100 click 4 click 4 click 4");
    EXPECT_EQ(Click(30, 100), "30, 100: nothing");
    Do("mousemove 50 100 mousedown 1 mousemove 100 100 mousemove 195 100 mouseup 1");
    EXPECT_NE(Click(30, 100).find("box"), std::string::npos);
    Do("key r");
    EXPECT_EQ(Click(10, 100), "10, 100: nothing");
    EXPECT_NE(Click(79, 119).find("box"), std::string::npos);
}

TEST_F(ViewWindow, KeysMoveTheTime) {
    Do("key o");
    EXPECT_EQ(PixelAt(Screenshot(), 5, 155), 0xFFFFFFu);
    Do("key period period period period period period period period period period");  // 10 frames of 2 units
    Image image = Screenshot();
    EXPECT_EQ(PixelAt(image, 5, 155), 0x000000u);
    EXPECT_EQ(PixelAt(image, 25, 155), 0xFFFFFFu);
    Do("key 5");
    EXPECT_EQ(PixelAt(Screenshot(), 55, 155), 0xFFFFFFu);
    Do("key Home");
    EXPECT_EQ(PixelAt(Screenshot(), 5, 155), 0xFFFFFFu);
    Do("key space");
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    Do("key space");
    EXPECT_EQ(PixelAt(Screenshot(), 1, 155), 0x000000u);
    Do("key q");
    EXPECT_EQ(viewer_->Wait(), 0);
    EXPECT_EQ(ReadText(Path("viewer.err")), "");
}

TEST_F(ViewWindow, FilesAreLoadedAgain) {
    Do("key o");
    EXPECT_EQ(PixelAt(Screenshot(), 50, 100), 0xFF0000u);
    // A broken scene leaves the old one, and says why once.
    File("run/scene.json", SceneText("\"green\""));
    ASSERT_TRUE(WaitFor("viewer.err", "/root/children/0/children/0/color"));
    EXPECT_EQ(PixelAt(Screenshot(), 50, 100), 0xFF0000u);
    File("run/scene.json", SceneText("[0, 1, 0, 1]"));
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(PixelAt(Screenshot(), 50, 100), 0x00FF00u);
    // Images count as well.
    ASSERT_EQ(WritePng(Path("run/dot.png"), Image{1, 1, {0, 0, 255, 255}}), "");
    std::string text = SceneText("[0, 1, 0, 1], \"texture\": \"dot\"");
    text.insert(1, R"("textures": [{"name": "dot", "file": "dot.png"}], )");
    File("run/scene.json", text);
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(PixelAt(Screenshot(), 50, 100), 0x0000FFu);
    ASSERT_EQ(WritePng(Path("run/dot.png"), Image{2, 1, {255, 255, 0, 255, 255, 255, 0, 255}}), "");
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
    EXPECT_EQ(PixelAt(Screenshot(), 50, 100), 0xFFFF00u);
    Do("key F5");
    EXPECT_EQ(NextLine(), "scene.json: loaded again");
}

TEST_F(ViewWindow, TheOverlayIsDrawnByTheEngine) {
    const auto bright = [](Image const& image) {
        size_t count = 0;
        for (uint32_t y = 0; y < 46; ++y) {
            for (uint32_t x = 0; x < image.width; ++x) {
                count += PixelAt(image, x, y) == 0xFFFFFFu ? 1 : 0;
            }
        }
        return count;
    };
    if (ReadText(Path("viewer.err")).find("no font") != std::string::npos) {
        GTEST_SKIP() << "needs a font (Debian: fonts-dejavu-core)";
    }
    EXPECT_GT(bright(Screenshot()), 50u);
    Do("key o");
    EXPECT_EQ(bright(Screenshot()), 0u);
}

class ViewFailure : public ToolTest {};

TEST_F(ViewFailure, BrokenScenesAndMissingDisplays) {
    setenv("DISPLAY", ":54321", 1);
    setenv("SDL_VIDEODRIVER", "x11", 1);
    ExpectFailure(RunTool({"view", Example("hello.json")}), 4, "window: no display");
    ExpectFailure(RunTool({"view", File("scene.json", "{")}), 3, "scene.json:1:");
    ExpectFailure(RunTool({"view", Path("no.json")}), 2, "no.json: ");
}

}  // namespace
}  // namespace zorvan::tool
