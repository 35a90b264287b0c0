// Median cut: boxes of colours, split at their median until there are enough.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

// One of a colour's channels, and the order by it.
struct ChannelOrder {
    std::uint8_t Color::*channel;
    int (*compare)(const ColorItem&, const ColorItem&);
};

// Below this many, sorting by comparisons is faster.
constexpr int kFewItems = 48;

// Stable sort by a channel: by counting, with `spare` as memory for as many items.
void SortItems(ColorItem* items, int count, const ChannelOrder& order, ColorItem* spare) {
    if (count < kFewItems) {
        std::stable_sort(items, items + count,
                         [&](const ColorItem& a, const ColorItem& b) { return order.compare(a, b) < 0; });
        return;
    }
    std::array<int, 256> starts{};
    for (int i = 0; i < count; ++i) {
        ++starts[items[i].color.*order.channel];
    }
    int start = 0;
    for (int& value : starts) {
        start += std::exchange(value, start);
    }
    for (int i = 0; i < count; ++i) {
        spare[starts[items[i].color.*order.channel]++] = items[i];
    }
    std::copy(spare, spare + count, items);
}

// Stable sort of boxes of which all but few are in order.
void SortBoxes(ColorBox* boxes, int count) {
    for (int i = 1; i < count; ++i) {
        const ColorBox box = boxes[i];
        int at = i;
        for (; at > 0 && sumcompare(boxes[at - 1], box) > 0; --at) {
            boxes[at] = boxes[at - 1];
        }
        boxes[at] = box;
    }
}

// The order by the box's widest channel; alpha wins ties, then red, then green.
ChannelOrder WidestChannel(const ColorItem* items, int count) {
    std::array<int, 4> low{255, 255, 255, 255};
    std::array<int, 4> high{0, 0, 0, 0};
    for (int i = 0; i < count; ++i) {
        const Color& color = items[i].color;
        const std::array<int, 4> channels{color.r, color.g, color.b, color.a};
        for (std::size_t c = 0; c < channels.size(); ++c) {
            low[c] = std::min(low[c], channels[c]);
            high[c] = std::max(high[c], channels[c]);
        }
    }
    const int red = high[0] - low[0];
    const int green = high[1] - low[1];
    const int blue = high[2] - low[2];
    const int alpha = high[3] - low[3];
    if (alpha >= red && alpha >= green && alpha >= blue) {
        return {&Color::a, alphacompare};
    }
    if (red >= green && red >= blue) {
        return {&Color::r, redcompare};
    }
    return green >= blue ? ChannelOrder{&Color::g, greencompare} : ChannelOrder{&Color::b, bluecompare};
}

// Keeps in `box` the colours up to its median pixel and returns the rest.
ColorBox SplitAtMedian(ColorBox& box, const ColorItem* items) {
    const int half = box.sum / 2;
    int lower = items[0].value;
    int count = 1;
    while (count < box.colors - 1 && lower < half) {
        lower += items[count].value;
        ++count;
    }
    const ColorBox rest{box.first + count, box.colors - count, box.sum - lower};
    box.colors = count;
    box.sum = lower;
    return rest;
}

Color WeightedMean(const ColorItem* items, int count, int maxval) {
    std::array<std::int64_t, 4> sums{};
    std::int64_t pixels = 0;
    for (int i = 0; i < count; ++i) {
        const Color& color = items[i].color;
        const std::int64_t weight = items[i].value;
        sums[0] += color.r * weight;
        sums[1] += color.g * weight;
        sums[2] += color.b * weight;
        sums[3] += color.a * weight;
        pixels += weight;
    }
    const auto mean = [&](std::size_t c) {
        return static_cast<std::uint8_t>(pixels != 0 ? std::min<std::int64_t>(sums[c] / pixels, maxval) : 0);
    };
    return {mean(0), mean(1), mean(2), mean(3)};
}

}  // namespace

int redcompare(const ColorItem& first, const ColorItem& second) {
    return first.color.r - second.color.r;
}
int greencompare(const ColorItem& first, const ColorItem& second) {
    return first.color.g - second.color.g;
}
int bluecompare(const ColorItem& first, const ColorItem& second) {
    return first.color.b - second.color.b;
}
int alphacompare(const ColorItem& first, const ColorItem& second) {
    return first.color.a - second.color.a;
}
int sumcompare(const ColorBox& first, const ColorBox& second) {
    return second.sum - first.sum;
}

ColorItem* mediancut(ColorItem* histogram, int colors, int sum, int maxval, int newcolors) {
    const auto room = static_cast<std::size_t>(std::max(newcolors, 1));
    auto* boxes = static_cast<ColorBox*>(std::calloc(room, sizeof(ColorBox)));
    auto* colormap = static_cast<ColorItem*>(std::calloc(room, sizeof(ColorItem)));
    auto* spare = static_cast<ColorItem*>(
        std::malloc(static_cast<std::size_t>(std::max(colors, 1)) * sizeof(ColorItem)));
    if (boxes == nullptr || colormap == nullptr || spare == nullptr) {
        pm_message("  out of memory allocating box vector");
        std::exit(-1);
    }
    boxes[0] = {0, colors, sum};
    int count = 1;
    while (count < newcolors) {
        ColorBox* const end = boxes + count;
        ColorBox* const box = std::find_if(boxes, end, [](const ColorBox& b) { return b.colors >= 2; });
        if (box == end) {
            break;
        }
        ColorItem* items = histogram + box->first;
        SortItems(items, box->colors, WidestChannel(items, box->colors), spare);
        *end = SplitAtMedian(*box, items);
        ++count;
        SortBoxes(boxes, count);
    }
    for (int i = 0; i < count; ++i) {
        colormap[i].color = WeightedMean(histogram + boxes[i].first, boxes[i].colors, maxval);
    }
    std::free(spare);
    std::free(boxes);
    return colormap;
}

}  // namespace QXTextureConverter
