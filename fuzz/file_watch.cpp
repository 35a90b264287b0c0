// The viewer's watch over files, on scene files of any content: nothing changes by itself, and a change of a
// file is seen where the scene names it.
#include "tools/zorvan/file_watch.h"

#include <fstream>

#include "fuzz/fuzz_input.h"
#include "tests/temp_folder.h"

namespace {

using namespace zorvan;
using fuzz::FuzzInput;
using fuzz::Require;

constexpr std::array<char const*, 3> kNames = {"a.png", "b.ttf", "scene.json"};

// A scene, and which of the names it names beside its own.
std::string SceneOf(FuzzInput& input, std::array<bool, 3>& named) {
    std::string text = "{";
    for (char const* kind : {"textures", "fonts"}) {
        text += std::string(text.size() > 1 ? "," : "") + "\"" + kind + "\":[null";
        const uint32_t entries = input.Range(0, 3);
        for (uint32_t i = 0; i < entries; ++i) {
            const uint32_t name = input.Byte() % 3;
            named[name] = true;
            text += std::string(",{\"file\":\"") + kNames[name] + "\"}";
        }
        text += "]";
    }
    return text + "}";
}

void Write(std::string const& path, std::string_view text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    static TempFolder folder;
    static uint32_t changes = 0;
    const std::string scene = folder / kNames[2];
    FuzzInput input(data, size);
    const bool anyText = input.Byte() % 2 == 0;
    const uint32_t changed = input.Byte() % 3;
    std::array<bool, 3> named = {false, false, true};
    Write(scene, anyText ? std::string(input.Rest()) : SceneOf(input, named));

    tool::FileWatch watch;
    watch.Start(scene);
    Require(!watch.Changed());
    // Each time of another size, as the clock of files may stand still.
    std::ofstream(folder / kNames[changed], std::ios::binary | std::ios::app) << ' ';
    Require(watch.Changed() == named[changed] || (anyText && changed != 2));
    if (++changes % 1024 == 0) {
        std::filesystem::remove(folder / kNames[0]);
        std::filesystem::remove(folder / kNames[1]);
    }
    watch.Start(scene);
    Require(!watch.Changed());
    return 0;
}
