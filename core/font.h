// Glyphs on texture pages, drawn as strings.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/api.h"
#include "core/geometry.h"
#include "core/glyph.h"
#include "core/layout_cache.h"
#include "core/mstring.h"
#include "core/referenced.h"
#include "core/serializer.h"
#include "core/texture.h"

namespace zorvan {

class ClassRegistry;
class FontFile;
class GraphicsDevice;
class MemoryBudget;
struct GlyphBitmap;

// Glyphs come from a font file, or from pages and tables that the owner adds. A page is complete before its
// first draw: glyphs that a string needs later go onto new pages. The order of the virtual operations is
// part of the binary interface with the plug-in.
class ZORVAN_CORE_API Font : public Referenced {
  public:
    Font();
    Font(Font const&) = delete;
    ~Font() override;

    // Prepares the font for drawing and makes the pages of the characters asked for so far; call it once,
    // after the glyphs were added. False when out of memory.
    virtual bool Initialize();
    // Draws a string from the origin of the current transform, y downwards. Spacings in pixels.
    virtual void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text,
                            ColorT<RealFixed> const& color, int letterSpacing, int lineSpacing);
    // The same inside a box, see TextLayoutOptions.
    virtual void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text,
                            ColorT<RealFixed> const& color, SizeT<RealFixed> const& box, int alignment,
                            int letterSpacing, int lineSpacing);
    // A number that no other font of this process has.
    virtual uint32_t GenerateID();
    // Draws one glyph with its top left corner at position.
    virtual void RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& position,
                             ColorT<RealFixed> const& color) = 0;

    // Reads "file", "size" in pixels and "characters" (optional), or the tables "pages", "glyphs" and
    // "kerning" with "lineHeight" and "ascent".
    bool Load(Deserializer& reader);
    void Save(Serializer& writer) const;

    // Opens a font file and rasterises printable ASCII at size pixels to the em. Pages are textures of the
    // registry, which must outlive the drawing of strings. False with one line that names the file.
    // The file, its glyphs and their pages count in the budget of the scene that the font belongs to, or in
    // one of the font's own; that holds for glyphs that are drawn later, too.
    bool LoadFile(ClassRegistry& registry, std::string const& path, int size, std::string& error);
    // Rasterises the characters of text that are new to the font; those that its file lacks are drawn as
    // its glyph for missing characters. False, with that glyph for the character at fault, when the file is
    // damaged, and for all that is new when memory runs out.
    bool AddCharacters(std::wstring_view text, std::string& error);

    // Takes a reference to a page of glyphs: coverage in RGB, alpha 255, rows bottom-up.
    void AddPage(Texture* page);
    void AddGlyph(uint32_t codePoint, Glyph const& glyph);
    // Added to the advance of left when right follows; both by Glyph::index.
    void AddKerning(uint32_t left, uint32_t right, RealFixed kerning);
    // The glyph for missing characters, or null when there is none, for a code point without a glyph.
    Glyph const* FindGlyph(uint32_t codePoint) const;
    RealFixed Kerning(Glyph const& left, Glyph const& right) const;

    // Size of a string as it would be drawn, in pixels.
    TextExtent Measure(MStringT<wchar_t> const& text, TextLayoutOptions const& options);

    uint32_t PageCount() const { return static_cast<uint32_t>(pages_.size()); }
    Texture& Page(uint32_t index) const { return *pages_[index]; }

    // Under which the scene's texts refer to this font.
    std::string name;
    // From one baseline to the next, and from a line's top to its baseline; in pixels.
    RealFixed lineHeight, ascent;

  protected:
    std::vector<RefT<Texture>> pages_;

  private:
    // A rasterised glyph that is on no page yet.
    struct Pending;

    bool LoadFileEntry(Deserializer& reader);
    bool LoadTables(Deserializer& reader);
    void LoadPage(Deserializer& reader);
    void LoadGlyph(Deserializer& reader);
    void LoadKerning(Deserializer& reader);
    void SaveTables(Serializer& writer) const;
    void SaveGlyph(Serializer& writer, std::wstring const& character, Glyph const& glyph) const;
    bool Rasterise(uint32_t index, Glyph& glyph, uint32_t codePoint, std::string& error);
    bool MakePages();
    LayoutCache::Entry const& LayOut(std::wstring_view text, TextLayoutOptions const& options);
    void Draw(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
              TextLayoutOptions const& options);

    std::unordered_map<uint32_t, Glyph> glyphs_;  // by code point; their addresses stay
    std::unordered_map<uint64_t, RealFixed> kerning_;
    Glyph missing_;
    bool hasMissing_ = false;

    ClassRegistry* registry_ = nullptr;
    RefT<MemoryBudget> budget_;
    std::unique_ptr<FontFile> file_;
    std::vector<Pending> pending_;
    uint64_t pendingPixels_ = 0;  // of the budget's bytes, kPendingBytes each
    LayoutCache layouts_;

    // What Save writes and Load read.
    std::string path_, characters_;
    int32_t size_ = 0;
};

}  // namespace zorvan
