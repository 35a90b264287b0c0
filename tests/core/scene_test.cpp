#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/base64.h"
#include "core/file_bytes.h"
#include "tests/core/fake_backend.h"

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
    Scene scene;
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry)) << scene.Error();
    std::string first;
    ASSERT_TRUE(scene.Save(first));
    Scene again;
    ASSERT_TRUE(again.Parse(first, backend.registry)) << again.Error() << first;
    std::string second;
    ASSERT_TRUE(again.Save(second));
    EXPECT_EQ(second, first);

    EXPECT_EQ(again.size, (SizeT<int32_t>{640, 480}));
    EXPECT_EQ(again.background.red, RealFixed::FromRaw(6554));
    EXPECT_EQ(again.camera2d->width, Fix(641));
    EXPECT_EQ(again.root->mode.Get(), PlaybackMode::PingPong);
    EXPECT_EQ(again.root->start.Get(), Fix(0.5));
    EXPECT_FALSE(again.root->IsPlaying());
    EXPECT_EQ(again.root->GetCamera()->position.Get().y, Fix(2));
    auto* sprite = static_cast<FakeSprite*>(FindNode(again.root.Get(), "s"));
    EXPECT_EQ(sprite->GetTexture(), again.textures[0].Get());
    EXPECT_EQ(sprite->GetMasks().Count(), 2u);
    EXPECT_EQ(sprite->height.Get(), 4);
    EXPECT_EQ(again.textures[0]->levels.Count(), 2u);
    EXPECT_EQ(again.textures[0]->pixels.data[9], 9);
    EXPECT_EQ(ToUtf8(static_cast<Text*>(again.root->GetChildren()[2])->string.Get()), "Grüße");
    EXPECT_EQ(Shader::Find(4000000000u), again.shaders[0].Get());
    EXPECT_EQ(again.shaders[0]->binary.Get(), (std::vector<uint8_t>{1, 2, 3}));
}

TEST(Scene, ShowsTheUsedPartOfPaddedTextures) {
    FakeBackend backend;
    FakeDevice device;
    Scene scene;
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry)) << scene.Error();
    auto* padded = static_cast<FakeSprite*>(FindNode(scene.root.Get(), "s"));
    auto* whole = static_cast<FakeSprite*>(padded->GetChildren()[0]);
    EXPECT_EQ(padded->textureChanges, 1);
    EXPECT_EQ(whole->textureChanges, 0);
    // Tracks change textures through the same call.
    scene.root->Update(device, RealFixed{});
    EXPECT_EQ(padded->GetTexture(), scene.textures[1].Get());
    scene.root->SetFrame(Fix(1));
    scene.root->Update(device, RealFixed{});
    EXPECT_EQ(padded->GetTexture(), nullptr);
    EXPECT_EQ(padded->textureChanges, 3);
}

TEST(Scene, RefusesBrokenHeadersAndResources) {
    const std::string start = R"({"version": 1, )";
    const std::string end = R"(, "root": {}})";
    const auto texture = [&](std::string const& text) {
        return start + "\"textures\": [{" + text + "}]" + end;
    };
    const std::pair<std::string, std::string> cases[] = {
        {R"({"root": {}})", "/: got a scene of another or no version, expected \"version\": 1"},
        {R"({"version": 2, "root": {}})", "/version: got a scene of another or no version"},
        {R"({"version": 1})", "/: got a scene without \"root\""},
        {start + R"("size": [0, 4])" + end, "/size: got a size out of range"},
        {start + R"("size": [4, 1.5])" + end, "/size: got a size out of range"},
        {start + R"("camera2d": [1, 4])" + end, "/camera2d: got a size of 1 or less"},
        {start + R"("other": 1)" + end, "/other: got the unknown key"},
        {start + R"("shaders": [{"identifier": 3}])" + end, "/shaders/0: got no program"},
        {texture(R"("width": 1, "height": 1)"), "/textures/0: got a texture without \"file\" and \"levels\""},
        {texture(R"("name": "a", "levels": [])"), "/textures/0: got a texture without \"width\""},
        {texture(R"("format": "rgb")"), "/textures/0/format: got \"rgb\", expected one of rgb565, rgba5551"},
        {texture(R"("format": "")"), "/textures/0/format: got \"\""},
        {texture(R"("width": 16385)"), "/textures/0/width: got 16385, expected 1 to 16384"},
        {texture(R"("width": 16384, "height": 16384)"), "/textures/0/width: got more than 67108864 pixels"},
        {texture(R"("width": 4, "height": 4, "usedWidth": 5)"),
         "/textures/0/usedWidth: got 5, expected 1 to 4"},
        {texture(R"("width": 1, "height": 1, "levels": [])"), "/textures/0/levels: got no levels"},
        {texture(R"("width": 1, "height": 1, "levels": [{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}])"),
         "/textures/0/levels: got 16 levels, expected at most 15"},
        {texture(R"("width": 1, "height": 1, "levels": [{}])"), "/textures/0/levels/0: got a level without"},
        {texture(R"("width": 1, "height": 1, "levels": [{"data": "A"}])"),
         "/textures/0/levels/0/data: got text that is no base64"},
        {texture(R"("width": 1, "height": 1, "levels": [{"data": "AAAA"}])"),
         "/textures/0/levels/0/data: got 3 bytes, expected 4 for 1x1"},
        {texture(R"("width": 1, "height": 1, "levels": [{"data": "AAAAAA=="}])"), "/textures/0: got no name"},
        {texture(R"("name": "a", "file": "missing.png")"), "/textures/0/file: missing.png: "},
        {texture(R"("name": "a", "format": "atc-rgb", "file": "a.png")"),
         "/textures/0/format: got a block format"},
        {texture(R"("name": "a", "mipmaps": true, "compress": true, "file": "a.png")"),
         "/textures/0/mipmaps: got both"},
        {texture(
             R"("name": "a", "format": "rgb565", "compress": true, "width": 1, "height": 1, "levels": [{"data": "AAA="}])"),
         "/textures/0/compress: the format rgb565 cannot"},
    };
    FakeBackend backend;
    Scene scene;
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry));
    for (auto const& [text, error] : cases) {
        EXPECT_FALSE(scene.Parse(text, backend.registry)) << text;
        const size_t path = scene.Error().find(": /");
        ASSERT_NE(path, std::string::npos) << scene.Error();
        EXPECT_EQ(scene.Error().substr(path + 2, error.size()), error);
    }
    EXPECT_EQ(scene.textures.size(), 2u);  // the scene from before still stands
}

TEST(Scene, CompressesOnRequest) {
    FakeBackend backend;
    Scene scene;
    const std::string data = EncodeBase64(std::vector<uint8_t>(64, 7));
    ASSERT_TRUE(
        scene.Parse(R"({"version": 1, "textures": [{"name": "a", "compress": true, "width": 4, "height": 4,
        "levels": [{"data": ")" +
                        data + R"("}]}], "root": {}})",
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
    EXPECT_FALSE(scene.SaveFile(path + "/below"));
    EXPECT_TRUE(scene.IsFileError());
    ASSERT_TRUE(scene.SaveFile(path)) << scene.Error();
    Scene again;
    ASSERT_TRUE(again.Load(path, backend.registry)) << again.Error();
    std::string text;
    again.Save(text);
    const FileBytes file = ReadFileBytes(path, 1 << 20);
    EXPECT_EQ(std::string(file.bytes.begin(), file.bytes.end()), text);
    std::remove(path.c_str());
}

TEST(Scene, NeedsABackEnd) {
    ClassRegistry empty;
    Scene scene;
    EXPECT_FALSE(scene.Parse(R"({"version": 1, "root": {}})", empty));
    EXPECT_NE(scene.Error().find("/root: got \"Timeline\", for which no back end is loaded"),
              std::string::npos);
    EXPECT_FALSE(scene.Parse(R"({"version": 1, "textures": [{}], "root": {}})", empty));
    EXPECT_NE(scene.Error().find("/textures/0: got a texture, for which no back end"), std::string::npos);
}

TEST(Scene, LoadsManyNodes) {
    std::ostringstream text;
    text << R"({"version": 1, "root": {"children": [)";
    constexpr int kCount = 100000;
    for (int i = 0; i < kCount; ++i) {
        text << (i == 0 ? "" : ",") << R"({"class": "Sprite", "name": "s)" << i
             << R"(", "width": 16, "height": 16, "position": [)" << i % 640 << "," << i / 640 << ",0]}";
    }
    text << "], \"tracks\": [";
    for (int i = 0; i < kCount; i += 10) {
        text
            << (i == 0 ? "" : ",") << R"({"node": "s)" << i
            << R"(", "property": "opacity", "keys": [{"frame": 0, "value": 0}, {"frame": 100, "value": 1}]})";
    }
    text << "]}}";
    FakeBackend backend;
    Scene scene;
    ASSERT_TRUE(scene.Parse(text.str(), backend.registry)) << scene.Error();
    ASSERT_EQ(scene.root->GetChildren().Count(), static_cast<uint32_t>(kCount));
    FakeDevice device;
    scene.root->Update(device, RealFixed{});
    scene.root->Update(device, Fix(1));
    int animated = 0;
    int transforms = 0;
    for (Node* node : scene.root->GetChildren()) {
        animated += static_cast<FakeSprite*>(node)->opacity.Get() == Fix(0.3) ? 1 : 0;
        transforms += static_cast<FakeSprite*>(node)->transforms;
    }
    EXPECT_EQ(animated, kCount / 10);
    EXPECT_EQ(transforms, kCount + kCount / 10);  // what stands costs no second transform
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
        } else if (line == "```" && inside) {
            inside = false;
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
