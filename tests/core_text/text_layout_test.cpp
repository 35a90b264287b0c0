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
        glyph.advance = RealFixed::FromInt(advance) * unit;
        glyph.width = glyph.height = blank ? 0 : 8;
        glyph.offsetY = RealFixed::FromInt(-15);
        return &glyph;
    }
    RealFixed Kerning(Glyph const& left, Glyph const& right) const override {
        return RealFixed::FromInt(left.index == 'A' && right.index == 'V' ? -3 : 0);
    }

    RealFixed unit = kOne<RealFixed>;  // that advances are multiplied with

  private:
    mutable std::map<uint32_t, Glyph> glyphs_;
};

constexpr int32_t kCenter = TextAlignment::Center, kRight = TextAlignment::Right;
constexpr int32_t kMiddle = TextAlignment::Middle, kBottom = TextAlignment::Bottom;

TextLayoutOptions Spacing(int letter, int line) {
    TextLayoutOptions options;
    options.letterSpacing = letter;
    options.lineSpacing = line;
    return options;
}

TextLayoutOptions Box(int width, int height, int32_t alignment = 0, int letterSpacing = 0) {
    return {true, {RealFixed::FromInt(width), RealFixed::FromInt(height)}, alignment, letterSpacing, 0};
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

const struct {
    char const* name;
    std::wstring text;
    TextLayoutOptions options;
    char const* expected;
    int width, height;
} kCases[] = {
    {"emptyInBox", L"", Box(50, 50, kRight | kBottom), "", 0, 20},
    {"kerning", L"iAVA", {}, "i@0,0 A@4,0 V@11,0 A@21,0", 31, 20},
    {"noKerningOverSpace", L"A V", {}, "A@0,0 V@15,0", 25, 20},
    {"noGlyph", L"A\uFFFFV", {}, "A@0,0 V@7,0", 17, 20},
    {"carriageReturns", L"a\r\nb\rc\n\rd", {}, "a@0,0 b@0,20 c@0,40 d@0,80", 10, 100},
    {"separators", L"\na\u2028b\u2029c\u0085d\n", {}, "a@0,20 b@0,40 c@0,60 d@0,80", 10, 120},
    {"tabs", L"a\tb\t\tc", {}, "a@0,0 b@40,0 c@120,0", 130, 20},
    {"invisible", L"a\u0001\u00AD\u200D\uFEFFb", {}, "a@0,0 b@10,0", 20, 20},
    {"negativeSpacing", L"ab\nc", Spacing(-4, -6), "a@0,0 b@6,0 c@0,14", 16, 34},
    {"markStaysOnItsLetter", L"a\u0301b", Spacing(3, 0), "a@0,0 #769@10,0 b@13,0", 23, 20},
    // Wrapping.
    {"fitsExactly", L"aa bb", Box(45, 0), "a@0,0 a@10,0 b@25,0 b@35,0", 45, 20},
    {"wrapsAWord", L"aa bb", Box(44, 0), "a@0,0 a@10,0 b@0,20 b@10,20", 20, 40},
    {"spacesHang", L"aa     b", Box(20, 0), "a@0,0 a@10,0 b@0,20", 20, 40},
    {"leadingSpacesTooWide", L"      a", Box(20, 0), "a@0,20", 10, 40},
    {"noBreakBehindLeadingSpaces", L"  aaa", Box(25, 0), "a@10,0 a@0,20 a@10,20", 20, 40},
    {"kerningStaysInMovedWord", L"a AV", Box(25, 0), "a@0,0 A@0,20 V@7,20", 17, 40},
    {"longWordMovesThenBreaks", L"i bbb", Box(29, 0, kRight), "i@25,0 b@9,20 b@19,20 b@19,40", 20, 60},
    {"letterWiderThanBox", L"abc", Box(3, 0), "a@0,0 b@0,20 c@0,40", 10, 60},
    {"widthZeroDoesNotWrap", L"a b", Box(0, 0), "a@0,0 b@15,0", 25, 20},
    {"noBreakSpace", L"a b\u00A0c", Box(30, 0), "a@0,0 b@0,20 c@15,20", 25, 40},
    {"zeroWidthSpace", L"a\u200Bb\u200Bb", Box(20, 0), "a@0,0 b@10,0 b@0,20", 20, 40},
    {"hyphen", L"aa-bb", Box(40, 0), "a@0,0 a@10,0 -@20,0 b@0,20 b@10,20", 30, 40},
    {"dashesStayTogether", L"a--b", Box(25, 0), "a@0,0 -@10,0 -@0,20 b@10,20", 20, 40},
    {"minusStaysWithNumber", L"aa -1", Box(40, 0), "a@0,0 a@10,0 -@0,20 1@10,20", 20, 40},
    {"ideographs", L"\x4E00\x4E8C\x3002", Box(20, 0), "#19968@0,0 #20108@0,20 #12290@10,20", 20, 40},
    {"brackets", L"a\x300C\x4E00\x300D", Box(20, 0), "a@0,0 #12300@0,20 #19968@10,20 #12301@0,40", 20, 60},
    {"spacingCountsForWrap", L"aa b", Box(37, 0, 0, 2), "a@0,0 a@12,0 b@0,20", 22, 40},
    // Alignment.
    {"center", L"a\nbbb\nc", Box(50, 0, kCenter), "a@20,0 b@10,20 b@20,20 b@30,20 c@20,40", 30, 60},
    {"right", L"a b ", Box(20, 0, kRight), "a@10,0 b@10,20", 10, 40},
    {"oddRoomRoundsDown", L"a", Box(15, 25, kCenter | kMiddle), "a@2,2", 10, 20},
    {"bottom", L"a\nb", Box(100, 100, kRight | kBottom), "a@90,60 b@90,80", 10, 40},
    {"tooHighHangsOutOnBothSides", L"a\nb", Box(10, 20, kMiddle), "a@0,-10 b@0,10", 10, 40},
    {"aboutAPoint", L"ab", Box(0, 0, kCenter | kMiddle), "a@-10,-10 b@0,-10", 20, 20},
    {"letterSpacingDoesNotShiftTheEnd", L"ab", Box(100, 0, kRight, 5), "a@75,0 b@90,0", 25, 20},
    // Extreme spacings are clamped instead of wrapping around.
    {"leastSpacing", L"ab", Spacing(INT32_MIN, INT32_MAX), "a@0,0 b@-32757,0", 0, 20},
};

TEST(TextLayout, PlacesGlyphs) {
    const MadeUpGlyphs source;
    for (auto const& row : kCases) {
        SCOPED_TRACE(row.name);
        std::vector<PlacedGlyph> glyphs(7);  // from an earlier string
        const TextExtent extent = LayOutText(row.text, source, row.options, glyphs);
        EXPECT_EQ(Describe(glyphs), row.expected);
        EXPECT_EQ(extent.width, RealFixed::FromInt(row.width));
        EXPECT_EQ(extent.height, RealFixed::FromInt(row.height));
    }
}

TEST(TextLayout, LeavesOutWhatIsOutsideAndRoundsToPixels) {
    MadeUpGlyphs source;
    std::vector<PlacedGlyph> glyphs;
    EXPECT_EQ(LayOutText(std::wstring(10000, L'a'), source, {}, glyphs).width.raw, INT32_MAX);
    ASSERT_EQ(glyphs.size(), 3277u);
    EXPECT_EQ(glyphs.back().position.x, RealFixed::FromInt(32760));
    LayOutText(std::wstring(10000, L'\n').append(L"a"), source, Spacing(0, INT32_MIN), glyphs);
    EXPECT_TRUE(glyphs.empty());
    source.unit = RealFixed::FromRaw(0x6000);  // an 'i' is 1.5 wide
    source.ascent = RealFixed::FromRaw(0xF8000);
    LayOutText(L"iiii", source, {}, glyphs);
    EXPECT_EQ(Describe(glyphs), "i@0,1 i@2,1 i@3,1 i@5,1");
}

TEST(TextAlignmentWords, ReadAndWritten) {
    EXPECT_EQ(ParseTextAlignment("centre"), kCenter);
    EXPECT_EQ(ParseTextAlignment("  middle   right "), kMiddle | kRight);
    for (auto words : {"", " ", "left right", "Center", "center middle top", "centermiddle"}) {
        EXPECT_FALSE(ParseTextAlignment(words)) << '"' << words << '"';
    }
    for (int32_t horizontal = 0; horizontal < 3; ++horizontal) {
        for (int32_t vertical = 0; vertical <= 8; vertical += 4) {
            EXPECT_EQ(ParseTextAlignment(TextAlignmentWords(horizontal | vertical)), horizontal | vertical);
        }
    }
    EXPECT_EQ(TextAlignmentWords(-1), "left top");
    EXPECT_EQ(TextAlignmentWords(9), "center bottom");
}

}  // namespace
}  // namespace zorvan
