#include <gtest/gtest.h>

#include <fstream>
#include <numeric>

#include "core/font_file.h"
#include "tests/core/fake_backend.h"
#include "tests/core/save_load.h"
#include "tests/temp_folder.h"

namespace zorvan::test {
namespace {

constexpr char kDejaVu[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr char kLiberation[] = "/usr/share/fonts/truetype/liberation2/LiberationSerif-Regular.ttf";
constexpr ColorT<RealFixed> kColor{RealFixed{1}, RealFixed{2}, RealFixed{3}, RealFixed{4}};

// With installed fonts; without them, or without font support, these tests are skipped.
class FontTest : public testing::Test {
  protected:
    void SetUp() override {
        for (char const* path : {kDejaVu, kLiberation}) {
            std::string error;
            if (!FontFile::Open(path, 20, error)) {
                GTEST_SKIP() << error << ": install fonts-dejavu-core and fonts-liberation2";
            }
        }
    }

    RefT<FakeFont> Open(char const* path, int size) {
        RefT<FakeFont> font(new FakeFont);
        std::string error;
        EXPECT_TRUE(font->LoadFile(backend.registry, path, size, error)) << error;
        EXPECT_TRUE(font->Initialize());
        return font;
    }

    std::vector<FakeFont::Draw> const& Draw(FakeFont& font, std::wstring const& text, int spacing = 0) {
        font.draws.clear();
        font.DrawString(device, MStringT<wchar_t>(text), kColor, spacing, 0);
        return font.draws;
    }

    FakeBackend backend;
    FakeDevice device;
};

// Sums of a glyph's coverage on its page by rows, from the glyph's top.
std::vector<int> Rows(Font const& font, Glyph const& glyph) {
    Texture const& page = font.Page(static_cast<uint32_t>(glyph.page));
    const int left = glyph.uLeft.raw * page.width.Get() >> 16;
    const int top = glyph.vBottom.raw * page.height.Get() >> 16;
    std::vector<int> rows(glyph.height);
    for (int i = 0; i < glyph.width * glyph.height; ++i) {
        const int x = left + i % glyph.width, y = top - 1 - i / glyph.width;
        uint8_t const* pixel = page.pixels.data + (y * page.width.Get() + x) * 4;
        EXPECT_TRUE(pixel[0] == pixel[1] && pixel[0] == pixel[2]);
        rows[static_cast<size_t>(i / glyph.width)] += pixel[0];
    }
    return rows;
}

TEST_F(FontTest, PagesHoldAllInkBottomUp) {
    const RefT<FakeFont> font = Open(kLiberation, 19);
    int64_t boxed = 0, all = 0;
    for (uint32_t c = 0x20; c < 0x7F; ++c) {
        // Instead of the space that for missing characters.
        const std::vector<int> rows = Rows(*font, *font->FindGlyph(c == 0x20 ? 0x10FFFF : c));
        boxed = std::accumulate(rows.begin(), rows.end(), boxed);
    }
    ASSERT_EQ(font->PageCount(), 1u);
    Texture& page = font->Page(0);
    EXPECT_EQ(page.format.Get(), 6u);
    const auto width = static_cast<uint32_t>(page.width.Get()),
               height = static_cast<uint32_t>(page.height.Get());
    ASSERT_EQ(page.levels.Count(), 1u);
    EXPECT_EQ(page.levels[0], (TextureLevel{width, height, 0, page.pixels.size}));
    for (uint32_t offset = 0; offset < page.pixels.size; offset += 4) {
        all += page.pixels.data[offset];
        ASSERT_EQ(page.pixels.data[offset + 3], 255) << "alpha";
    }
    EXPECT_EQ(boxed, all);
    // A T has its bar at the top, an L at the bottom. A T stands on the baseline, a g hangs below it.
    Glyph const& t = *font->FindGlyph('T');
    EXPECT_GT(Rows(*font, t).front(), Rows(*font, t).back());
    const std::vector<int> l = Rows(*font, *font->FindGlyph('L'));
    EXPECT_GT(l.back(), l.front());
    EXPECT_EQ(t.offsetY, RealFixed::FromInt(-t.height));
    EXPECT_GT(font->FindGlyph('g')->offsetY + RealFixed::FromInt(font->FindGlyph('g')->height), Fix(2));
}

TEST_F(FontTest, ScriptsAndMissingCharacters) {
    const RefT<FakeFont> font = Open(kDejaVu, 24);
    // Omega, zhe, euro, double-struck A; a private character, a surrogate and what is beyond Unicode.
    auto const& draws = Draw(*font, L"\x3A9\x416\x20AC\x1D538\xE123\xD800\x110000");
    ASSERT_EQ(draws.size(), 7u);
    for (size_t i = 0; i < 7; ++i) {
        EXPECT_EQ(draws[i].glyph->index == 0, i >= 4) << i;
        EXPECT_GT(Rows(*font, *draws[i].glyph)[0], 0) << i;
    }
    EXPECT_EQ(draws[4].glyph, draws[6].glyph) << "one for all";
}

TEST_F(FontTest, LateGlyphsGoOnNewPages) {
    std::vector<uint8_t> bytes[2];
    for (size_t i = 0; i < 2; ++i) {
        const RefT<FakeFont> font = Open(kDejaVu, 24);
        const uint32_t pages = font->PageCount();
        Draw(*font, L"abc\x200B\n");
        EXPECT_EQ(font->PageCount(), pages);
        // The first page was uploaded and its memory dropped.
        font->Page(0).ReleasePixelStore();
        auto const& draws = Draw(*font, i == 0 ? L"a\xC0\xC1\xC0" : L"a\xC1\xC0\xC1");
        ASSERT_EQ(font->PageCount(), pages + 1) << "one page for all new glyphs of a string";
        ASSERT_EQ(draws.size(), 4u);
        EXPECT_EQ(draws[0].glyph->page, 0);
        EXPECT_EQ(draws[1].glyph->page, static_cast<int16_t>(pages));
        EXPECT_EQ(draws[1].glyph, draws[3].glyph);
        PixelStore const& pixels = font->Page(pages).pixels;
        bytes[i].assign(pixels.data, pixels.data + pixels.size);
        Draw(*font, L"\xC0");
        EXPECT_EQ(font->PageCount(), pages + 1);
    }
    EXPECT_EQ(bytes[0], bytes[1]) << "the order of characters does not count";
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

    font->draws.clear();
    font->DrawString(device, L"AA\nV", kColor, {Fix(301), Fix(201)}, TextAlignment::Bottom, 2, 7);
    ASSERT_EQ(draws.size(), 3u);
    EXPECT_EQ(draws[2].color, kColor);
    EXPECT_EQ(draws[1].position.x, draws[0].position.x + a.advance + Fix(2));
    EXPECT_EQ(draws[2].position.y - v.offsetY, Fix(201) - font->lineHeight + font->ascent);
    EXPECT_EQ((draws[2].position.x.raw | draws[2].position.y.raw) & 0xFFFF, 0);
    EXPECT_EQ(font->Measure(L"A\nA", {}).height, font->lineHeight + font->lineHeight);
}

TEST_F(FontTest, RemembersLayoutsByStringAndOptions) {
    const RefT<FakeFont> font = Open(kDejaVu, 16);
    const RealFixed second = Draw(*font, L"xx")[1].position.x;
    // Many strings share the table.
    for (int i = 0; i < 3000; ++i) {
        const std::wstring digits = std::to_wstring(i % 1500);
        auto const& draws = Draw(*font, digits);
        ASSERT_EQ(draws.size(), digits.size());
        EXPECT_EQ(draws.back().glyph, font->FindGlyph(static_cast<uint32_t>(digits.back())));
        EXPECT_EQ(Draw(*font, L"xx", i % 2)[1].position.x, second + RealFixed::FromInt(i % 2));
    }
}

TEST_F(FontTest, BadFilesGiveOneClearLine) {
    const TempFolder folder;
    const std::string damaged = folder / "font.ttf";
    std::ifstream in(kDejaVu, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(in), {}};
    const auto load = [&](std::string const& path, int size, std::string const& data) {
        std::ofstream(damaged, std::ios::binary) << data;
        std::string error;
        const RefT<FakeFont> font(new FakeFont);
        const bool loaded = font->LoadFile(backend.registry, path, size, error);
        EXPECT_EQ(Draw(*font, L"drawn anyway").empty(), !loaded);
        EXPECT_EQ(error.find('\n'), error.npos) << error;
        return error;
    };
    EXPECT_EQ(load(folder / "none.ttf", 20, ""), folder / "none.ttf: No such file or directory");
    EXPECT_EQ(load(folder.Path(), 20, ""), folder.Path().string() + ": got a folder, expected a file");
    EXPECT_EQ(load(kDejaVu, -3, ""),
              std::string(kDejaVu) + ": got a font size of -3, expected 1 to 512 pixels");
    EXPECT_EQ(load(damaged, 20, ""), damaged + ": got an empty file, expected a font");
    EXPECT_EQ(load(damaged, 20, "not a font at all").rfind(damaged + ": ", 0), 0u);
    for (size_t part = 1; part < 16; ++part) {
        const std::string error = load(damaged, 20, whole.substr(0, whole.size() * part / 16));
        EXPECT_EQ(error.rfind(damaged + ": ", 0), part > 8 && error.empty() ? error.npos : 0) << error;
    }
}

TEST_F(FontTest, ScenesPrepareTheirCharacters) {
    Scene scene;
    ASSERT_TRUE(
        scene.Parse(std::string(R"({"version": 1, "fonts": [{"name": "sans", "size": 18, "file": ")") +
                        kDejaVu + R"(", "characters": "\u0416"}], "root": {"children": [
                                {"class": "Text", "font": "sans", "string": "\u03a9"}]}})",
                    backend.registry))
        << scene.Error();
    ExpectSavesWhatItLoads(scene, backend.registry);
    for (uint32_t c : {0x416u, 0x3A9u}) {
        EXPECT_NE(scene.fonts[0]->FindGlyph(c)->index, 0u) << c;
    }
    EXPECT_EQ(scene.fonts[0]->PageCount(), 1u);
}

TEST(FontTables, GlyphsAndKerningOfTheOwner) {
    const RefT<FakeFont> font(new FakeFont);
    FakeDevice device;
    ASSERT_TRUE(font->Initialize());
    const auto draw = [&] {
        font->draws.clear();
        font->DrawString(device, L"a?b", kColor, 0, 0);
        return font->draws.empty() ? RealFixed{} : font->draws.back().position.x;
    };
    EXPECT_EQ(draw(), RealFixed{});
    for (uint32_t c : {'a', 'b'}) {
        font->AddGlyph(c, {4, 4, 0, {}, {}, {}, {}, {}, {}, Fix(5), c});
    }
    EXPECT_EQ(draw(), Fix(5)) << "without a glyph for missing characters they show nothing";
    font->AddKerning('a', 'b', Fix(-2));
    EXPECT_EQ(draw(), Fix(3));
}

// Glyphs count before they stand on their pages, and those that come later count as well.
TEST_F(FontTest, KeepsToTheMemoryLimit) {
    const auto scene = [&](Scene& loaded, char const* characters, uint64_t limit) {
        loaded.SetMemoryLimit(limit);
        return loaded.Parse(std::string(R"({"version": 1, "fonts": [{"name": "f", "size": 400, "file": ")") +
                                kDejaVu + R"(", "characters": ")" + characters + R"("}], "root": {}})",
                            backend.registry);
    };
    constexpr uint64_t kFile = 800'000, kAscii = 30'000'000;  // more than enough
    Scene loaded;
    EXPECT_FALSE(scene(loaded, "", kFile / 2));
    EXPECT_NE(loaded.Error().find("bytes for the file beside"), std::string::npos) << loaded.Error();
    EXPECT_FALSE(scene(loaded, "", kFile + kAscii / 4));
    EXPECT_TRUE(loaded.IsMemoryError());
    EXPECT_NE(loaded.Error().find("for the glyph of U+00"), std::string::npos) << loaded.Error();
    ASSERT_TRUE(scene(loaded, "", kFile + kAscii)) << loaded.Error();
    Font& font = *loaded.fonts[0];
    const uint32_t pages = font.PageCount();
    std::wstring all;
    for (wchar_t c = 0xA1; c < 0x400; ++c) {
        all += c;
    }
    std::string error;
    EXPECT_FALSE(font.AddCharacters(all, error));
    EXPECT_NE(error.find("the memory limit"), std::string::npos) << error;
    font.Measure(MStringT<wchar_t>(all), {});
    EXPECT_LT(font.PageCount() - pages, 8u);
}

}  // namespace
}  // namespace zorvan::test
