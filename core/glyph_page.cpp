#include "core/glyph_page.h"

#include <cstring>

#include "core/class_registry.h"

namespace zorvan {
namespace {

constexpr uint32_t kBytesPerPixel = 4;

}  // namespace

RefT<Texture> MakeGlyphPage(ClassRegistry& registry, SizeT<int> const& size) {
    RefT<Texture> page(static_cast<Texture*>(registry.Create(MakeClassId(u"Texture"))));
    const uint32_t pixels = static_cast<uint32_t>(size.width) * static_cast<uint32_t>(size.height);
    if (!page || !page->SizePixelStore(pixels * kBytesPerPixel)) {
        return {};
    }
    page->format.Set(TextureFormat::Rgba8888);
    page->width.Set(size.width);
    page->height.Set(size.height);
    page->usedWidth.Set(size.width);
    page->usedHeight.Set(size.height);
    page->levels.Append(
        {static_cast<uint32_t>(size.width), static_cast<uint32_t>(size.height), 0, pixels * kBytesPerPixel});
    constexpr uint8_t kBlank[kBytesPerPixel] = {0, 0, 0, 255};
    for (uint32_t i = 0; i < pixels; ++i) {
        std::memcpy(page->pixels.data + size_t{i} * kBytesPerPixel, kBlank, kBytesPerPixel);
    }
    return page;
}

void CopyToPage(GlyphBitmap const& bitmap, Vector2T<int> corner, Texture& page) {
    const auto pageWidth = static_cast<size_t>(page.width.Get());
    uint8_t const* coverage = bitmap.coverage.data();
    // The coverage starts with the upper row, the page with the lower one.
    for (int row = bitmap.height - 1; row >= 0; --row) {
        uint8_t* out = page.pixels.data +
                       (static_cast<size_t>(corner.y + row) * pageWidth + static_cast<size_t>(corner.x)) *
                           kBytesPerPixel;
        for (int x = 0; x < bitmap.width; ++x, out += kBytesPerPixel) {
            std::memset(out, *coverage++, kBytesPerPixel - 1);
        }
    }
}

}  // namespace zorvan
