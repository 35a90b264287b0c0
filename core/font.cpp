#include "core/font.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "core/font_file.h"
#include "core/glyph_packer.h"
#include "core/glyph_page.h"
#include "core/memory_budget.h"
#include "core/text_break.h"
#include "core/trace.h"

namespace zorvan {
namespace {

// Of a glyph's pixel while it waits for its page: its coverage, and its place on the page.
constexpr uint64_t kCoverageBytes = 1, kPageBytes = 4, kPendingBytes = kCoverageBytes + kPageBytes;

// With the free pixels around it.
uint64_t PixelsOnPage(GlyphBitmap const& bitmap) {
    return static_cast<uint64_t>(bitmap.width + 1) * static_cast<uint64_t>(bitmap.height + 1);
}

uint64_t KerningKey(uint32_t left, uint32_t right) {
    return uint64_t{left} << 32 | right;
}

// What layout sees of a font.
class FontGlyphs final : public GlyphSource {
  public:
    explicit FontGlyphs(Font const& font) : font_(font) {
        lineHeight = font.lineHeight;
        ascent = font.ascent;
    }
    Glyph const* Find(uint32_t codePoint) const override { return font_.FindGlyph(codePoint); }
    RealFixed Kerning(Glyph const& left, Glyph const& right) const override {
        return font_.Kerning(left, right);
    }

  private:
    Font const& font_;
};

// Texture coordinate of a pixel's edge; exact where the side is a power of two.
RealFixed EdgeOf(int pixel, int side) {
    return RealFixed::FromInt(pixel) / RealFixed::FromInt(side);
}

}  // namespace

struct Font::Pending {
    uint32_t codePoint;
    Glyph* glyph;
    GlyphBitmap bitmap;
};

Font::Font() = default;

Font::~Font() = default;

bool Font::Initialize() {
    return MakePages();
}

bool Font::LoadFile(ClassRegistry& registry, std::string const& path, int size, std::string& error) {
    if (!budget_) {
        budget_ = new MemoryBudget;
    }
    std::error_code unknown;
    const uintmax_t fileSize = std::filesystem::file_size(path, unknown);
    if (!unknown && !budget_->Take(fileSize)) {
        error = path + ": " + budget_->Refusal("the file");
        return false;
    }
    std::unique_ptr<FontFile> file = FontFile::Open(path, size, error);
    if (!file) {
        return false;
    }
    file_ = std::move(file);
    registry_ = &registry;
    lineHeight = RealFixed::FromInt(file_->lineHeight);
    ascent = RealFixed::FromInt(file_->ascent);
    hasMissing_ = Rasterise(0, missing_, 0, error);
    std::wstring ascii;
    for (wchar_t c = L' '; c <= L'~'; ++c) {
        ascii += c;
    }
    return hasMissing_ && AddCharacters(ascii, error);
}

bool Font::AddCharacters(std::wstring_view text, std::string& error) {
    bool whole = true;
    for (wchar_t unit : text) {
        const auto c = static_cast<uint32_t>(unit);
        if (!file_ || IsLineBreak(c) || IsInvisible(c) || glyphs_.contains(c)) {
            continue;
        }
        const uint32_t index = file_->GlyphIndex(c);
        if (index == 0) {
            continue;
        }
        Glyph& glyph = glyphs_[c];
        if (!Rasterise(index, glyph, c, error)) {
            // Kept, so that the damage is met and reported once.
            glyph = missing_;
            whole = false;
            if (budget_->IsExhausted()) {
                break;
            }
        }
    }
    return whole;
}

bool Font::Rasterise(uint32_t index, Glyph& glyph, uint32_t codePoint, std::string& error) {
    GlyphBitmap bitmap;
    if (!file_->Rasterise(index, bitmap, error)) {
        return false;
    }
    glyph.index = index;
    glyph.offsetX = RealFixed::FromInt(bitmap.left);
    glyph.offsetY = RealFixed::FromInt(-bitmap.top);
    glyph.advance = RealFixed::FromInt(bitmap.advance);
    const uint64_t pixels = PixelsOnPage(bitmap);
    if (!budget_->Take(pixels * kPendingBytes)) {
        char what[64];
        std::snprintf(what, sizeof what, "the glyph of U+%04X", codePoint);
        error = budget_->Refusal(what);
        return false;
    }
    pendingPixels_ += pixels;
    if (bitmap.width > 0) {
        pending_.push_back({codePoint, &glyph, std::move(bitmap)});
    }
    return true;
}

bool Font::MakePages() {
    // The same characters give the same pages, in whatever order they were asked for.
    std::vector<Pending> glyphs = std::exchange(pending_, {});
    std::sort(glyphs.begin(), glyphs.end(),
              [](Pending const& a, Pending const& b) { return a.codePoint < b.codePoint; });
    std::vector<SizeT<int>> sizes;
    for (Pending const& entry : glyphs) {
        sizes.push_back({entry.bitmap.width, entry.bitmap.height});
    }
    if (glyphs.empty()) {
        return true;
    }
    const PackedGlyphs packed = PackGlyphs(sizes);
    // The pages take the place of what was counted for their glyphs.
    budget_->GiveBack(std::exchange(pendingPixels_, 0) * kPendingBytes);
    uint64_t pageBytes = 0;
    for (SizeT<int> const& size : packed.pages) {
        pageBytes += kPageBytes * static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height);
    }
    const size_t firstPage = pages_.size();
    if (firstPage + packed.pages.size() > INT16_MAX || !budget_->Take(pageBytes)) {
        return false;
    }
    for (SizeT<int> const& size : packed.pages) {
        RefT<Texture> page = MakeGlyphPage(*registry_, size);
        if (!page) {
            pages_.resize(firstPage);
            return false;
        }
        pages_.push_back(std::move(page));
    }
    for (size_t i = 0; i < glyphs.size(); ++i) {
        const size_t number = firstPage + packed.places[i].page;
        const Vector2T<int> corner = packed.places[i].corner;
        Texture& page = *pages_[number];
        CopyToPage(glyphs[i].bitmap, corner, page);
        Glyph& glyph = *glyphs[i].glyph;
        glyph.width = static_cast<uint16_t>(sizes[i].width);
        glyph.height = static_cast<uint16_t>(sizes[i].height);
        glyph.page = static_cast<int16_t>(number);
        glyph.uLeft = EdgeOf(corner.x, page.width.Get());
        glyph.uRight = EdgeOf(corner.x + sizes[i].width, page.width.Get());
        glyph.vTop = EdgeOf(corner.y, page.height.Get());
        glyph.vBottom = EdgeOf(corner.y + sizes[i].height, page.height.Get());
    }
    return true;
}

LayoutCache::Entry const& Font::LayOut(std::wstring_view text, TextLayoutOptions const& options) {
    LayoutCache::Entry& entry = layouts_.Find(text, options);
    if (!entry.valid) {
        std::string error;
        if (!AddCharacters(text, error)) {
            Debug::Trace("%s\n", error.c_str());
        }
        if (!pending_.empty() && !MakePages()) {
            Debug::Trace("%s: out of memory for new glyphs\n", path_.c_str());
        }
        entry.extent = LayOutText(text, FontGlyphs(*this), options, entry.glyphs);
        entry.valid = true;
    }
    return entry;
}

void Font::Draw(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                TextLayoutOptions const& options) {
    for (PlacedGlyph const& placed : LayOut(text.View(), options).glyphs) {
        RenderGlyph(device, placed.glyph, placed.position, color);
    }
}

void Font::DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                      int letterSpacing, int lineSpacing) {
    TextLayoutOptions options;
    options.letterSpacing = letterSpacing;
    options.lineSpacing = lineSpacing;
    Draw(device, text, color, options);
}

void Font::DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                      SizeT<RealFixed> const& box, int alignment, int letterSpacing, int lineSpacing) {
    Draw(device, text, color, {true, box, alignment, letterSpacing, lineSpacing});
}

TextExtent Font::Measure(MStringT<wchar_t> const& text, TextLayoutOptions const& options) {
    return LayOut(text.View(), options).extent;
}

uint32_t Font::GenerateID() {
    static int32_t last = 0;
    return static_cast<uint32_t>(Atomic::Increment(last));
}

void Font::AddPage(Texture* page) {
    pages_.emplace_back(page);
}

void Font::AddGlyph(uint32_t codePoint, Glyph const& glyph) {
    glyphs_[codePoint] = glyph;
    layouts_.Clear();
}

void Font::AddKerning(uint32_t left, uint32_t right, RealFixed kerning) {
    kerning_[KerningKey(left, right)] = kerning;
    layouts_.Clear();
}

Glyph const* Font::FindGlyph(uint32_t codePoint) const {
    const auto found = glyphs_.find(codePoint);
    return found != glyphs_.end() ? &found->second : hasMissing_ ? &missing_ : nullptr;
}

RealFixed Font::Kerning(Glyph const& left, Glyph const& right) const {
    if (file_) {
        return RealFixed::FromInt(file_->Kerning(left.index, right.index));
    }
    const auto found = kerning_.find(KerningKey(left.index, right.index));
    return found != kerning_.end() ? found->second : RealFixed{};
}

}  // namespace zorvan
