#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "core/font_file.h"
#include "fake_font.h"

namespace zorvan::test {
namespace {

constexpr ColorT<RealFixed> kWhite{kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>, kOne<RealFixed>};

class FontTest : public testing::Test {
  protected:
    void SetUp() override {
        for (char const* path : {kDejaVu, kLiberation}) {
            if (!std::filesystem::exists(path)) {
                GTEST_SKIP() << path << " is missing: install fonts-dejavu-core and fonts-liberation2";
            }
        }
        std::string error;
        if (!FontFile::Open(kDejaVu, 20, error) && error.find("without font support") != error.npos) {
            GTEST_SKIP() << error;
        }
        directory_ =
            std::filesystem::temp_directory_path() / ("zorvan_font_test_" + std::to_string(::getpid()));
        std::filesystem::create_directories(directory_);
    }
    void TearDown() override {
        if (!directory_.empty()) {
            std::filesystem::remove_all(directory_);
        }
    }

    RefT<RecordingFont> Open(char const* path, int size) {
        RefT<RecordingFont> font(new RecordingFont);
        std::string error;
        EXPECT_TRUE(font->LoadFile(registry_, path, size, error)) << error;
        return font;
    }

    void Draw(RecordingFont& font, wchar_t const* text) {
        font.draws.clear();
        font.DrawString(device_, MStringT<wchar_t>(text), kWhite, 0, 0);
    }

    // A file of the first bytes of a font.
    std::string Cut(char const* path, size_t bytes) {
        std::ifstream in(path, std::ios::binary);
        std::string data(bytes, '\0');
        in.read(data.data(), static_cast<std::streamsize>(bytes));
        return Write(data);
    }
    std::string Write(std::string const& data) {
        const std::filesystem::path path = directory_ / "font.ttf";
        std::ofstream(path, std::ios::binary) << data;
        return path.string();
    }

    PlainRegistry registry_;
    NullDevice device_;
    std::filesystem::path directory_;
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
    int sum = 0;
    for (int value : row) {
        sum += value;
    }
    return sum;
}

TEST_F(FontTest, PagesHoldCoverageBottomUp) {
    const RefT<RecordingFont> font = Open(kDejaVu, 32);
    ASSERT_TRUE(font->Initialize());
    ASSERT_GE(font->PageCount(), 1u);
    for (uint32_t i = 0; i < font->PageCount(); ++i) {
        Texture& page = font->Page(i);
        EXPECT_EQ(page.format.Get(), 6u);
        ASSERT_EQ(page.levels.Count(), 1u);
        const auto bytes = static_cast<uint32_t>(page.width.Get() * page.height.Get() * 4);
        EXPECT_EQ(page.levels[0], (TextureLevel{static_cast<uint32_t>(page.width.Get()),
                                                static_cast<uint32_t>(page.height.Get()), 0, bytes}));
        ASSERT_EQ(page.pixels.size, bytes);
        for (uint32_t offset = 3; offset < bytes; offset += 4) {
            ASSERT_EQ(page.pixels.data[offset], 255) << "alpha";
        }
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
    EXPECT_GT(descender.offsetY + RealFixed::FromInt(descender.height), RealFixed::FromInt(4));
}

TEST_F(FontTest, GlyphsLieApartOnTheirPages) {
    const RefT<RecordingFont> font = Open(kLiberation, 19);
    ASSERT_TRUE(font->Initialize());
    // All ink of a page lies in the glyphs' boxes, and the pixels around each box are blank.
    std::vector<std::vector<int>> owners;
    int64_t boxed = 0, all = 0;
    for (uint32_t c = 0x21; c < 0x7F; ++c) {
        for (auto const& row : Coverage(*font, *font->FindGlyph(c))) {
            boxed += RowSum(row);
        }
    }
    for (auto const& row : Coverage(*font, *font->FindGlyph(0x10FFFF))) {  // the one for missing characters
        boxed += RowSum(row);
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
    const RefT<RecordingFont> font = Open(kDejaVu, 24);
    ASSERT_TRUE(font->Initialize());
    const MStringT<wchar_t> text =
        FromUtf8("\xCE\xA9\xD0\x96\xE2\x82\xAC\xF0\x9D\x94\xB8");  // omega, zhe, euro, double-struck A
    font->DrawString(device_, text, kWhite, 0, 0);
    ASSERT_EQ(font->draws.size(), 4u);
    for (RecordingFont::Draw const& draw : font->draws) {
        EXPECT_NE(draw.glyph->index, 0u);
    }
    // A private character, a surrogate and what is beyond Unicode.
    Draw(*font, L"\xE123\xD800\x110000");
    ASSERT_EQ(font->draws.size(), 3u);
    for (RecordingFont::Draw const& draw : font->draws) {
        EXPECT_EQ(draw.glyph->index, 0u);
        EXPECT_GT(draw.glyph->width, 0);
        EXPECT_GT(RowSum(Coverage(*font, *draw.glyph)[0]), 0) << "the box for missing characters";
    }
}

TEST_F(FontTest, LateGlyphsGoOnNewPages) {
    const RefT<RecordingFont> font = Open(kDejaVu, 24);
    ASSERT_TRUE(font->Initialize());
    const uint32_t pages = font->PageCount();
    Draw(*font, L"abc");
    EXPECT_EQ(font->PageCount(), pages);
    // The first page was uploaded and its memory dropped.
    font->Page(0).ReleasePixelStore();
    Draw(*font, L"a\x416\x3A9\x416");
    EXPECT_EQ(font->PageCount(), pages + 1) << "one page for all new glyphs of a string";
    ASSERT_EQ(font->draws.size(), 4u);
    EXPECT_EQ(font->draws[0].glyph->page, 0);
    EXPECT_EQ(font->draws[1].glyph->page, static_cast<int16_t>(pages));
    EXPECT_EQ(font->draws[1].glyph, font->draws[3].glyph);
    Draw(*font, L"\x416");
    EXPECT_EQ(font->PageCount(), pages + 1);
}

TEST_F(FontTest, PagesDoNotDependOnTheOrderOfCharacters) {
    std::vector<uint8_t> first;
    for (wchar_t const* text : {L"\x416\x3A9\x44F", L"\x44F\x3A9\x416\x3A9"}) {
        const RefT<RecordingFont> font = Open(kDejaVu, 24);
        std::string error;
        ASSERT_TRUE(font->AddCharacters(text, error)) << error;
        ASSERT_TRUE(font->Initialize());
        ASSERT_EQ(font->PageCount(), 1u);
        PixelStore const& pixels = font->Page(0).pixels;
        std::vector<uint8_t> bytes(pixels.data, pixels.data + pixels.size);
        if (first.empty()) {
            first = bytes;
        }
        EXPECT_EQ(bytes, first);
    }
}

TEST_F(FontTest, DrawsOnWholePixelsWithKerningAndOptions) {
    const RefT<RecordingFont> font = Open(kLiberation, 40);
    ASSERT_TRUE(font->Initialize());
    Draw(*font, L"AV");
    ASSERT_EQ(font->draws.size(), 2u);
    Glyph const& a = *font->draws[0].glyph;
    Glyph const& v = *font->draws[1].glyph;
    EXPECT_LT(font->Kerning(a, v), RealFixed{});
    EXPECT_EQ(font->draws[1].position.x - v.offsetX, a.advance + font->Kerning(a, v));
    EXPECT_EQ(font->draws[0].position.y, font->ascent + a.offsetY);

    const ColorT<RealFixed> color{RealFixed{1}, RealFixed{2}, RealFixed{3}, RealFixed{4}};
    font->draws.clear();
    const SizeT<RealFixed> box{RealFixed::FromInt(301), RealFixed::FromInt(201)};
    font->DrawString(device_, L"A V", color, box, TextAlignment::Center | TextAlignment::Bottom, 2, 0);
    ASSERT_EQ(font->draws.size(), 2u);
    EXPECT_EQ(font->draws[0].color, color);
    EXPECT_EQ(font->draws[0].position.y - a.offsetY,
              RealFixed::FromInt(201) - font->lineHeight + font->ascent);
    for (RecordingFont::Draw const& draw : font->draws) {
        EXPECT_EQ((draw.position.x.raw | draw.position.y.raw) & 0xFFFF, 0);
    }
}

TEST_F(FontTest, SameStringWithOtherOptionsIsLaidOutAgain) {
    const RefT<RecordingFont> font = Open(kDejaVu, 16);
    ASSERT_TRUE(font->Initialize());
    std::map<int, RealFixed> second;
    for (int round = 0; round < 2; ++round) {
        for (int spacing : {0, 3}) {
            font->draws.clear();
            font->DrawString(device_, L"xx", kWhite, spacing, 0);
            ASSERT_EQ(font->draws.size(), 2u);
            if (round == 0) {
                second[spacing] = font->draws[1].position.x;
            }
            EXPECT_EQ(font->draws[1].position.x, second[spacing]);
        }
    }
    EXPECT_EQ(second[3] - second[0], RealFixed::FromInt(3));
    // Many strings share the table of remembered layouts.
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 3000; ++i) {
            font->draws.clear();
            const std::wstring digits = std::to_wstring(i);
            font->DrawString(device_, MStringT<wchar_t>(digits), kWhite, 0, 0);
            ASSERT_EQ(font->draws.size(), digits.size());
            for (size_t k = 0; k < digits.size(); ++k) {
                ASSERT_EQ(font->draws[k].glyph, font->FindGlyph(static_cast<uint32_t>(digits[k])));
            }
        }
    }
}

TEST_F(FontTest, BadFilesGiveOneClearLine) {
    const struct {
        char const* name;
        std::string path;
        int size;
        char const* expected;
    } cases[] = {
        {"missing", (directory_ / "none.ttf").string(), 20, "No such file or directory"},
        {"folder", directory_.string(), 20, "got a folder, expected a file"},
        {"sizeZero", kDejaVu, 0, "got a font size of 0, expected 1 to 512 pixels"},
        {"negativeSize", kDejaVu, -3, "got a font size of -3"},
        {"absurdSize", kDejaVu, 2000000000, "got a font size of 2000000000"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.name);
        std::string error;
        const RefT<RecordingFont> font(new RecordingFont);
        EXPECT_FALSE(font->LoadFile(registry_, row.path, row.size, error));
        EXPECT_EQ(error.rfind(row.path + ": ", 0), 0u) << error;
        EXPECT_NE(error.find(row.expected), error.npos) << error;
        EXPECT_EQ(error.find('\n'), error.npos);
        Draw(*font, L"still drawn without glyphs");
        EXPECT_TRUE(font->draws.empty());
    }
}

TEST_F(FontTest, DamagedDataNeverCrashes) {
    std::string error;
    for (std::string const& data : {std::string(), std::string("not a font at all"), std::string(5000, '\0'),
                                    std::string("\0\1\0\0", 4)}) {
        const RefT<RecordingFont> font(new RecordingFont);
        EXPECT_FALSE(font->LoadFile(registry_, Write(data), 20, error)) << data.size();
        EXPECT_EQ(error.find('\n'), error.npos);
    }
    const auto whole = static_cast<size_t>(std::filesystem::file_size(kDejaVu));
    size_t refused = 0;
    for (size_t cut = 1; cut < 16; ++cut) {
        const RefT<RecordingFont> font(new RecordingFont);
        const std::string path = Cut(kDejaVu, whole * cut / 16);
        error.clear();
        if (!font->LoadFile(registry_, path, 20, error)) {
            ++refused;
            EXPECT_EQ(error.rfind(path + ": ", 0), 0u) << error;
        }
        Draw(*font, L"drawn anyway");
    }
    EXPECT_GT(refused, 8u);
}

TEST(FontTables, GlyphsAndKerningOfTheOwner) {
    const RefT<RecordingFont> font(new RecordingFont);
    font->lineHeight = RealFixed::FromInt(10);
    Glyph glyph;
    glyph.width = glyph.height = 4;
    glyph.advance = RealFixed::FromInt(5);
    for (uint32_t c : {'a', 'b'}) {
        glyph.index = c;
        font->AddGlyph(c, glyph);
    }
    NullDevice device;
    ASSERT_TRUE(font->Initialize());
    font->DrawString(device, L"a?b", kWhite, 0, 0);
    ASSERT_EQ(font->draws.size(), 2u) << "without a glyph for missing characters they show nothing";
    EXPECT_EQ(font->draws[1].position.x, RealFixed::FromInt(5));
    font->AddKerning('a', 'b', RealFixed::FromInt(-2));
    font->draws.clear();
    font->DrawString(device, L"a?b", kWhite, 0, 0);
    EXPECT_EQ(font->draws[1].position.x, RealFixed::FromInt(3));
}

}  // namespace
}  // namespace zorvan::test
