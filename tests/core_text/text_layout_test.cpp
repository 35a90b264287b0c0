// Layout with a font of made-up metrics: every letter is 10 pixels wide, a space 5, a line 20 high with
// its baseline at 15; an 'i' takes 4 pixels, "AV" moves together by 3.
#include <gtest/gtest.h>

#include <map>

#include "core/text_layout.h"

namespace zorvan {
namespace {

class MadeUpGlyphs final : public GlyphSource {
  public:
    MadeUpGlyphs() {
        lineHeight = RealFixed::FromInt(20);
        ascent = RealFixed::FromInt(15);
    }

    Glyph const* Find(uint32_t c) const override {
        if (c == 0xFFFF) {
            return nullptr;
        }
        Glyph& glyph = glyphs_[c];
        const bool blank = c == ' ' || c == 0xA0 || c == 0x3000;
        const int advance = c == ' ' || c == 0xA0 ? 5 : c == 'i' ? 4 : c == 0x301 ? 0 : 10;
        glyph.index = c;
        glyph.advance = RealFixed::FromInt(advance);
        glyph.width = glyph.height = blank ? 0 : 8;
        glyph.offsetY = RealFixed::FromInt(-15);
        return &glyph;
    }
    RealFixed Kerning(Glyph const& left, Glyph const& right) const override {
        return RealFixed::FromInt(left.index == 'A' && right.index == 'V' ? -3 : 0);
    }

  private:
    mutable std::map<uint32_t, Glyph> glyphs_;
};

TextLayoutOptions Box(int width, int height, int32_t alignment = 0) {
    TextLayoutOptions options;
    options.hasBox = true;
    options.box = {RealFixed::FromInt(width), RealFixed::FromInt(height)};
    options.alignment = alignment;
    return options;
}

TextLayoutOptions Spacing(int letter, int line) {
    TextLayoutOptions options;
    options.letterSpacing = letter;
    options.lineSpacing = line;
    return options;
}

// One "letter@x,y" for each glyph.
std::string Describe(std::vector<PlacedGlyph> const& glyphs) {
    std::string text;
    for (PlacedGlyph const& placed : glyphs) {
        EXPECT_EQ(placed.position.x.raw & 0xFFFF, 0) << "not on a whole pixel";
        EXPECT_EQ(placed.position.y.raw & 0xFFFF, 0) << "not on a whole pixel";
        text += text.empty() ? "" : " ";
        text += placed.glyph->index < 0x7F ? std::string(1, static_cast<char>(placed.glyph->index))
                                           : "#" + std::to_string(placed.glyph->index);
        text += "@" + std::to_string(placed.position.x.raw >> 16) + "," +
                std::to_string(placed.position.y.raw >> 16);
    }
    return text;
}

struct LayoutCase {
    char const* name;
    std::wstring text;
    TextLayoutOptions options;
    char const* expected;
    int width, height;
};

void PrintTo(LayoutCase const& param, std::ostream* out) {
    *out << param.name;
}

const LayoutCase kCases[] = {
    {"empty", L"", {}, "", 0, 20},
    {"emptyInBox", L"", Box(50, 50, TextAlignment::Right | TextAlignment::Bottom), "", 0, 20},
    {"onlySpaces", L"   ", Box(10, 50), "", 0, 20},
    {"plain", L"ab", {}, "a@0,0 b@10,0", 20, 20},
    {"ownAdvances", L"iia", {}, "i@0,0 i@4,0 a@8,0", 18, 20},
    {"kerning", L"AVA", {}, "A@0,0 V@7,0 A@17,0", 27, 20},
    {"noKerningOverSpace", L"A V", {}, "A@0,0 V@15,0", 25, 20},
    {"noGlyph",
     L"a\xFFFF"
     L"b",
     {},
     "a@0,0 b@10,0",
     20,
     20},
    {"lineFeed", L"a\nb", {}, "a@0,0 b@0,20", 10, 40},
    {"carriageReturns", L"a\r\nb\rc\n\rd", {}, "a@0,0 b@0,20 c@0,40 d@0,80", 10, 100},
    {"separators",
     L"a\x2028"
     L"b\x2029"
     L"c\x85"
     L"d",
     {},
     "a@0,0 b@0,20 c@0,40 d@0,60",
     10,
     80},
    {"emptyLines", L"\na\n\n", {}, "a@0,20", 10, 80},
    {"tabs", L"a\tb\t\tc", {}, "a@0,0 b@40,0 c@120,0", 130, 20},
    {"invisible",
     L"a\x01\xAD\x200D\xFEFF"
     L"b",
     {},
     "a@0,0 b@10,0",
     20,
     20},
    {"letterSpacing", L"abc", Spacing(3, 0), "a@0,0 b@13,0 c@26,0", 36, 20},
    {"negativeSpacing", L"ab\nc", Spacing(-4, -6), "a@0,0 b@6,0 c@0,14", 16, 34},
    {"lineSpacing", L"a\nb\nc", Spacing(0, 7), "a@0,0 b@0,27 c@0,54", 10, 74},
    {"markStaysOnItsLetter",
     L"a\x301"
     L"b",
     Spacing(3, 0), "a@0,0 #769@10,0 b@13,0", 23, 20},
    // Wrapping.
    {"fitsExactly", L"aa bb", Box(45, 0), "a@0,0 a@10,0 b@25,0 b@35,0", 45, 20},
    {"wrapsAWord", L"aa bb", Box(44, 0), "a@0,0 a@10,0 b@0,20 b@10,20", 20, 40},
    {"wrapsEveryWord", L"a b c", Box(10, 0), "a@0,0 b@0,20 c@0,40", 10, 60},
    {"spacesHang", L"aa     b", Box(20, 0), "a@0,0 a@10,0 b@0,20", 20, 40},
    {"leadingSpacesStay", L"  a", Box(100, 0), "a@10,0", 20, 20},
    {"leadingSpacesTooWide", L"      a", Box(20, 0), "a@0,20", 10, 40},
    {"kerningStaysInMovedWord", L"a AV", Box(25, 0), "a@0,0 A@0,20 V@7,20", 17, 40},
    {"longWordMovesThenBreaks", L"a bbbbb", Box(35, 0), "a@0,0 b@0,20 b@10,20 b@20,20 b@0,40 b@10,40", 30,
     60},
    {"letterWiderThanBox", L"abc", Box(3, 0), "a@0,0 b@0,20 c@0,40", 10, 60},
    {"widthZeroDoesNotWrap", L"a b", Box(0, 0), "a@0,0 b@15,0", 25, 20},
    {"noBreakSpace",
     L"a b\xA0"
     L"c",
     Box(30, 0), "a@0,0 b@0,20 c@15,20", 25, 40},
    {"zeroWidthSpace",
     L"aa\x200B"
     L"bb",
     Box(30, 0), "a@0,0 a@10,0 b@0,20 b@10,20", 20, 40},
    {"hyphen", L"aa-bb", Box(40, 0), "a@0,0 a@10,0 -@20,0 b@0,20 b@10,20", 30, 40},
    {"dashesStayTogether", L"a--b", Box(25, 0), "a@0,0 -@10,0 -@0,20 b@10,20", 20, 40},
    {"minusStaysWithNumber", L"aa -1", Box(40, 0), "a@0,0 a@10,0 -@0,20 1@10,20", 20, 40},
    {"ideographs", L"\x4E00\x4E8C\x3002", Box(20, 0), "#19968@0,0 #20108@0,20 #12290@10,20", 20, 40},
    {"brackets", L"\x4E00\x300C\x4E00\x300D", Box(20, 0), "#19968@0,0 #12300@0,20 #19968@10,20 #12301@0,40",
     20, 60},
    {"breakAndNewline", L"a b\nc", Box(10, 0), "a@0,0 b@0,20 c@0,40", 10, 60},
    {"spacingCountsForWrap", L"aa b",
     [] {
         TextLayoutOptions options = Box(37, 0);
         options.letterSpacing = 2;
         return options;
     }(),
     "a@0,0 a@12,0 b@0,20", 22, 40},
    // Alignment.
    {"center", L"a\nbbb", Box(50, 0, TextAlignment::Center), "a@20,0 b@10,20 b@20,20 b@30,20", 30, 40},
    {"right", L"a b ", Box(20, 0, TextAlignment::Right), "a@10,0 b@10,20", 10, 40},
    {"oddRoomRoundsDown", L"a", Box(15, 25, TextAlignment::Center | TextAlignment::Middle), "a@2,2", 10, 20},
    {"middle", L"a\nb", Box(100, 100, TextAlignment::Middle), "a@0,30 b@0,50", 10, 40},
    {"bottom", L"a\nb", Box(100, 100, TextAlignment::Right | TextAlignment::Bottom), "a@90,60 b@90,80", 10,
     40},
    {"tooHighHangsOutOnBothSides", L"a\nb", Box(10, 20, TextAlignment::Middle), "a@0,-10 b@0,10", 10, 40},
    {"aboutAPoint", L"ab", Box(0, 0, TextAlignment::Center | TextAlignment::Middle), "a@-10,-10 b@0,-10", 20,
     20},
    {"letterSpacingDoesNotShiftTheEnd", L"ab",
     [] {
         TextLayoutOptions options = Box(100, 0, TextAlignment::Right);
         options.letterSpacing = 5;
         return options;
     }(),
     "a@75,0 b@90,0", 25, 20},
};

class TextLayout : public testing::TestWithParam<LayoutCase> {};

TEST_P(TextLayout, PlacesGlyphs) {
    LayoutCase const& param = GetParam();
    const MadeUpGlyphs source;
    std::vector<PlacedGlyph> glyphs(7);  // from an earlier string
    const TextExtent extent = LayOutText(param.text, source, param.options, glyphs);
    EXPECT_EQ(Describe(glyphs), param.expected);
    EXPECT_EQ(extent.width, RealFixed::FromInt(param.width));
    EXPECT_EQ(extent.height, RealFixed::FromInt(param.height));
}

INSTANTIATE_TEST_SUITE_P(Cases, TextLayout, testing::ValuesIn(kCases),
                         [](auto const& test) { return std::string(test.param.name); });

TEST(TextLayoutRange, GlyphsOutsideFixedPointAreLeftOut) {
    const MadeUpGlyphs source;
    std::vector<PlacedGlyph> glyphs;
    const std::wstring line(10000, L'a');
    EXPECT_EQ(LayOutText(line, source, {}, glyphs).width.raw, INT32_MAX);
    ASSERT_EQ(glyphs.size(), 3277u);
    EXPECT_EQ(glyphs.back().position.x, RealFixed::FromInt(32760));

    const std::wstring lines(10000, L'\n');
    LayOutText(lines + L'a', source, Spacing(INT32_MAX, INT32_MIN), glyphs);
    EXPECT_TRUE(glyphs.empty());
    // Extreme spacings are clamped instead of wrapping around.
    LayOutText(L"ab", source, Spacing(INT32_MIN, INT32_MAX), glyphs);
    EXPECT_EQ(Describe(glyphs), "a@0,0 b@-32757,0");
}

TEST(TextLayoutRange, FractionsRoundToWholePixels) {
    class HalfGlyphs final : public GlyphSource {
      public:
        HalfGlyphs() {
            glyph.width = glyph.height = 1;
            glyph.advance = RealFixed::FromRaw(0x18000);
            ascent = RealFixed::FromRaw(0x8000);
        }
        Glyph const* Find(uint32_t) const override { return &glyph; }
        RealFixed Kerning(Glyph const&, Glyph const&) const override { return {}; }
        Glyph glyph;
    };
    std::vector<PlacedGlyph> glyphs;
    LayOutText(L"aaaa", HalfGlyphs(), {}, glyphs);
    const int expected[] = {0, 2, 3, 5};
    ASSERT_EQ(glyphs.size(), 4u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(glyphs[i].position.x, RealFixed::FromInt(expected[i]));
        EXPECT_EQ(glyphs[i].position.y, RealFixed::FromInt(1));
    }
}

TEST(TextAlignmentWords, ReadAndWritten) {
    const struct {
        char const* words;
        std::optional<int32_t> value;
    } cases[] = {{"left", 0},
                 {"center", 1},
                 {"centre", 1},
                 {"bottom", 8},
                 {"right middle", 6},
                 {"  middle   right ", 6},
                 {"", std::nullopt},
                 {" ", std::nullopt},
                 {"left right", std::nullopt},
                 {"Center", std::nullopt},
                 {"center middle top", std::nullopt},
                 {"centermiddle", std::nullopt}};
    for (auto const& row : cases) {
        EXPECT_EQ(ParseTextAlignment(row.words), row.value) << '"' << row.words << '"';
    }
    for (int32_t horizontal = 0; horizontal < 3; ++horizontal) {
        for (int32_t vertical = 0; vertical <= 8; vertical += 4) {
            const int32_t value = horizontal | vertical;
            EXPECT_EQ(ParseTextAlignment(TextAlignmentWords(value)), value);
        }
    }
    EXPECT_EQ(TextAlignmentWords(-1), "left top");
}

}  // namespace
}  // namespace zorvan
