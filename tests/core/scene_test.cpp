#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "core/base64.h"
#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"

namespace zorvan::test {
namespace {

char const* const kWhole = R"({
  "version": 1, "size": [640, 480], "background": [0.1, 0.2, 0.3, 1], "camera2d": [641, 481],
  "textures": [
    {"name": "t", "format": "rgb565", "width": 2, "height": 2, "usedWidth": 1, "levels": [{"data": "AAECAwQFBgc="}, {"data": "CAk="}]},
    {"name": "u", "width": 1, "height": 1, "levels": [{"data": "/////w=="}]}],
  "shaders": [{"identifier": 4000000000, "binary": "AQID"}],
  "root": {
    "name": "root", "length": 60, "rate": 24, "mode": "ping-pong", "start": 0.5, "playing": false,
    "camera": {"name": "camera", "orthographic": true, "viewRectangle": [0, 0, 640, 480], "position": [1, 2, 3]},
    "children": [
      {"class": "Sprite", "name": "s", "width": 3, "height": 4, "texture": "t", "transferMode": 12, "masks": 2,
       "children": [{"class": "Sprite", "texture": "u", "color": [1, 0, 0, 0.5]}]},
      {"class": "TransformNode", "rotation": [0, 0, 45], "children": [{"class": "Timeline", "rate": 10}]},
      {"class": "Text", "string": "Grüße", "font": null, "box": [10, 20], "alignment": "center middle"}],
    "tracks": [
      {"node": "s", "property": "texture", "interpolation": "step", "keys": [{"frame": 0, "value": "u"}, {"frame": 1, "value": null}]},
      {"node": "s", "property": "transferMode", "keys": [{"frame": 0, "value": "none"}]},
      {"property": "opacity", "interpolation": "smooth", "keys": [{"frame": 0, "value": 0.3}, {"frame": 2.5, "value": 1}]}]
  }
})";

TEST(Scene, SavesWhatItLoads) {
    FakeBackend backend;
    FakeDevice device;
    Scene scene;
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry)) << scene.Error();
    ExpectSavesWhatItLoads(scene, backend.registry);
    EXPECT_EQ(scene.size, (SizeT<int32_t>{640, 480}));
    EXPECT_EQ(scene.background.red, RealFixed::FromRaw(6554));
    EXPECT_EQ(scene.camera2d->width, Fix(641));
    EXPECT_EQ(scene.root->mode.Get(), PlaybackMode::PingPong);
    EXPECT_EQ(scene.root->start.Get(), Fix(0.5));
    EXPECT_FALSE(scene.root->IsPlaying());
    EXPECT_EQ(scene.root->GetCamera()->position.Get().y, Fix(2));
    EXPECT_EQ(scene.textures[0]->pixels.data[9], 9);
    EXPECT_EQ(ToUtf8(static_cast<Text*>(scene.root->GetChildren()[2])->string.Get()), "Grüße");
    EXPECT_EQ(Shader::Find(4000000000u), scene.shaders[0].Get());
    EXPECT_EQ(scene.shaders[0]->binary.Get(), (std::vector<uint8_t>{1, 2, 3}));
    FakeSprite* padded = FindSprite(scene.root.Get(), "s");
    EXPECT_EQ(padded->GetTexture(), scene.textures[0].Get());
    EXPECT_EQ(padded->GetMasks().Count(), 2u);
    EXPECT_EQ(padded->height.Get(), 4);
    // Sprites show the used part of their textures; tracks change these through the same call.
    EXPECT_EQ(padded->textureChanges, 1);
    EXPECT_EQ(static_cast<FakeSprite*>(padded->GetChildren()[0])->textureChanges, 0);
    scene.root->Update(device, RealFixed{});
    EXPECT_EQ(padded->GetTexture(), scene.textures[1].Get());
    scene.root->SetFrame(Fix(1));
    scene.root->Update(device, RealFixed{});
    EXPECT_EQ(padded->GetTexture(), nullptr);
    EXPECT_EQ(padded->textureChanges, 3);
}

TEST(Scene, RefusesBrokenHeadersAndResources) {
    const struct {
        std::string members;  // of the scene, or of its one texture
        std::string error;
    } cases[] = {
        {R"("version": 2)", "/version: got a scene of another or no version"},
        {R"("size": [0, 4])", "/size: got a size out of range"},
        {R"("size": [4, 1.5])", "/size: got a size out of range"},
        {R"("camera2d": [1, 4])", "/camera2d: got a size of 1 or less"},
        {R"("other": 1)", "/other: got the unknown key"},
        {R"("shaders": [{"identifier": 3}])", "/shaders/0: got no program"},
        {R"({"width": 1, "height": 1})", "/textures/0: got a texture without \"file\" and \"levels\""},
        {R"({"name": "a", "levels": []})", "/textures/0: got a texture without \"width\""},
        {R"({"format": "rgb"})", "/textures/0/format: got \"rgb\", expected one of rgb565, rgba5551"},
        {R"({"width": 16385})", "/textures/0/width: got 16385, expected 1 to 16384"},
        {R"({"width": 16384, "height": 16384})",
         "/textures/0/width: got 16384x16384 pixels, expected at most 67108864"},
        {R"({"width": 4, "height": 4, "usedWidth": 5})", "/textures/0/usedWidth: got 5, expected 1 to 4"},
        {R"({"width": 1, "height": 1, "levels": []})", "/textures/0/levels: got no levels"},
        {R"({"width": 1, "height": 1, "levels": [{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}]})",
         "/textures/0/levels: got 16 levels, expected at most 15"},
        {R"({"width": 1, "height": 1, "levels": [{}]})", "/textures/0/levels/0: got a level without"},
        {R"({"width": 1, "height": 1, "levels": [{"data": "A"}]})",
         "/textures/0/levels/0/data: got text that is no base64"},
        {R"({"width": 1, "height": 1, "levels": [{"data": "AAAA"}]})",
         "/textures/0/levels/0/data: got 3 bytes, expected 4 for 1x1"},
        {R"({"width": 1, "height": 1, "levels": [{"data": "AAAAAA=="}]})", "/textures/0: got no name"},
        {R"({"name": "a", "file": "missing.png"})", "/textures/0/file: missing.png: "},
        {R"({"name": "a", "format": "atc-rgb", "file": "a.png"})", "/textures/0/format: got a block format"},
        {R"({"name": "a", "mipmaps": true, "compress": true, "file": "a.png"})",
         "/textures/0/mipmaps: got both"},
        {R"({"name": "a", "format": "rgb565", "compress": true, "width": 1, "height": 1, "levels": [{"data": "AAA="}]})",
         "/textures/0/compress: got the format rgb565, expected"},
    };
    FakeBackend backend;
    Scene scene;
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry));
    const auto error = [&](std::string const& text, ClassRegistry& registry) {
        EXPECT_FALSE(scene.Parse(text, registry)) << text;
        const size_t path = scene.Error().find(": /");
        return path == std::string::npos ? scene.Error() : scene.Error().substr(path + 2);
    };
    for (auto const& row : cases) {
        const std::string members =
            row.members[0] == '{' ? "\"textures\": [" + row.members + "]" : row.members;
        const std::string version = row.error.find("/version") == 0 ? "" : "\"version\": 1, ";
        EXPECT_EQ(error("{" + version + members + R"(, "root": {}})", backend.registry).find(row.error), 0u)
            << scene.Error();
    }
    EXPECT_EQ(error(R"({"version": 1})", backend.registry).find("/: got a scene without \"root\""), 0u);
    EXPECT_EQ(error(R"({"root": {}})", backend.registry).find("/: got a scene of another or no version"), 0u);
    ClassRegistry empty;
    EXPECT_EQ(error(R"({"version": 1, "root": {}})", empty).find("/root: got \"Timeline\", for which no"),
              0u);
    EXPECT_EQ(scene.textures.size(), 2u);  // the scene from before still stands
}

TEST(Scene, CompressesOnRequest) {
    FakeBackend backend;
    Scene scene;
    const std::string data = EncodeBase64(std::vector<uint8_t>(64, 7));
    ASSERT_TRUE(scene.Parse(R"({"version": 1, "root": {}, "textures": [{"name": "a", "compress": true,)"
                            R"("width": 4, "height": 4, "levels": [{"data": ")" +
                                data + "\"}]}]}",
                            backend.registry))
        << scene.Error();
    EXPECT_EQ(scene.textures[0]->format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
    EXPECT_EQ(scene.textures[0]->pixels.size, 16u);
    std::string text;
    EXPECT_TRUE(scene.Save(text));
    scene.textures[0]->ReleasePixelStore();
    EXPECT_FALSE(scene.Save(text));
    EXPECT_EQ(scene.Error(), "the texture \"a\" has no file and its pixels went to the device");
}

TEST(Scene, GoesToFilesAndBack) {
    FakeBackend backend;
    const std::string path = testing::TempDir() + "zorvan_scene.json";
    Scene scene;
    EXPECT_FALSE(scene.Load(path + ".missing", backend.registry));
    EXPECT_TRUE(scene.IsFileError());
    EXPECT_EQ(scene.Error().find(path + ".missing: "), 0u);
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry));
    EXPECT_FALSE(scene.IsFileError());
    EXPECT_FALSE(scene.SaveFile(path + "/below"));
    EXPECT_TRUE(scene.IsFileError());
    ASSERT_TRUE(scene.SaveFile(path)) << scene.Error();
    std::string first, second;
    EXPECT_TRUE(scene.Save(first) && scene.Load(path, backend.registry) && scene.Save(second))
        << scene.Error();
    EXPECT_EQ(second, first);
    std::remove(path.c_str());
}

// Every fenced block of JSON in the format's description is a whole scene.
TEST(Scene, LoadsTheExamplesOfItsDescription) {
    std::ifstream description(ZORVAN_DOCS "/scene-format.md");
    ASSERT_TRUE(description.is_open());
    FakeBackend backend;
    int examples = 0;
    std::string block;
    bool inside = false;
    for (std::string line; std::getline(description, line);) {
        if (line == "```json") {
            inside = true;
            block.clear();
        } else if (line == "```" && std::exchange(inside, false)) {
            ++examples;
            Scene scene;
            const bool loaded = scene.Parse(block, backend.registry);
            // The files of the examples are not here; all else about them is checked before.
            const bool missesFile = scene.Error().find("/file: logo.png: ") != std::string::npos ||
                                    scene.Error().find("/file: sans.ttf: ") != std::string::npos;
            EXPECT_TRUE(loaded || missesFile) << scene.Error() << "\n" << block;
        } else if (inside) {
            block += line + "\n";
        }
    }
    EXPECT_GE(examples, 10);
}

}  // namespace
}  // namespace zorvan::test
