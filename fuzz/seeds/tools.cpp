// Command lines, scenes to watch, keys and pointers, and scenes that are put together from bytes.
#include "fuzz/seeds/seeds.h"

namespace zorvan::fuzz {

namespace {

// Words apart by blanks here, on lines of their own in the seed.
constexpr char const* kQonvertLines[] = {
    "convert leaf.png leaf.ktx --format atitc_rgba_explicit --mips --report",
    "convert bricks.png bricks-n.ktx --normal-map sobel --strength 2 --wrap --format rgb888",
    "convert a.png b.jpg --out-dir textures --container dds --format ati2 --keep-going",
    "convert leaf.ktx - --container png --scale 50% --filter cubic",
    "convert - out.dds --raw 64x32:RGB565 --dds-names dx10 --mirror-x --flip-y -j 2",
    "convert @list.txt -o out -f etc1_rgb8 -s 16x16 --filter point -m 3 -k -r --overwrite",
    "convert @list.txt folder --assign-origin bottom-left --fast --ktx-amd-tokens --png16 --json",
    "convert a.png b.png --assign-origin top-left --normal-map diagonal --strength=-0.5 -j0",
    "convert a.png b.dds -j 4000000000 --scale 1000%",
    "convert -- -m -j --dds-names",
    "info leaf.ktx --json",
    "info - --raw 4x4:A8",
    "compare leaf.png leaf.ktx --min-psnr 35 --diff leaf-diff.png --overwrite",
    "compare a.raw b.raw --raw 2x2:L8 --min-psnr nan",
    "validate a.ktx b.dds --json",
    "formats --json",
    "--version",
    "convert --help",
    "nothing",
};
constexpr char const* kZorvanLines[] = {
    "render hello.json hello.png",
    "render crowd.json out_%04d.png --frames 0..59 --fps 30",
    "render crowd.json crowd.mp4 --frames 0..299",
    "render crowd.json sheet.png --frames 0..299 --sheet 4x3 --size 320x180",
    "render crowd.json - --frames 5 --raw rgba --time 1.5",
    "render hello.json hello.png --size 1280x800 --supersample 2 --background #203040 --json",
    "render hello.json sun.png --area 300,40,256x256 --locate sun --locate 1.2 --gl-info",
    "render hello.json a.gif --camera2d none --surface 565 --decode-atitc --plugin p.so",
    "render hello.json a.png --camera2d 640.5x480 --background #20304050 --surface 8888",
    "view timelines.json --size 1280x960 --time 2.5 --paused",
    "info hello.json --children 3 --json",
    "bench crowd.json --frames 500 --size 1920x1080 --json",
    "render hello.json - --sheet 1x1",
    "bench --help",
    "nothing",
};

std::string OnLines(std::string line) {
    for (char& c : line) {
        c = c == ' ' ? '\n' : c;
    }
    return line;
}

void AddWatchedScenes(SeedFolder const& folder) {
    constexpr char const* kScenes[] = {
        R"({"textures":[{"name":"a","file":"a.png"}],"fonts":[{"file":"b.ttf","size":3}],"root":{}})",
        R"({"textures":[{"file":"sub/../a.png"},{"file":""},{"file":7},null],"fonts":{}})",
        R"([1,2,{"textures":[]}])", R"({"textures":)"};
    for (size_t i = 0; i < std::size(kScenes); ++i) {
        folder.Add("file_watch", "text-" + std::to_string(i),
                   SeedInput().Byte(0).Byte(static_cast<uint32_t>(i)).Append(std::string(kScenes[i])).bytes);
    }
    for (uint32_t changed = 0; changed < 3; ++changed) {
        folder.Add("file_watch", "built-" + std::to_string(changed),
                   SeedInput().Byte(1).Byte(changed).Byte(2).Byte(0).Byte(1).Byte(1).Byte(2).bytes);
    }
}

// Numbers of the target's actions: 22 keys, then press, move, release, wheel, time, part, scene, window.
void AddViewing(SeedFolder const& folder) {
    SeedInput keys;
    for (uint32_t action = 0; action < 22; ++action) {
        keys.Byte(action);
    }
    folder.Add("view_state", "keys", keys.bytes);
    SeedInput scene;
    scene.Byte(28).Byte(0).Byte(1).Word(600000).Byte(1).Word(641 << 16).Word(481 << 16);
    scene.Byte(29).Byte(200).Word(480);
    const Bytes begin = scene.bytes;
    scene.Byte(22).Word(0x00500040).Byte(23).Word(0x00700050).Byte(24).Word(0x00710051);
    scene.Byte(25).Word(0x00200020).Byte(5).Byte(26).Word(500000).Byte(27).Byte(128).Byte(30);
    folder.Add("view_state", "pointer", scene.bytes);
    folder.Add("view_state", "pointer-and-keys", SeedInput().Append(begin).Append(keys.bytes).bytes);
    folder.Add("view_state", "zoomed", SeedInput().Append(begin).Byte(12).Byte(12).Byte(14).Byte(16).bytes);
}

// Bytes that the target makes a scene from; each begins another choice.
void AddBuiltScenes(SeedFolder const& folder) {
    for (uint32_t i = 0; i < 48; ++i) {
        SeedInput input;
        input.Byte(7);  // all nodes
        for (uint32_t node = 0; node < 5; ++node) {
            input.Byte(i % 3 == 0 ? 0 : 1);
            if (i % 3 != 0) {
                input.Byte(i + node).Byte(i / 3 + node).Byte(100).Byte(i).Byte(40).Byte(3).Byte(120);
            }
        }
        // One track with two keys: node, own or common property, which, how, keys.
        input.Byte(1).Byte(i).Byte(i / 5).Byte(i / 4).Byte(i).Byte(1);
        input.Byte(0).Byte(10).Byte(20).Byte(30).Byte(40).Byte(50);
        input.Byte(100).Byte(11).Byte(22).Byte(33).Byte(44).Byte(55);
        folder.Add("track", std::to_string(i), input.Noise(64, i).bytes);
    }
}

}  // namespace

void AddTools(SeedFolder const& folder) {
    for (size_t i = 0; i < std::size(kQonvertLines); ++i) {
        folder.Add("qonvert_commands", std::to_string(i), OnLines(kQonvertLines[i]));
    }
    for (size_t i = 0; i < std::size(kZorvanLines); ++i) {
        folder.Add("zorvan_commands", std::to_string(i), OnLines(kZorvanLines[i]));
    }
    folder.AddFile("list.txt", std::string("a.png\nb.png\r\n\nc.dds\n"));
    std::filesystem::create_directories(folder.Files() / "folder");
    AddWatchedScenes(folder);
    AddViewing(folder);
    AddBuiltScenes(folder);
}

}  // namespace zorvan::fuzz
