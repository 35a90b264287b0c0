// Draws frames while nodes, textures, texts, timelines and whole scenes come and go, and watches the memory.
// A season is a scene's life: after each, what the process holds must be what it held after the one before.
// Usage: soak --frames N | --seconds N. Exit code 1 when memory grew.
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "core/class_registry.h"
#include "core/json_reader.h"
#include "core/scene.h"
#include "graphics/device.h"
#include "graphics/plugin.h"
#include "objects/text.h"
#include "shaders/shader.h"
#include "tests/recording_gl/recording_gl.h"

namespace zorvan {
namespace {

constexpr uint64_t kFramesPerSeason = 10'000;
constexpr uint32_t kMostChildren = 40;
constexpr int kWarmUpSeasons = 2;

constexpr char kScene[] = R"({"version": 1,
  "textures": [
    {"name": "dot", "width": 2, "height": 2, "levels": [{"data": "/4AA//+AAP//gAD//4AA/w=="}, {"data": "/4AA/w=="}]},
    {"name": "bars", "width": 4, "height": 2, "levels": [{"data": "AAAA/wAAAP8AAAD/AAAA//////////////////////8="}]}],
  "fonts": [{"name": "bars", "lineHeight": 3, "ascent": 2, "pages": [{"texture": "bars"}], "glyphs": [
    {"character": "", "rectangle": [0, 0, 2, 1]}, {"character": "1", "rectangle": [0, 0, 1, 1], "advance": 2}]}],
  "root": {"length": 60, "camera": {"viewRectangle": [0, 0, 640, 480], "orthographic": true}}})";

// The nodes that come: each kind with what it can hold.
constexpr char const* kVisitors[] = {
    R"({"class": "Sprite", "name": "s", "width": 9, "height": 9, "texture": "dot", "position": [3, 4, 0]})",
    R"({"class": "Sprite", "width": 9, "height": 9, "color": [1, 0, 0, 0.5], "transferMode": 12, "masks": 2})",
    R"({"class": "Text", "name": "t", "font": "bars", "string": "11 1\n1", "box": [30, 20]})",
    R"({"class": "TransformNode", "rotation": [0, 0, 30], "children": [
      {"class": "Sprite", "width": 1, "height": 1, "children": [{"class": "Text", "font": "bars", "string": "x"}]}]})",
    R"({"class": "Timeline", "length": 30, "camera": {"viewRectangle": [0, 0, 64, 48]}, "depth": true,
      "children": [{"class": "Sprite", "name": "m", "width": 5, "height": 5}],
      "tracks": [
        {"node": "m", "property": "position", "keys": [{"frame": 0, "value": [0, 0, 0]}, {"frame": 30, "value": [9, 9, 0]}]},
        {"node": "m", "property": "texture", "keys": [{"frame": 0, "value": null}, {"frame": 9, "value": "dot"}]}]})"};

[[noreturn]] void Fail(std::string const& message) {
    std::fprintf(stderr, "soak: %s\n", message.c_str());
    std::exit(EXIT_FAILURE);
}

// One scene, from its text to its end.
class Season {
  public:
    Season(ClassRegistry& registry, GraphicsDeviceGL& device, std::mt19937& random)
        : registry_(registry), device_(device), random_(random) {
        if (!scene_.Parse(kScene, registry)) {
            Fail(scene_.Error());
        }
    }

    void Frame(uint64_t number) {
        Node& root = *scene_.root;
        if (root.GetChildren().Count() == kMostChildren || Random(3) == 0) {
            DropOne(root);
        }
        root.Attach(Random(2) == 0 || root.GetChildren().Count() == 0 ? Load() : AnyChild(root)->CloneDeep());
        ChangeText(root, number);
        device_.Clear();
        root.Update(device_, RealFixed{static_cast<int32_t>(number % 30'000 * (65536 / 30))});
        root.Render(device_);
        device_.Present();
    }

  private:
    uint32_t Random(uint32_t below) { return static_cast<uint32_t>(random_() % below); }
    Node* AnyChild(Node& root) { return root.GetChildren()[Random(root.GetChildren().Count())]; }

    void DropOne(Node& root) {
        if (root.GetChildren().Count() > 0) {
            root.Detach(AnyChild(root));
        }
    }

    Node* Load() {
        JsonReader reader(registry_);
        for (RefT<Texture> const& texture : scene_.textures) {
            reader.AddTexture(texture.Get());
        }
        for (RefT<Font> const& font : scene_.fonts) {
            reader.AddFont(font.Get());
        }
        reader.Parse(kVisitors[Random(std::size(kVisitors))]);
        Node* node = LoadNode(reader);
        if (node == nullptr || !reader.Finish()) {
            Fail(reader.Error());
        }
        return node;
    }

    // Strings of changing lengths, so that layouts are made again.
    void ChangeText(Node& root, uint64_t number) {
        Node* node = root.GetChildren()[Random(root.GetChildren().Count())];
        if (node->IsKindOf(MakeClassId(u"Text")) != 0) {
            static_cast<Text*>(node)->string.Set(MStringT<wchar_t>(std::wstring(number % 17, L'1').c_str()));
        }
    }

    ClassRegistry& registry_;
    GraphicsDeviceGL& device_;
    std::mt19937& random_;
    Scene scene_;
};

struct Memory {
    size_t allocated;  // bytes that the program holds
    size_t resident;   // bytes of its pages
};

Memory Measure() {
    size_t pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    size_t allocated = 0;
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
    const struct mallinfo2 info = mallinfo2();
    allocated = info.uordblks + info.hblkhd;
#endif
    return {allocated, resident * static_cast<size_t>(sysconf(_SC_PAGESIZE))};
}

int Run(uint64_t frames, double seconds) {
    using Clock = std::chrono::steady_clock;
    recording_gl::Reset();
    recording_gl::script.logging = false;
    ClassRegistry registry;
    ::Initialize(&registry);
    auto device = std::make_unique<GraphicsDeviceGL>();
    device->Initialize(nullptr, DeviceFormat::Rgba8888, {640, 480});

    const Clock::time_point start = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    Memory warm{};
    Memory now{};
    uint64_t drawn = 0;
    for (int season = 0; season <= kWarmUpSeasons + 1 || (drawn < frames && passed() < seconds); ++season) {
        // The same visitors each time: only what stays behind can differ.
        std::mt19937 random(1);
        {
            Season life(registry, *device, random);
            for (uint64_t i = 0; i < kFramesPerSeason; ++i) {
                life.Frame(drawn++);
            }
        }
        now = Measure();
        if (season == kWarmUpSeasons) {
            warm = now;
        }
    }
    std::printf(
        "%llu frames in %.1f s; after %d scenes %zu bytes allocated, %zu resident; at the end %zu and %zu\n",
        static_cast<unsigned long long>(drawn), passed(), kWarmUpSeasons + 1, warm.allocated, warm.resident,
        now.allocated, now.resident);
    Shader::ReleaseAll();
    const std::unique_ptr<ShaderGL> solid(device->solidShader);
    // The allocator's own lists may take a page or two more.
    constexpr size_t kPagesOfTheAllocator = size_t{1} << 20;
    return now.allocated > warm.allocated || now.resident > warm.resident + kPagesOfTheAllocator
               ? EXIT_FAILURE
               : EXIT_SUCCESS;
}

}  // namespace
}  // namespace zorvan

// The allocator's caches for threads count as allocated, and fill for a long time. They can only be left out
// before the program starts.
void StartWithoutThreadCaches(char** arguments) {
    if (std::getenv("GLIBC_TUNABLES") == nullptr) {
        setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
        execv("/proc/self/exe", arguments);
    }
}

int main(int count, char** arguments) {
    StartWithoutThreadCaches(arguments);
    const std::string option = count == 3 ? arguments[1] : "";
    if (option == "--frames") {
        return zorvan::Run(std::strtoull(arguments[2], nullptr, 10), 1e9);
    }
    if (option == "--seconds") {
        return zorvan::Run(~uint64_t{0}, std::atof(arguments[2]));
    }
    std::fprintf(stderr, "usage: soak --frames N | --seconds N\n");
    return EXIT_FAILURE;
}
