#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <numeric>
#include <string>

#include "tests/core_text/fonts.h"

namespace zorvan::test {
namespace {

constexpr ColorT<RealFixed> kWhite{kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>};

class FontTest : public FontFileTest {
  protected:
    RefT<FakeFont> Open(char const* path, int size) {
        RefT<FakeFont> font(new FakeFont);
        std::string error;
        EXPECT_TRUE(font->LoadFile(backend_.registry, path, size, error)) << error;
        EXPECT_TRUE(font->Initialize());
        return font;
    }

    std::vector<FakeFont::Draw> const& Draw(FakeFont& font, std::wstring const& text, int spacing = 0) {
        font.draws.clear();
        font.DrawString(device_, MStringT<wchar_t>(text), kWhite, spacing, 0);
        return font.draws;
    }
};

// Coverage of a glyph on its page, rows from the glyph's top.
std::vector<std::vector<int>> Coverage(Font const& font, Glyph const& glyph) {
    Texture const& page = font.Page(static_cast<uint32_t>(glyph.page));
    const int pageWidth = page.width.Get(), pageHeight = page.height.Get();
    const int left = static_cast<int>((int64_t{glyph.uLeft.raw} * pageWidth) >> 16);
    const int top = static_cast<int>((int64_t{glyph.vBottom.raw} * pageHeight) >> 16);
    std::vector<std::vector<int>> rows;
    for (int y = 0; y < glyph.height; ++y) {
        rows.emplace_back();
        for (int x = 0; x < glyph.width; ++x) {
            uint8_t const* pixel = page.pixels.data + ((top - 1 - y) * pageWidth + left + x) * 4;
            EXPECT_EQ(pixel[0], pixel[1]);
            EXPECT_EQ(pixel[0], pixel[2]);
            rows.back().push_back(pixel[0]);
        }
    }
    return rows;
}

int RowSum(std::vector<int> const& row) {
    return std::accumulate(row.begin(), row.end(), 0);
}

TEST_F(FontTest, PagesHoldCoverageBottomUp) {
    const RefT<FakeFont> font = Open(kDejaVu, 32);
    ASSERT_EQ(font->PageCount(), 1u);
    Texture& page = font->Page(0);
    EXPECT_EQ(page.format.Get(), 6u);
    const auto width = static_cast<uint32_t>(page.width.Get()),
               height = static_cast<uint32_t>(page.height.Get());
    ASSERT_EQ(page.levels.Count(), 1u);
    EXPECT_EQ(page.levels[0], (TextureLevel{width, height, 0, width * height * 4}));
    ASSERT_EQ(page.pixels.size, width * height * 4);
    for (uint32_t offset = 3; offset < page.pixels.size; offset += 4) {
        ASSERT_EQ(page.pixels.data[offset], 255) << "alpha";
    }
    // A T has its bar at the top, an L at the bottom; full coverage inside.
    const auto bar = Coverage(*font, *font->FindGlyph('T'));
    EXPECT_GT(RowSum(bar[1]), 2 * RowSum(bar[bar.size() / 2]));
    EXPECT_EQ(bar[1][bar[1].size() / 2], 255);
    const auto foot = Coverage(*font, *font->FindGlyph('L'));
    EXPECT_GT(RowSum(foot[foot.size() - 2]), 2 * RowSum(foot[1]));
    // A capital stands on the baseline, a g hangs below it.
    Glyph const& capital = *font->FindGlyph('T');
    EXPECT_EQ(capital.offsetY, RealFixed::FromInt(-capital.height));
    Glyph const& descender = *font->FindGlyph('g');
    EXPECT_GT(descender.offsetY + RealFixed::FromInt(descender.height), Fix(4));
}

TEST_F(FontTest, AllInkLiesInTheGlyphsBoxes) {
    const RefT<FakeFont> font = Open(kLiberation, 19);
    int64_t boxed = 0, all = 0;
    for (uint32_t c = 0x20; c < 0x7F; ++c) {
        // The last one is that for missing characters.
        for (auto const& row : Coverage(*font, *font->FindGlyph(c == 0x20 ? 0x10FFFF : c))) {
            boxed += RowSum(row);
        }
    }
    for (uint32_t i = 0; i < font->PageCount(); ++i) {
        Texture& page = font->Page(i);
        for (uint32_t offset = 0; offset < page.pixels.size; offset += 4) {
            all += page.pixels.data[offset];
        }
    }
    EXPECT_EQ(boxed, all);
    EXPECT_GT(boxed, 0);
}

TEST_F(FontTest, ScriptsAndMissingCharacters) {
    const RefT<FakeFont> font = Open(kDejaVu, 24);
    // Omega, zhe, euro, double-struck A; a private character, a surrogate and what is beyond Unicode.
    auto const& draws = Draw(*font, L"\x3A9\x416\x20AC\x1D538\xE123\xD800\x110000");
    ASSERT_EQ(draws.size(), 7u);
    for (size_t i = 0; i < 7; ++i) {
        Glyph const& glyph = *draws[i].glyph;
        EXPECT_EQ(glyph.index == 0, i >= 4) << i;
        EXPECT_GT(RowSum(Coverage(*font, glyph)[0]), 0) << i;
    }
}

TEST_F(FontTest, LateGlyphsGoOnNewPages) {
    const RefT<FakeFont> font = Open(kDejaVu, 24);
    const uint32_t pages = font->PageCount();
    Draw(*font, L"abc");
    EXPECT_EQ(font->PageCount(), pages);
    // The first page was uploaded and its memory dropped.
    font->Page(0).ReleasePixelStore();
    auto const& draws = Draw(*font, L"a\x416\x3A9\x416");
    EXPECT_EQ(font->PageCount(), pages + 1) << "one page for all new glyphs of a string";
    ASSERT_EQ(draws.size(), 4u);
    EXPECT_EQ(draws[0].glyph->page, 0);
    EXPECT_EQ(draws[1].glyph->page, static_cast<int16_t>(pages));
    EXPECT_EQ(draws[1].glyph, draws[3].glyph);
    Draw(*font, L"\x416");
    EXPECT_EQ(font->PageCount(), pages + 1);
}

TEST_F(FontTest, PagesDoNotDependOnTheOrderOfCharacters) {
    std::vector<uint8_t> bytes[2];
    wchar_t const* const texts[2] = {L"\x416\x3A9\x44F", L"\x44F\x3A9\x416\x3A9"};
    for (int i = 0; i < 2; ++i) {
        const RefT<FakeFont> font(new FakeFont);
        std::string error;
        ASSERT_TRUE(font->LoadFile(backend_.registry, kDejaVu, 24, error)) << error;
        ASSERT_TRUE(font->AddCharacters(texts[i], error)) << error;
        ASSERT_TRUE(font->Initialize());
        PixelStore const& pixels = font->Page(0).pixels;
        bytes[i].assign(pixels.data, pixels.data + pixels.size);
    }
    EXPECT_EQ(bytes[0], bytes[1]);
}

TEST_F(FontTest, DrawsOnWholePixelsWithKerningAndOptions) {
    const RefT<FakeFont> font = Open(kLiberation, 40);
    auto const& draws = Draw(*font, L"AV");
    ASSERT_EQ(draws.size(), 2u);
    Glyph const& a = *draws[0].glyph;
    Glyph const& v = *draws[1].glyph;
    EXPECT_LT(font->Kerning(a, v), RealFixed{});
    EXPECT_EQ(draws[1].position.x - v.offsetX, a.advance + font->Kerning(a, v));
    EXPECT_EQ(draws[0].position.y, font->ascent + a.offsetY);

    const ColorT<RealFixed> color{RealFixed{1}, RealFixed{2}, RealFixed{3}, RealFixed{4}};
    font->draws.clear();
    font->DrawString(device_, L"A V", color, {Fix(301), Fix(201)},
                     TextAlignment::Center | TextAlignment::Bottom, 2, 0);
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].color, color);
    EXPECT_EQ(draws[0].position.y - a.offsetY, Fix(201) - font->lineHeight + font->ascent);
    EXPECT_EQ((draws[1].position.x.raw | draws[1].position.y.raw) & 0xFFFF, 0);
}

TEST_F(FontTest, RemembersLayoutsByStringAndOptions) {
    const RefT<FakeFont> font = Open(kDejaVu, 16);
    const RealFixed second = Draw(*font, L"xx")[1].position.x;
    for (int round = 0; round < 2; ++round) {
        for (int spacing : {0, 3}) {
            EXPECT_EQ(Draw(*font, L"xx", spacing)[1].position.x, second + RealFixed::FromInt(spacing));
        }
        // Many strings share the table.
        for (int i = 0; i < 3000; ++i) {
            const std::wstring digits = std::to_wstring(i);
            auto const& draws = Draw(*font, digits);
            ASSERT_EQ(draws.size(), digits.size());
            for (size_t k = 0; k < digits.size(); ++k) {
                ASSERT_EQ(draws[k].glyph, font->FindGlyph(static_cast<uint32_t>(digits[k])));
            }
        }
    }
}

TEST_F(FontTest, BadFilesGiveOneClearLine) {
    const std::filesystem::path folder = testing::TempDir() + "zorvan_fonts_" + std::to_string(::getpid());
    const std::string damaged = (folder / "font.ttf").string();
    struct Case {
        std::string path;
        int size;
        std::string data;  // of the damaged file
        char const* expected;
    };
    std::vector<Case> cases = {
        {(folder / "none.ttf").string(), 20, "", "No such file or directory"},
        {folder.string(), 20, "", "got a folder, expected a file"},
        {kDejaVu, 0, "", "got a font size of 0, expected 1 to 512 pixels"},
        {kDejaVu, -3, "", "got a font size of -3"},
        {kDejaVu, 2000000000, "", "got a font size of 2000000000"},
        {damaged, 20, "", ""},
        {damaged, 20, "not a font at all", ""},
        {damaged, 20, std::string(5000, '\0'), ""},
    };
    std::ifstream in(kDejaVu, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(in), {}};
    for (size_t sixteenths = 0; sixteenths < 16; ++sixteenths) {
        cases.push_back(
            {damaged, 20, whole.substr(0, std::max<size_t>(4, whole.size() * sixteenths / 16)), ""});
    }
    std::filesystem::create_directories(folder);
    for (Case const& row : cases) {
        SCOPED_TRACE(row.path + " " + row.expected + std::to_string(row.data.size()));
        std::ofstream(damaged, std::ios::binary) << row.data;
        std::string error;
        const RefT<FakeFont> font(new FakeFont);
        if (font->LoadFile(backend_.registry, row.path, row.size, error)) {
            EXPECT_GT(row.data.size(), whole.size() / 2);
            Draw(*font, L"drawn anyway");
            continue;
        }
        EXPECT_EQ(error.rfind(row.path + ": ", 0), 0u) << error;
        EXPECT_NE(error.find(row.expected), error.npos) << error;
        EXPECT_EQ(error.find('\n'), error.npos);
        EXPECT_TRUE(Draw(*font, L"still drawn without glyphs").empty());
    }
    std::filesystem::remove_all(folder);
}

TEST(FontTables, GlyphsAndKerningOfTheOwner) {
    const RefT<FakeFont> font(new FakeFont);
    font->lineHeight = Fix(10);
    Glyph glyph;
    glyph.width = glyph.height = 4;
    glyph.advance = Fix(5);
    for (uint32_t c : {'a', 'b'}) {
        glyph.index = c;
        font->AddGlyph(c, glyph);
    }
    FakeDevice device;
    ASSERT_TRUE(font->Initialize());
    font->DrawString(device, L"a?b", kWhite, 0, 0);
    ASSERT_EQ(font->draws.size(), 2u) << "without a glyph for missing characters they show nothing";
    EXPECT_EQ(font->draws[1].position.x, Fix(5));
    font->AddKerning('a', 'b', Fix(-2));
    font->draws.clear();
    font->DrawString(device, L"a?b", kWhite, 0, 0);
    EXPECT_EQ(font->draws[1].position.x, Fix(3));
}

}  // namespace
}  // namespace zorvan::test
