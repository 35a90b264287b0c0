#include "core/glyph_packer.h"

#include <gtest/gtest.h>

#include <random>

namespace zorvan {
namespace {

std::vector<SizeT<int>> Sizes(uint32_t seed, size_t count, uint32_t least, uint32_t most) {
    std::mt19937 random(seed);
    std::vector<SizeT<int>> sizes(count);
    for (SizeT<int>& size : sizes) {
        size.width = static_cast<int>(least + random() % (most - least + 1));
        size.height = static_cast<int>(least + random() % (most - least + 1));
    }
    return sizes;
}

// Every rectangle lies on its page with a free pixel all around, and no free pixel is another's own.
void ExpectSound(std::vector<SizeT<int>> const& sizes, PackedGlyphs const& packed) {
    std::vector<std::vector<bool>> taken;
    for (SizeT<int> const& page : packed.pages) {
        for (int side : {page.width, page.height}) {
            EXPECT_EQ(side & (side - 1), 0) << "not a power of two";
            EXPECT_LE(side, 2048);
        }
        taken.emplace_back(static_cast<size_t>(page.width * page.height));
    }
    ASSERT_EQ(packed.places.size(), sizes.size());
    for (size_t i = 0; i < sizes.size(); ++i) {
        auto const& [page, corner] = packed.places[i];
        ASSERT_LT(page, taken.size());
        const int stride = packed.pages[page].width;
        ASSERT_TRUE(corner.x >= 1 && corner.x + sizes[i].width < stride);
        ASSERT_TRUE(corner.y >= 1 && corner.y + sizes[i].height < packed.pages[page].height);
        for (bool take : {false, true}) {
            const int border = take ? 0 : 1;
            for (int y = -border; y < sizes[i].height + border; ++y) {
                for (int x = -border; x < sizes[i].width + border; ++x) {
                    auto pixel = taken[page][static_cast<size_t>((corner.y + y) * stride + corner.x + x)];
                    ASSERT_FALSE(pixel) << "rectangles touch";
                    pixel = take;
                }
            }
        }
    }
}

TEST(GlyphPacker, RectanglesNeverTouchAndFillTheirPages) {
    const struct {
        size_t count;
        uint32_t least, most;
        size_t pages;   // at least
        double excess;  // of the pages' area over that of the glyphs with their free pixels
    } cases[] = {{0, 1, 1, 0, 1e9},     {1, 1, 1, 1, 1e9},       {1, 1, 200, 1, 1e9},  {95, 1, 20, 1, 3},
                 {400, 1, 60, 1, 2},    {40, 1, 900, 1, 2},      {3, 1, 2046, 1, 1e9}, {6000, 9, 22, 2, 1.35},
                 {3, 600, 600, 3, 1e9}, {2, 2046, 2046, 2, 1.01}};
    for (auto const& row : cases) {
        SCOPED_TRACE(std::to_string(row.count) + " of " + std::to_string(row.most));
        for (uint32_t seed = 0; seed < 4; ++seed) {
            const std::vector<SizeT<int>> sizes = Sizes(seed, row.count, row.least, row.most);
            const PackedGlyphs packed = PackGlyphs(sizes);
            ExpectSound(sizes, packed);
            double glyphs = 1, pages = 0;
            for (SizeT<int> const& size : sizes) {
                glyphs += (size.width + 1) * (size.height + 1);
            }
            for (SizeT<int> const& page : packed.pages) {
                pages += page.width * page.height;
            }
            EXPECT_GE(packed.pages.size(), row.pages);
            EXPECT_LT(pages, row.excess * glyphs);
        }
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
