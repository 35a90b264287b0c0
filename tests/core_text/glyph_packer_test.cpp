#include "core/glyph_packer.h"

#include <gtest/gtest.h>

#include <random>

namespace zorvan {
namespace {

// Every rectangle lies on its page with a free pixel all around.
void ExpectSound(std::vector<SizeT<int>> const& sizes, PackedGlyphs const& packed) {
    for (SizeT<int> const& page : packed.pages) {
        for (int side : {page.width, page.height}) {
            EXPECT_TRUE((side & (side - 1)) == 0 && side <= 2048) << "not a power of two: " << side;
        }
    }
    ASSERT_EQ(packed.places.size(), sizes.size());
    for (size_t i = 0; i < sizes.size(); ++i) {
        auto const& [page, low] = packed.places[i];
        const Vector2T<int> high{low.x + sizes[i].width, low.y + sizes[i].height};
        ASSERT_LT(page, packed.pages.size());
        ASSERT_TRUE(low.x >= 1 && high.x < packed.pages[page].width);
        ASSERT_TRUE(low.y >= 1 && high.y < packed.pages[page].height);
        for (size_t k = 0; k < i; ++k) {
            auto const& [otherPage, other] = packed.places[k];
            ASSERT_TRUE(otherPage != page || high.x < other.x || other.x + sizes[k].width < low.x ||
                        high.y < other.y || other.y + sizes[k].height < low.y)
                << "rectangles touch";
        }
    }
}

TEST(GlyphPacker, RectanglesNeverTouchAndFillTheirPages) {
    const struct {
        size_t count;
        int least, most;
        size_t pages;   // at least
        double excess;  // of the pages' area over that of the glyphs with their free pixels
    } cases[] = {{0, 1, 1, 0, 1e9},       {1, 1, 1, 1, 1e9},     {95, 1, 20, 1, 3},
                 {400, 1, 60, 1, 2},      {40, 1, 900, 1, 2},    {3, 1, 2046, 1, 1e9},
                 {6000, 9, 22, 2, 1.35},  {3, 600, 600, 3, 1e9}, {1, 1023, 1023, 1, 5},
                 {2, 2046, 2046, 2, 1.01}};
    std::mt19937 random(1);
    for (auto const& row : cases) {
        SCOPED_TRACE(std::to_string(row.count) + " of " + std::to_string(row.most));
        std::vector<SizeT<int>> sizes(row.count);
        double glyphs = 1, pages = 0;
        for (SizeT<int>& size : sizes) {
            for (int* side : {&size.width, &size.height}) {
                *side =
                    row.least + static_cast<int>(random() % static_cast<uint32_t>(row.most - row.least + 1));
            }
            glyphs += (size.width + 1) * (size.height + 1);
        }
        const PackedGlyphs packed = PackGlyphs(sizes);
        ExpectSound(sizes, packed);
        for (SizeT<int> const& page : packed.pages) {
            pages += page.width * page.height;
        }
        EXPECT_GE(packed.pages.size(), row.pages);
        EXPECT_LT(pages, row.excess * glyphs);
    }
}

TEST(GlyphPacker, RefusesWhatDoesNotFit) {
    GlyphPacker packer(32, 16);
    for (SizeT<int> const& size : {SizeT<int>{31, 1}, {1, 15}, {0, 1}, {1, 0}, {-5, 3}, {INT32_MAX, 1}}) {
        EXPECT_FALSE(packer.Place(size)) << size.width << 'x' << size.height;
    }
    EXPECT_TRUE(packer.Place({30, 14}));
    EXPECT_FALSE(packer.Place({1, 1})) << "the page is full";
}

}  // namespace
}  // namespace zorvan
