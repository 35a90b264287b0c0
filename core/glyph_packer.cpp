#include "core/glyph_packer.h"

#include <algorithm>
#include <numeric>

namespace zorvan {

// A rectangle takes its free pixel on the right and above with it; the left and lower edges keep theirs.
GlyphPacker::GlyphPacker(int width, int height) : width_(width), height_(height) {
    steps_.push_back({1, 1, width - 1});
}

std::optional<int> GlyphPacker::Rest(size_t index, int width) const {
    if (width > width_ - steps_[index].x) {
        return std::nullopt;
    }
    int y = 0;
    for (int left = width; left > 0; left -= steps_[index++].width) {
        y = std::max(y, steps_[index].y);
    }
    return y;
}

std::optional<Vector2T<int>> GlyphPacker::Place(SizeT<int> const& size) {
    // Also keeps the sums below from overflowing.
    if (size.width < 1 || size.height < 1 || size.width > width_ - 2 || size.height > height_ - 2) {
        return std::nullopt;
    }
    const int width = size.width + 1, height = size.height + 1;
    size_t best = steps_.size();
    int bestY = height_ - height + 1;
    for (size_t i = 0; i < steps_.size(); ++i) {
        const std::optional<int> y = Rest(i, width);
        if (y && *y < bestY) {
            best = i;
            bestY = *y;
        }
    }
    if (best == steps_.size()) {
        return std::nullopt;
    }
    const int x = steps_[best].x;
    // The new step replaces what lies under it.
    size_t end = best;
    while (end < steps_.size() && steps_[end].x + steps_[end].width <= x + width) {
        ++end;
    }
    if (end < steps_.size()) {
        steps_[end].width -= x + width - std::max(steps_[end].x, x);
        steps_[end].x = x + width;
    }
    steps_.erase(steps_.begin() + static_cast<std::ptrdiff_t>(best),
                 steps_.begin() + static_cast<std::ptrdiff_t>(end));
    steps_.insert(steps_.begin() + static_cast<std::ptrdiff_t>(best), {x, bestY + height, width});
    return Vector2T<int>{x, bestY};
}

namespace {

constexpr int kSmallestSide = 32;
constexpr int kUsualSide = 1024;
constexpr int kLargestSide = 2048;

// Sizes grow by doubling the width, then the height.
SizeT<int> NextPage(SizeT<int> page) {
    if (page.width == page.height) {
        page.width *= 2;
    } else {
        page.height *= 2;
    }
    return page;
}

}  // namespace

PackedGlyphs PackGlyphs(std::vector<SizeT<int>> const& sizes) {
    PackedGlyphs packed;
    packed.places.resize(sizes.size());
    std::vector<size_t> order(sizes.size());
    std::iota(order.begin(), order.end(), size_t{0});
    // Tall ones first keep the skyline flat.
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return sizes[a].height != sizes[b].height ? sizes[a].height > sizes[b].height
                                                  : sizes[a].width > sizes[b].width;
    });
    std::vector<size_t> left;
    while (!order.empty()) {
        SizeT<int> largest;
        int64_t area = 0;
        for (size_t i : order) {
            largest.width = std::max(largest.width, sizes[i].width);
            largest.height = std::max(largest.height, sizes[i].height);
            area += int64_t{sizes[i].width + 1} * (sizes[i].height + 1);
        }
        const int most = std::max(largest.width, largest.height) + 2 > kUsualSide ? kLargestSide : kUsualSide;
        SizeT<int> page{kSmallestSide, kSmallestSide};
        while (true) {
            const bool fits = page.width >= largest.width + 2 && page.height >= largest.height + 2 &&
                              int64_t{page.width} * page.height >= area;
            const bool last = page.width == most && page.height == most;
            if (fits || last) {
                GlyphPacker packer(page.width, page.height);
                left.clear();
                for (size_t i : order) {
                    if (const std::optional<Vector2T<int>> corner = packer.Place(sizes[i])) {
                        packed.places[i] = {static_cast<uint32_t>(packed.pages.size()), *corner};
                    } else {
                        left.push_back(i);
                    }
                }
                if (left.empty() || last) {
                    break;
                }
            }
            page = NextPage(page);
        }
        packed.pages.push_back(page);
        order.swap(left);
    }
    return packed;
}

}  // namespace zorvan
