#include <gtest/gtest.h>

#include <random>

#include "core/glyph_packer.h"

namespace zorvan {
namespace {

// Marks a rectangle and its free pixel all around; false when another's free pixels are its own.
class Raster {
  public:
    explicit Raster(SizeT<int> size) : size_(size), taken_(static_cast<size_t>(size.width * size.height)) {}

    void Take(Vector2T<int> corner, SizeT<int> size) {
        ASSERT_GE(corner.x, 1);
        ASSERT_GE(corner.y, 1);
        ASSERT_LT(corner.x + size.width, size_.width);
        ASSERT_LT(corner.y + size.height, size_.height);
        for (int y = -1; y <= size.height; ++y) {
            for (int x = -1; x <= size.width; ++x) {
                ASSERT_FALSE(At(corner.x + x, corner.y + y)) << "rectangles touch";
            }
        }
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
                At(corner.x + x, corner.y + y) = true;
            }
        }
    }

  private:
    std::vector<bool>::reference At(int x, int y) { return taken_[static_cast<size_t>(y * size_.width + x)]; }

    SizeT<int> size_;
    std::vector<bool> taken_;
};

std::vector<SizeT<int>> Sizes(uint32_t seed, size_t count, int most) {
    std::mt19937 random(seed);
    std::vector<SizeT<int>> sizes(count);
    for (SizeT<int>& size : sizes) {
        size.width = static_cast<int>(random() % static_cast<uint32_t>(most)) + 1;
        size.height = static_cast<int>(random() % static_cast<uint32_t>(most)) + 1;
    }
    return sizes;
}

void ExpectSound(std::vector<SizeT<int>> const& sizes, PackedGlyphs const& packed) {
    std::vector<Raster> rasters;
    for (SizeT<int> const& page : packed.pages) {
        for (int side : {page.width, page.height}) {
            EXPECT_EQ(side & (side - 1), 0) << "not a power of two";
            EXPECT_LE(side, 2048);
        }
        rasters.emplace_back(page);
    }
    ASSERT_EQ(packed.places.size(), sizes.size());
    for (size_t i = 0; i < sizes.size(); ++i) {
        ASSERT_LT(packed.places[i].page, rasters.size());
        rasters[packed.places[i].page].Take(packed.places[i].corner, sizes[i]);
    }
}

TEST(GlyphPacker, RectanglesNeverTouch) {
    const struct {
        size_t count;
        int most;
    } cases[] = {{0, 1}, {1, 1}, {1, 200}, {95, 20}, {400, 60}, {3000, 12}, {40, 900}, {3, 2046}};
    for (auto const& row : cases) {
        for (uint32_t seed = 0; seed < 4; ++seed) {
            SCOPED_TRACE(std::to_string(row.count) + " of " + std::to_string(row.most));
            const std::vector<SizeT<int>> sizes = Sizes(seed, row.count, row.most);
            ExpectSound(sizes, PackGlyphs(sizes));
        }
    }
}

TEST(GlyphPacker, FillsPagesTightly) {
    // Sizes like those of letters; what is left of the pages is mostly the rest of the last one.
    std::vector<SizeT<int>> sizes = Sizes(7, 6000, 14);
    int64_t glyphs = 0, pages = 0;
    for (SizeT<int>& size : sizes) {
        size.width += 8;
        size.height += 12;
        glyphs += int64_t{size.width + 1} * (size.height + 1);
    }
    const PackedGlyphs packed = PackGlyphs(sizes);
    for (SizeT<int> const& page : packed.pages) {
        pages += int64_t{page.width} * page.height;
    }
    EXPECT_GT(packed.pages.size(), 1u);
    EXPECT_LT(static_cast<double>(pages), 1.35 * static_cast<double>(glyphs));
}

TEST(GlyphPacker, OverflowGoesToFurtherPages) {
    const PackedGlyphs packed = PackGlyphs({{600, 600}, {600, 600}, {600, 600}, {10, 10}});
    EXPECT_EQ(packed.pages.size(), 3u);
    ExpectSound({{600, 600}, {600, 600}, {600, 600}, {10, 10}}, packed);
}

TEST(GlyphPacker, LargestGlyphHasItsPage) {
    const PackedGlyphs packed = PackGlyphs({{2046, 2046}, {5, 5}});
    EXPECT_EQ(packed.pages.size(), 2u);
    ExpectSound({{2046, 2046}, {5, 5}}, packed);
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
