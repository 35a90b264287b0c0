// Packs rectangles tightly into one page.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/api.h"
#include "core/geometry.h"

namespace zorvan {

// Keeps the skyline of what was placed and puts each rectangle where its far edge stays lowest. One pixel
// stays free around every rectangle, also along the page's edges. The same sequence gives the same places.
class ZORVAN_CORE_API GlyphPacker {
  public:
    GlyphPacker(int width, int height);

    // The corner nearest to (0, 0), or nothing when there is no room. Sizes in pixels, from 1 up.
    std::optional<Vector2T<int>> Place(SizeT<int> const& size);

    int Width() const { return width_; }
    int Height() const { return height_; }

  private:
    // A stretch of the skyline: from x for width pixels everything below y is taken.
    struct Step {
        int x, y, width;
    };

    // How low a rectangle of this width can lie above the step at index; nothing beyond the right edge.
    std::optional<int> Rest(size_t index, int width) const;

    int width_, height_;
    std::vector<Step> steps_;
};

// Where the rectangles of one call lie, and the pages that they need.
struct PackedGlyphs {
    struct Place {
        uint32_t page;
        Vector2T<int> corner;
    };
    std::vector<SizeT<int>> pages;
    std::vector<Place> places;  // in the order of the sizes
};

// Distributes rectangles over as few and as small pages as it finds. Page sides are powers of two up to
// 1024, or up to 2048 where a rectangle needs it: texture coordinates in 16.16 are exact then. Sizes from 1
// to 2046; the same sizes give the same result.
ZORVAN_CORE_API PackedGlyphs PackGlyphs(std::vector<SizeT<int>> const& sizes);

}  // namespace zorvan
