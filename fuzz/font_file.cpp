// Font files: what opens gives whole glyphs or says why not, and prepares pages that texts can be set with.
#include "core/font_file.h"

#include "fuzz/fuzz_input.h"
#include "fuzz/memory_file.h"
#include "tests/core/fake_backend.h"

namespace {

using namespace zorvan;
using fuzz::FuzzInput;
using fuzz::Require;

constexpr int kLargestSize = 40;  // pixels; larger glyphs only cost time

void RequireWhole(GlyphBitmap const& glyph) {
    Require(glyph.width >= 0 && glyph.width <= FontFile::kMostGlyphSide);
    Require(glyph.height >= 0 && glyph.height <= FontFile::kMostGlyphSide);
    Require(glyph.coverage.size() == static_cast<size_t>(glyph.width) * static_cast<size_t>(glyph.height));
}

// Some characters of the file, and how they stand to each other.
void UseFile(std::string const& path, int size, std::array<uint32_t, 4> const& characters) {
    std::string error;
    const std::unique_ptr<FontFile> file = FontFile::Open(path, size, error);
    Require((file == nullptr) == !error.empty());
    if (!file) {
        return;
    }
    uint32_t before = 0;
    for (uint32_t character : characters) {
        const uint32_t index = file->GlyphIndex(character);
        GlyphBitmap glyph;
        if (file->Rasterise(index, glyph, error)) {
            RequireWhole(glyph);
        } else {
            Require(!error.empty());
        }
        file->Kerning(before, index);
        before = index;
    }
}

// The whole way to a text's glyphs.
void UseFont(std::string const& path, int size, std::array<uint32_t, 4> const& characters) {
    test::FakeBackend backend;
    test::FakeFont font;
    std::string error;
    if (!font.LoadFile(backend.registry, path, size, error)) {
        Require(!error.empty());
        return;
    }
    std::wstring text = L"AVA tilt\n";
    for (uint32_t character : characters) {
        text += static_cast<wchar_t>(character);
    }
    Require(font.Initialize());
    test::FakeDevice device;
    const MStringT<wchar_t> string(text);
    font.DrawString(device, string, {}, 0, 0);
    for (test::FakeFont::Draw const& draw : font.draws) {
        Require(draw.glyph->page >= 0 && static_cast<uint32_t>(draw.glyph->page) < font.PageCount());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    static fuzz::MemoryFile file;
    FuzzInput input(data, size);
    const auto pixels = static_cast<int>(input.Byte() % (kLargestSize + 1));
    const bool whole = input.Byte() % 16 == 0;
    std::array<uint32_t, 4> characters;
    for (uint32_t& character : characters) {
        character = input.Byte();
        character = character < 240 ? character : input.Word() % 0x110000;
    }
    file.Write(input.Rest());
    (whole ? UseFont : UseFile)(file.Path(), pixels, characters);
    return 0;
}
