#include <gtest/gtest.h>

#include <fstream>

#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"
#include "tests/temp_folder.h"

namespace zorvan::test {
namespace {

char const* const kWhole = R"({
  "version": 1, "size": [640, 480], "background": [0.1, 0.2, 0.3, 1], "camera2d": [641, 481],
  "textures": [
    {"name": "t", "format": "rgb565", "width": 4, "height": 1, "usedWidth": 1, "levels": [{"data": "AAECAwQFBgc="}, {"data": "CAkKCw=="}]},
    {"name": "u", "compress": true, "width": 1, "height": 1, "levels": [{"data": "/////w=="}]},
    {"name": "page", "width": 3, "height": 2, "levels": [{"data": "AAAA/wAAAP8AAAD/////////////////"}]}],
  "fonts": [{"name": "tiny", "lineHeight": 4, "ascent": 3.5, "pages": [{"texture": "page"}],
    "glyphs": [
      {"character": "\u0416", "rectangle": [0, 0, 2, 1]},
      {"character": "b", "page": 0, "rectangle": [1, 1, 3, 2], "offset": [0.5, -1], "advance": 2.25},
      {"character": "", "rectangle": [2, 0, 3, 2]}],
    "kerning": [{"left": "\u0416", "right": "b", "add": -1}]}],
  "shaders": [{"identifier": 4000000000, "binary": "AQID"}],
  "root": {
    "name": "tab\t\"quotes\" \\ € \u0001", "length": 60, "rate": 24, "mode": "ping-pong", "start": 0.5, "playing": false,
    "camera": {"name": "camera", "orthographic": true, "viewRectangle": [0, 0, 640, 480], "position": [1, 2, 3]},
    "children": [
      {"class": "Sprite", "name": "s", "width": 3, "height": 4, "texture": "t", "transferMode": 12, "masks": 2,
       "children": [{"class": "Sprite", "texture": "u", "color": [1, 0, 0, 0.5]}]},
      {"class": "TransformNode", "rotation": [0, 0, 45], "children": [{"class": "Timeline", "rate": 10}]},
      {"class": "Text", "font": null, "name": "unboxed"},
      {"class": "Text", "name": "x", "string": "Grüße", "font": "tiny", "box": [200.5, 0], "alignment": "bottom right",
       "letterSpacing": -2, "lineSpacing": 5}],
    "tracks": [
      {"node": "s", "property": "texture", "interpolation": "step", "keys": [{"frame": 0, "value": "u"}, {"frame": 1, "value": null}]},
      {"node": "unboxed", "property": "box", "keys": [{"frame": 0, "value": [5, 6]}]},
      {"property": "opacity", "interpolation": "smooth", "keys": [{"frame": 0, "value": 0.3}, {"frame": 2.5, "value": 1}]}]
  }
})";

class SceneTest : public testing::Test {
  protected:
    FakeBackend backend;
    FakeDevice device;
    Scene scene;
};

TEST_F(SceneTest, SavesWhatItLoads) {
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry)) << scene.Error();
    const std::string saved = ExpectSavesWhatItLoads(scene, backend.registry);
    for (char const* line :
         {R"("size": [640, 480])", R"("background": [0.1, 0.2, 0.3, 1])", R"("camera2d": [641, 481])",
          R"("start": 0.5)", R"("mode": "ping-pong")", R"("playing": false)", R"("position": [1, 2, 3])",
          R"("masks": 2)", R"("height": 4)", R"("transferMode": 12)", R"("string": "Grüße")",
          R"("box": [200.5, 0])", R"("alignment": "right bottom")", R"("letterSpacing": -2)",
          R"("lineSpacing": 5)", R"("font": "tiny")", R"("name": "tab\t\"quotes\" \\ € \u0001")",
          R"("binary": "AQID")", R"("data": "CAkKCw==")"}) {
        EXPECT_NE(saved.find(line), std::string::npos) << line << saved;
    }
    EXPECT_EQ(Shader::Find(4000000000u), scene.shaders[0].Get());
    EXPECT_EQ(scene.textures[1]->format.Get(), TextureFormat::AtcRgbaExplicitAlpha);
    FakeSprite* padded = Find(*scene.root, "s");
    EXPECT_EQ(padded->GetTexture(), scene.textures[0].Get());
    // Sprites show the used part of their textures; tracks change these through the same call.
    EXPECT_EQ(padded->textureChanges, 1);
    EXPECT_EQ(static_cast<FakeSprite*>(padded->GetChildren()[0])->textureChanges, 0);
    auto* unboxed = Find<Text>(*scene.root, "unboxed");
    EXPECT_FALSE(unboxed->hasBox.Get());
    for (double frame : {0, 1, 0, 0}) {
        scene.root->SetFrame(Fix(frame));
        scene.root->Update(device, {});
        EXPECT_EQ(padded->GetTexture(), frame == 0 ? scene.textures[1].Get() : nullptr);
    }
    EXPECT_EQ(padded->textureChanges, 4);
    EXPECT_TRUE(unboxed->hasBox.Get());
    scene.textures[1]->ReleasePixelStore();
    std::string text;
    EXPECT_FALSE(scene.Save(text));
    EXPECT_EQ(scene.Error(), "the texture \"u\" has no file and its pixels went to the device");
}

TEST_F(SceneTest, KeepsTextsAndGlyphTables) {
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry)) << scene.Error();
    ExpectSavesWhatItLoads(scene, backend.registry);
    const RefT<Node> copy(Find<Text>(*scene.root, "x")->Clone());
    Text const& text = static_cast<Text const&>(*copy);
    EXPECT_EQ(text.font.Get().Get(), scene.fonts[0].Get());
    EXPECT_TRUE(text.hasBox.Get());
    EXPECT_EQ(text.letterSpacing.Get(), -2);
    Font& font = *scene.fonts[0];
    Glyph const& zhe = *font.FindGlyph(0x416);
    EXPECT_EQ(std::tie(zhe.width, zhe.height), std::make_tuple(2, 1));
    // The upper left of the image: the last row of the stored one.
    EXPECT_EQ(std::tie(zhe.uLeft, zhe.uRight, zhe.vTop, zhe.vBottom),
              std::make_tuple(Fix(0), Fix(2.0 / 3), Fix(0.5), Fix(1)));
    EXPECT_EQ(std::tie(zhe.advance, zhe.offsetY), std::make_tuple(Fix(2), Fix(-3.5))) << "width, line's top";
    Glyph const& b = *font.FindGlyph('b');
    EXPECT_EQ(std::tie(b.vTop, b.advance, b.offsetX), std::make_tuple(Fix(0), Fix(2.25), Fix(0.5)));
    EXPECT_EQ(font.Kerning(zhe, b), Fix(-1));
    EXPECT_EQ(font.FindGlyph('?')->uLeft, Fix(2.0 / 3)) << "the glyph for missing characters";
}

TEST_F(SceneTest, GoesToFilesAndBack) {
    const TempFolder folder;
    const std::string path = folder / "scene.json";
    EXPECT_FALSE(scene.Load(path + ".missing", backend.registry));
    EXPECT_TRUE(scene.IsFileError());
    EXPECT_EQ(scene.Error(), path + ".missing: No such file or directory");
    ASSERT_TRUE(scene.Parse(kWhole, backend.registry));
    EXPECT_FALSE(scene.SaveFile(path + "/below"));
    EXPECT_TRUE(scene.IsFileError());
    ASSERT_TRUE(scene.SaveFile(path)) << scene.Error();
    std::string first, second;
    EXPECT_TRUE(scene.Save(first) && scene.Load(path, backend.registry) && scene.Save(second))
        << scene.Error();
    EXPECT_EQ(second, first);
}

// Every fenced block of JSON in the format's description is a whole scene.
TEST_F(SceneTest, LoadsTheExamplesOfItsDescription) {
    std::ifstream description(ZORVAN_DOCS "/scene-format.md");
    int examples = 0;
    std::string block;
    for (std::string line; std::getline(description, line); block += line + "\n") {
        if (line == "```json") {
            block.clear();
            line.clear();
        } else if (line == "```" && block.starts_with("\n{")) {
            ++examples;
            const bool loaded = scene.Parse(block, backend.registry);
            // The files of the examples are not here; all else about them is checked before.
            const bool missesFile = scene.Error().find("/file: logo.png: ") != std::string::npos ||
                                    scene.Error().find("/file: sans.ttf: ") != std::string::npos;
            EXPECT_TRUE(loaded || missesFile) << scene.Error() << block;
        }
    }
    EXPECT_GE(examples, 10);
}

}  // namespace
}  // namespace zorvan::test
