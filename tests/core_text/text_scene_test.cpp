// Fonts and texts in scene files.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/font_file.h"
#include "tests/core/save_load.h"
#include "tests/core_text/fonts.h"

namespace zorvan::test {
namespace {

class TextScene : public FontFileTest {
  protected:
    // A scene of one font and one text with these members.
    static std::string SceneOf(std::string const& font, std::string const& text) {
        return R"({"version": 1, "fonts": [{"name": "sans", )" + font +
               R"(}], "root": {"children": [{"class": "Text", )" + text + "}]}}";
    }
    static std::string DejaVu(int size) {
        return "\"file\": \"" + std::string(kDejaVu) + "\", \"size\": " + std::to_string(size);
    }
    static Text& FirstText(Scene& scene) { return static_cast<Text&>(*scene.root->GetChildren()[0]); }
};

TEST_F(TextScene, TextsKeepTheirMembersThroughSaveAndLoad) {
    Scene scene;
    ASSERT_TRUE(scene.Parse(SceneOf(DejaVu(18), R"("font": "sans", "string": "a")"), backend_.registry));
    ExpectSavesWhatItLoads(scene, backend_.registry);
    EXPECT_FALSE(FirstText(scene).hasBox.Get());
    EXPECT_EQ(FirstText(scene).alignment.Get(), 0);
    ASSERT_TRUE(scene.Parse(SceneOf(DejaVu(18) + R"(, "characters": "\u0416")",
                                    R"("font": "sans", "string": "\u03a9\n\u0431", "box": [200.5, 0],
                                       "alignment": "bottom right", "letterSpacing": -2, "lineSpacing": 5)"),
                            backend_.registry))
        << scene.Error();
    ExpectSavesWhatItLoads(scene, backend_.registry);
    Text& text = FirstText(scene);
    EXPECT_EQ(text.font.Get().Get(), scene.fonts[0].Get());
    EXPECT_EQ(text.string.Get(), MStringT<wchar_t>(L"\x3A9\n\x431"));
    EXPECT_TRUE(text.hasBox.Get());
    EXPECT_EQ(text.box.Get(), (SizeT<RealFixed>{Fix(200.5), {}}));
    EXPECT_EQ(text.alignment.Get(), TextAlignment::Right | TextAlignment::Bottom);
    EXPECT_EQ(text.letterSpacing.Get(), -2);
    EXPECT_EQ(text.lineSpacing.Get(), 5);
    // Characters of the font and of its texts are there before the first draw.
    for (uint32_t c : {0x416u, 0x3A9u, 0x431u}) {
        EXPECT_NE(scene.fonts[0]->FindGlyph(c)->index, 0u) << c;
    }
    EXPECT_EQ(scene.fonts[0]->PageCount(), 1u);
}

char const* const kTables = R"({"version": 1,
  "textures": [{"name": "page", "width": 4, "height": 2, "format": "rgba8888",
    "levels": [{"data": "AAAA/wAAAP8AAAD/AAAA//////////////////////8="}]}],
  "fonts": [{"name": "tiny", "lineHeight": 4, "ascent": 3.5,
    "pages": [{"texture": "page"}],
    "glyphs": [
      {"character": "\u0416", "rectangle": [0, 0, 2, 1]},
      {"character": "b", "page": 0, "rectangle": [1, 1, 4, 2], "offset": [0.5, -1], "advance": 2.25},
      {"character": "", "rectangle": [3, 0, 4, 2]}],
    "kerning": [{"left": "\u0416", "right": "b", "add": -1}]}],
  "root": {"children": [{"class": "Text", "font": "tiny", "string": "b"}]}})";

TEST(FontTables, GlyphsLieWhereTheImageShowsThem) {
    FakeBackend backend;
    Scene scene;
    ASSERT_TRUE(scene.Parse(kTables, backend.registry)) << scene.Error();
    ExpectSavesWhatItLoads(scene, backend.registry);
    Font& font = *scene.fonts[0];
    Glyph const& zhe = *font.FindGlyph(0x416);
    EXPECT_EQ(zhe.width, 2);
    EXPECT_EQ(zhe.height, 1);
    // The upper left of the image: the last row of the stored one.
    EXPECT_EQ(std::tie(zhe.uLeft, zhe.uRight, zhe.vTop, zhe.vBottom),
              std::make_tuple(Fix(0), Fix(0.5), Fix(0.5), Fix(1)));
    EXPECT_EQ(zhe.advance, Fix(2)) << "the width";
    EXPECT_EQ(zhe.offsetY, Fix(-3.5)) << "at the line's top";
    Glyph const& b = *font.FindGlyph('b');
    EXPECT_EQ(std::tie(b.vTop, b.advance, b.offsetX), std::make_tuple(Fix(0), Fix(2.25), Fix(0.5)));
    EXPECT_EQ(font.Kerning(zhe, b), Fix(-1));
    EXPECT_EQ(font.FindGlyph('?')->uLeft, Fix(0.75)) << "the glyph for missing characters";
}

TEST(FontTables, MistakesAreNamed) {
    FakeBackend backend;
    const struct {
        char const *from, *to, *expected;
    } cases[] = {
        {R"("pages": [{"texture": "page"}])", R"("pages": [])", "/fonts/0/pages: got no pages"},
        {R"({"texture": "page"})", R"({"texture": null})",
         "/fonts/0/pages/0: got a page without \"texture\""},
        {R"("lineHeight": 4, )", "", "/fonts/0: got a font without \"lineHeight\""},
        {R"("page": 0)", R"("page": 1)", "/fonts/0/glyphs/1/page: got 1, expected 0 to 0"},
        {"[1, 1, 4, 2]", "[1, 1, 5, 2]", "/glyphs/1/rectangle: got a rectangle outside the page"},
        {"[1, 1, 4, 2]", "[1, 1, 3.5, 2]", "/glyphs/1/rectangle: got a rectangle outside the page"},
        {R"("character": "b")", R"("character": "bc")", "/glyphs/1/character: got \"bc\", expected one"},
        {R"("character": "b", )", "", "/glyphs/1: got a glyph without \"character\""},
        {R"(, "rectangle": [3, 0, 4, 2])", "", "/glyphs/2: got a glyph without \"rectangle\""},
        {R"("add": -1)", R"("by": -1)", "/kerning/0: got a pair without"},
        {R"("name": "tiny", )", R"("name": "tiny", "size": 3, )", "/fonts/0/size: got the unknown key"},
    };
    for (auto const& row : cases) {
        std::string text = kTables;
        text.replace(text.find(row.from), std::string(row.from).size(), row.to);
        Scene scene;
        EXPECT_FALSE(scene.Parse(text, backend.registry)) << row.expected;
        EXPECT_NE(scene.Error().find(row.expected), std::string::npos) << scene.Error();
    }
}

TEST_F(TextScene, MistakesAreNamed) {
    const std::string good = DejaVu(18);
    const std::string file = "\"file\": \"" + std::string(kDejaVu) + "\"";
    const struct {
        std::string font, text;
        char const* expected;
    } cases[] = {
        {"\"size\": 12", "", "/fonts/0: got a font without \"file\" and \"pages\""},
        {file, "", "/fonts/0: got a font without \"size\""},
        {file + ", \"size\": 0", "", "/fonts/0/size: got 0, expected 1 to 512 pixels"},
        {"\"file\": \"none.ttf\", \"size\": 12", "", "none.ttf: No such file"},
        {good + ", \"colour\": 1", "", "/fonts/0/colour: "},
        {good + "}, {\"name\": \"sans\", " + good, "", "/fonts/1/name: got \"sans\" again"},
        {good, R"("font": "serif")", "/root/children/0/font: "},
        {good, R"("string": "a")", "/root/children/0: got a text without \"font\""},
        {good, R"("font": "sans", "alignment": "justify")", "/alignment: got \"justify\", expected left,"},
        {good, R"("font": "sans", "box": [10])", "/box: "},
        {good, R"("font": "sans", "box": [-1, 5])", "/box: got a negative size"},
        {good, R"("font": "sans", "letterSpacing": 40000)", "/letterSpacing: got 40000, expected -32767"},
    };
    for (auto const& row : cases) {
        Scene scene;
        EXPECT_FALSE(scene.Parse(SceneOf(row.font, row.text.empty() ? R"("font": "sans")" : row.text),
                                 backend_.registry))
            << row.expected;
        EXPECT_NE(scene.Error().find(row.expected), std::string::npos) << scene.Error();
        EXPECT_EQ(scene.Error().find('\n'), std::string::npos) << scene.Error();
    }
}

}  // namespace
}  // namespace zorvan::test
