// Fonts and texts in scene files.
#include <gtest/gtest.h>

#include <filesystem>

#include "core/font_file.h"
#include "core/scene.h"
#include "core/text.h"
#include "fake_font.h"

namespace zorvan::test {
namespace {

class PlainText final : public Text {
  public:
    char const* GetClassName() override { return "Text"; }
};

class PlainTimeline final : public Timeline {
  public:
    char const* GetClassName() override { return "Timeline"; }
};

class TableTest : public testing::Test {
  protected:
    TableTest() {
        registry_.RegisterClass(new Maker<RecordingFont>(MakeClassId(u"Font")));
        registry_.RegisterClass(new Maker<PlainText>(MakeClassId(u"Text")));
        registry_.RegisterClass(new Maker<PlainTimeline>(MakeClassId(u"Timeline")));
    }

    PlainRegistry registry_;
};

class SceneTest : public TableTest {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(kDejaVu)) {
            GTEST_SKIP() << kDejaVu << " is missing: install fonts-dejavu-core";
        }
        std::string error;
        if (!FontFile::Open(kDejaVu, 20, error)) {
            GTEST_SKIP() << error;
        }
    }

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

TEST_F(SceneTest, TextsKeepTheirMembersThroughSaveAndLoad) {
    Scene scene;
    ASSERT_TRUE(scene.Parse(SceneOf(DejaVu(18) + R"(, "characters": "\u0416")",
                                    R"("font": "sans", "string": "\u03a9\n\u0431", "box": [200.5, 0],
                                       "alignment": "bottom right", "letterSpacing": -2, "lineSpacing": 5,
                                       "color": [1, 0.5, 0.25, 1])"),
                            registry_))
        << scene.Error();
    std::string first, second;
    for (std::string* saved : {&first, &second}) {
        Text& text = FirstText(scene);
        EXPECT_EQ(text.font.Get().Get(), scene.fonts[0].Get());
        EXPECT_EQ(text.string.Get(), MStringT<wchar_t>(L"\x3A9\n\x431"));
        EXPECT_TRUE(text.hasBox.Get());
        EXPECT_EQ(text.box.Get().width, RealFixed::FromRaw(200 * 65536 + 32768));
        EXPECT_EQ(text.alignment.Get(), TextAlignment::Right | TextAlignment::Bottom);
        EXPECT_EQ(text.letterSpacing.Get(), -2);
        EXPECT_EQ(text.lineSpacing.Get(), 5);
        // Characters of the font and of its texts are there before the first draw.
        ASSERT_EQ(scene.fonts[0]->PageCount(), 1u);
        for (uint32_t c : {0x416u, 0x3A9u, 0x431u}) {
            EXPECT_GT(scene.fonts[0]->FindGlyph(c)->width, 0) << c;
            EXPECT_NE(scene.fonts[0]->FindGlyph(c)->index, 0u) << c;
        }
        ASSERT_TRUE(scene.Save(*saved)) << scene.Error();
        ASSERT_TRUE(scene.Parse(*saved, registry_)) << scene.Error() << '\n' << *saved;
    }
    EXPECT_EQ(first, second);
}

TEST_F(SceneTest, TextWithoutBoxStaysWithoutOne) {
    Scene scene;
    ASSERT_TRUE(scene.Parse(SceneOf(DejaVu(18), R"("font": "sans", "string": "a")"), registry_))
        << scene.Error();
    std::string saved;
    ASSERT_TRUE(scene.Save(saved));
    ASSERT_TRUE(scene.Parse(saved, registry_)) << scene.Error();
    EXPECT_FALSE(FirstText(scene).hasBox.Get());
    EXPECT_EQ(FirstText(scene).alignment.Get(), 0);
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

TEST_F(TableTest, GlyphsOfTablesLieWhereTheImageShowsThem) {
    Scene scene;
    ASSERT_TRUE(scene.Parse(kTables, registry_)) << scene.Error();
    std::string first, second;
    for (std::string* saved : {&first, &second}) {
        Font& font = *scene.fonts[0];
        Glyph const& zhe = *font.FindGlyph(0x416);
        EXPECT_EQ(zhe.width, 2);
        EXPECT_EQ(zhe.height, 1);
        // The upper left of the image: the last row of the stored one.
        EXPECT_EQ(zhe.uLeft.raw, 0);
        EXPECT_EQ(zhe.uRight.raw, 0x8000);
        EXPECT_EQ(zhe.vTop.raw, 0x8000);
        EXPECT_EQ(zhe.vBottom.raw, 0x10000);
        EXPECT_EQ(zhe.advance, RealFixed::FromInt(2)) << "the width";
        EXPECT_EQ(zhe.offsetY.raw, -0x38000) << "at the line's top";
        Glyph const& b = *font.FindGlyph('b');
        EXPECT_EQ(b.vTop.raw, 0);
        EXPECT_EQ(b.advance.raw, 0x24000);
        EXPECT_EQ(b.offsetX.raw, 0x8000);
        EXPECT_EQ(font.Kerning(zhe, b), RealFixed::FromInt(-1));
        EXPECT_EQ(font.FindGlyph('?')->uLeft.raw, 0xC000) << "the glyph for missing characters";
        ASSERT_TRUE(scene.Save(*saved)) << scene.Error();
        ASSERT_TRUE(scene.Parse(*saved, registry_)) << scene.Error() << *saved;
    }
    EXPECT_EQ(first, second);
}

TEST_F(TableTest, MistakesAreNamed) {
    const struct {
        char const *from, *to, *expected;
    } cases[] = {
        {R"("pages": [{"texture": "page"}])", R"("pages": [])", "/fonts/0/pages: got no pages"},
        {R"({"texture": "page"})", R"({"texture": null})",
         "/fonts/0/pages/0: got a page without \"texture\""},
        {R"("lineHeight": 4, )", "", "/fonts/0: got a font without \"lineHeight\""},
        {R"("page": 0)", R"("page": 1)", "/fonts/0/glyphs/1/page: got 1, expected 0 to 0"},
        {"[1, 1, 4, 2]", "[1, 1, 5, 2]", "/glyphs/1/rectangle: got a rectangle outside the page"},
        {"[1, 1, 4, 2]", "[2, 1, 1, 2]", "/glyphs/1/rectangle: got a rectangle outside the page"},
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
        EXPECT_FALSE(scene.Parse(text, registry_)) << row.expected;
        EXPECT_NE(scene.Error().find(row.expected), std::string::npos) << scene.Error();
    }
}

TEST_F(SceneTest, MistakesAreNamed) {
    const std::string good = DejaVu(18);
    const std::string file = "\"file\": \"" + std::string(kDejaVu) + "\"";
    const struct {
        std::string font, text;
        char const* expected;
    } cases[] = {
        {"\"size\": 12", "", "/fonts/0: got a font without \"file\" and \"pages\""},
        {file, "", "/fonts/0: got a font without \"size\""},
        {file + ", \"size\": 0", "", "/fonts/0/size: got 0, expected 1 to 512 pixels"},
        {file + ", \"size\": 2000000000", "", "/fonts/0/size: got 2000000000, expected 1 to 512 pixels"},
        {file + ", \"size\": \"big\"", "", "/fonts/0/size: "},
        {"\"file\": \"none.ttf\", \"size\": 12", "", "none.ttf: No such file"},
        {good + ", \"colour\": 1", "", "/fonts/0/colour: "},
        {good + "}, {\"name\": \"sans\", " + good, "", "/fonts/1/name: got \"sans\" again"},
        {good, R"("font": "serif")", "/root/children/0/font: "},
        {good, R"("string": "a")", "/root/children/0: got a text without \"font\""},
        {good, R"("font": "sans", "alignment": "justify")", "/alignment: got \"justify\", expected left,"},
        {good, R"("font": "sans", "alignment": 3)", "/alignment: "},
        {good, R"("font": "sans", "box": [10])", "/box: "},
        {good, R"("font": "sans", "box": [-1, 5])", "/box: got a negative size"},
        {good, R"("font": "sans", "letterSpacing": 40000)", "/letterSpacing: got 40000, expected -32767"},
    };
    for (auto const& row : cases) {
        Scene scene;
        EXPECT_FALSE(
            scene.Parse(SceneOf(row.font, row.text.empty() ? R"("font": "sans")" : row.text), registry_))
            << row.expected;
        EXPECT_NE(scene.Error().find(row.expected), std::string::npos) << scene.Error();
        EXPECT_EQ(scene.Error().find('\n'), std::string::npos) << scene.Error();
    }
}

}  // namespace
}  // namespace zorvan::test
