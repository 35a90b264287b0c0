// The memory that a scene may take: what is asked for, and what is said when it does not fit.
#include <gtest/gtest.h>

#include <fstream>

#include "tests/core/fake_backend.h"
#include "tests/temp_folder.h"

namespace zorvan::test {
namespace {

TEST(Memory, IsTheLeastThatMachineAndControlGroupsLeave) {
    const struct {
        char const *file, *text;
        uint64_t usable;  // from this row on
    } rows[] = {
        {"proc/other", "", uint64_t{4} << 30},
        {"proc/meminfo", "MemTotal: 9000 kB\nMemAvailable:    3000 kB\n", 3072000},
        {"sys/fs/cgroup/memory.max", "max\n", 3072000},
        {"sys/fs/cgroup/memory/memory.limit_in_bytes", "2000000\n", 2000000},
        {"sys/fs/cgroup/a/memory.max", "1000000\n", 2000000},
        {"proc/self/cgroup", "1:cpu:/x\n0::/a/b\n", 1000000},
        {"sys/fs/cgroup/a/b/memory.max", "900000\n", 900000},
        {"sys/fs/cgroup/memory.max", "800000\n", 800000},
    };
    const TempFolder root;
    for (auto const& row : rows) {
        const std::filesystem::path path = root / row.file;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << row.text;
        EXPECT_EQ(UsableMemory(root.Path()), row.usable) << row.file;
    }
}

// A text with its middle, which begins with separator, so often.
std::string Repeat(std::string const& before, std::string const& part, int count, std::string const& after) {
    std::string text = before;
    for (int i = 0; i < count; ++i) {
        text += (i == 0 ? "" : ",") + part;
    }
    return text + after;
}

TEST(Memory, RefusesByNameWhatDoesNotFit) {
    const std::string root = R"({"version": 1, "root": {"children": [)";
    const std::string pixels = R"({"data": ")" + std::string(21844, 'A') + "AA==\"}";  // 64x64 in four bytes
    const struct {
        std::string text;
        uint64_t limit;
        char const *place, *what;
    } rows[] = {
        {std::string(40000, ' ') + "{}", 100000, "a.json: got 120006 bytes", "for the text"},
        {Repeat("[", "0", 3000, "]"), 100000, "a.json:1:", "for the values of the text"},
        {Repeat(root, R"({"class": "TransformNode"})", 60, "]}}"), 100000, "/root/children/", "for a node"},
        {Repeat(root, R"({"class": "TransformNode", "masks": 64})", 30, "]}}"), 100000,
         "/masks: got 3072 bytes", "for masks"},
        {root + R"({"class": "Text", "font": null, "string": ")" + std::string(9000, 'a') + "\"}]}}", 200000,
         "/root/children/0/string: got", "for a string"},
        {R"({"version": 1, "textures": [{"name": "t", "width": 64, "height": 64, "levels": [)" + pixels +
             "]}]}",
         90000, "/textures/0/levels/0/data: got 32768 bytes", "for 64x64 pixels"},
    };
    FakeBackend backend;
    for (auto const& row : rows) {
        Scene scene;
        scene.SetMemoryLimit(row.limit);
        EXPECT_FALSE(scene.Parse(row.text, backend.registry, "a.json")) << row.what;
        EXPECT_TRUE(scene.IsMemoryError() && !scene.IsFileError()) << scene.Error();
        const std::string limit = std::to_string(row.limit) + " together";
        for (std::string_view part :
             {std::string_view(row.place), std::string_view(row.what), std::string_view(limit)}) {
            EXPECT_NE(scene.Error().find(part), std::string::npos) << scene.Error() << "\n" << part;
        }
        // Ten times as much is enough for all of them, and the limit stays set.
        scene.SetMemoryLimit(10 * row.limit);
        scene.Parse(row.text, backend.registry, "a.json");
        EXPECT_FALSE(scene.IsMemoryError()) << scene.Error();
    }
}

TEST(Memory, OwnPixelsEndsTheSharingOfAStore) {
    const RefT<FakeTexture> texture(new FakeTexture);
    static uint8_t pixels[4] = {1, 2, 3, 4};
    const RefT<Referenced> owner(new Mask);
    texture->pixels = {pixels, 4, owner.Get()};
    Retain(owner.Get());
    ASSERT_TRUE(texture->OwnPixels() && texture->OwnPixels());
    ASSERT_NE(texture->pixels.data, pixels);
    EXPECT_EQ(texture->pixels.data[3], 4);
    EXPECT_EQ(texture->pixels.owner, nullptr);
    EXPECT_EQ(owner->references, 1);
}

}  // namespace
}  // namespace zorvan::test
