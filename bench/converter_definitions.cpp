#include "bench/converter_definitions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <forward_list>

namespace converter_definitions {

namespace {

using Pixel = std::array<std::uint8_t, 4>;

Pixel PixelAt(const Image& image, std::int64_t x, std::int64_t y) {
    const auto column = static_cast<std::size_t>(std::clamp<std::int64_t>(x, 0, image.width - 1));
    const auto row = static_cast<std::size_t>(std::clamp<std::int64_t>(y, 0, image.height - 1));
    const std::uint8_t* pixel = &image.rgba[(row * image.width + column) * 4];
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

float PositiveCube(float u) {
    return u > 0.0f ? u * u * u : 0.0f;
}

float SplineWeight(float t) {
    return (PositiveCube(t + 2.0f) - 4.0f * PositiveCube(t + 1.0f) + 6.0f * PositiveCube(t) -
            4.0f * PositiveCube(t - 1.0f)) *
           (1.0f / 6.0f);
}

int HeightAt(const Image& image, std::int64_t x, std::int64_t y) {
    const Pixel pixel = PixelAt(image, x, y);
    return (pixel[0] + pixel[1] + pixel[2]) / 3;
}

std::uint8_t ComponentByte(float v) {
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(v * 127.0f + 128.0f));
}

// A colour and its pixel count.
struct Item {
    Pixel color;
    int value;
};

struct Box {
    std::size_t first;
    std::size_t colors;
    int sum;
};

// Colours and a value each: chains of items, the newest first.
class ColorTable {
  public:
    Item* Find(const Pixel& color) {
        for (Item& item : m_buckets[BucketOf(color)]) {
            if (item.color == color) {
                return &item;
            }
        }
        return nullptr;
    }
    void Add(const Pixel& color, int value) { m_buckets[BucketOf(color)].push_front({color, value}); }
    std::vector<Item> Items() const {
        std::vector<Item> items;
        for (const auto& bucket : m_buckets) {
            items.insert(items.end(), bucket.begin(), bucket.end());
        }
        return items;
    }

  private:
    static constexpr std::uint32_t kBuckets = 20023;

    static std::uint32_t BucketOf(const Pixel& c) {
        return ((c[0] * 33023u + c[1] * 30013u + c[2] * 27011u + c[3] * 24007u) & 0x7FFFFFFF) % kBuckets;
    }

    std::vector<std::forward_list<Item>> m_buckets{kBuckets};
};

// Halves the channels' range until there are few enough colours.
std::vector<Item> CountColors(Image& image, int& most) {
    constexpr int kMostColors = 32767;
    for (;;) {
        ColorTable table;
        int colors = 0;
        for (std::size_t i = 0; i < image.rgba.size() && colors <= kMostColors; i += 4) {
            const Pixel color{image.rgba[i], image.rgba[i + 1], image.rgba[i + 2], image.rgba[i + 3]};
            if (Item* item = table.Find(color); item != nullptr) {
                ++item->value;
            } else {
                table.Add(color, 1);
                ++colors;
            }
        }
        if (colors <= kMostColors) {
            return table.Items();
        }
        const int newMost = most / 2;
        for (std::uint8_t& channel : image.rgba) {
            channel = static_cast<std::uint8_t>((channel * newMost + newMost) / most);
        }
        most = newMost;
    }
}

// Sorts the box's colours by their widest channel: alpha before red before green before blue.
void SortByWidest(std::vector<Item>& items, const Box& box) {
    const auto begin = items.begin() + static_cast<std::ptrdiff_t>(box.first);
    const auto end = begin + static_cast<std::ptrdiff_t>(box.colors);
    std::size_t widest = 3;
    int spread = -1;
    for (const std::size_t c : {3u, 0u, 1u, 2u}) {
        const auto [low, high] = std::minmax_element(
            begin, end, [c](const Item& a, const Item& b) { return a.color[c] < b.color[c]; });
        if (high->color[c] - low->color[c] > spread) {
            spread = high->color[c] - low->color[c];
            widest = c;
        }
    }
    std::stable_sort(begin, end,
                     [widest](const Item& a, const Item& b) { return a.color[widest] < b.color[widest]; });
}

std::vector<Pixel> MedianCut(std::vector<Item>& items, int pixels, std::size_t count) {
    std::vector<Box> boxes{{0, items.size(), pixels}};
    while (boxes.size() < count) {
        const auto box = std::find_if(boxes.begin(), boxes.end(), [](const Box& b) { return b.colors >= 2; });
        if (box == boxes.end()) {
            break;
        }
        SortByWidest(items, *box);
        int lower = items[box->first].value;
        std::size_t kept = 1;
        for (; kept < box->colors - 1 && lower < box->sum / 2; ++kept) {
            lower += items[box->first + kept].value;
        }
        const Box rest{box->first + kept, box->colors - kept, box->sum - lower};
        *box = {box->first, kept, lower};
        boxes.push_back(rest);
        std::stable_sort(boxes.begin(), boxes.end(),
                         [](const Box& a, const Box& b) { return a.sum > b.sum; });
    }
    std::vector<Pixel> colors;
    for (const Box& box : boxes) {
        Pixel mean{};
        for (std::size_t c = 0; c < 4; ++c) {
            std::int64_t sum = 0;
            for (std::size_t i = box.first; i < box.first + box.colors; ++i) {
                sum += std::int64_t{items[i].color[c]} * items[i].value;
            }
            mean[c] = static_cast<std::uint8_t>(sum / box.sum);
        }
        colors.push_back(mean);
    }
    return colors;
}

int NearestOf(const std::vector<Pixel>& colors, const Pixel& color) {
    int nearest = 0;
    int least = 2000000000;
    for (std::size_t i = 0; i < colors.size(); ++i) {
        int distance = 0;
        for (std::size_t c = 0; c < 4; ++c) {
            distance += (color[c] - colors[i][c]) * (color[c] - colors[i][c]);
        }
        if (distance < least) {
            least = distance;
            nearest = static_cast<int>(i);
        }
    }
    return nearest;
}

}  // namespace

Image Cubic(const Image& image, std::uint32_t width, std::uint32_t height) {
    Image result{width, height, {}};
    const float ratioX = static_cast<float>(image.width) / static_cast<float>(width);
    const float ratioY = static_cast<float>(image.height) / static_cast<float>(height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto centreX = static_cast<std::int64_t>((static_cast<float>(x) + 0.5f) * ratioX);
            const auto centreY = static_cast<std::int64_t>((static_cast<float>(y) + 0.5f) * ratioY);
            std::array<float, 4> sums{};
            for (int m = -1; m <= 2; ++m) {
                for (int n = 1; n >= -2; --n) {
                    const Pixel pixel = PixelAt(image, centreX + m, centreY - n);
                    const float weight =
                        SplineWeight(static_cast<float>(m)) * SplineWeight(static_cast<float>(n));
                    for (std::size_t c = 0; c < 4; ++c) {
                        sums[c] += weight * static_cast<float>(pixel[c]);
                    }
                }
            }
            for (const float sum : sums) {
                result.rgba.push_back(static_cast<std::uint8_t>(sum));
            }
        }
    }
    return result;
}

Image SobelNormals(const Image& image) {
    Image result{image.width, image.height, {}};
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            const auto h = [&](int i, int j) { return HeightAt(image, x + i, y + j); };
            const int dx = h(-1, 1) + h(-1, -1) - h(1, -1) - h(1, 1) + 2 * (h(-1, 0) - h(1, 0));
            const int dy = h(1, -1) + h(-1, -1) - h(-1, 1) - h(1, 1) + 2 * (h(0, -1) - h(0, 1));
            const float nx = static_cast<float>(dx) / 255.0f;
            const float ny = static_cast<float>(dy) / 255.0f;
            const float nz = 1.0f;
            const float scale = 1.0f / std::sqrt(nx * nx + ny * ny + nz * nz);
            for (const float component : {nx * scale, ny * scale, nz * scale}) {
                result.rgba.push_back(ComponentByte(component));
            }
            result.rgba.push_back(0);
        }
    }
    return result;
}

std::vector<std::uint8_t> Palette(Image image) {
    constexpr std::size_t kColors = 256;
    int most = 255;
    std::vector<Item> items = CountColors(image, most);
    const std::vector<Pixel> colors = MedianCut(items, static_cast<int>(image.width * image.height), kColors);
    std::vector<std::uint8_t> result(kColors * 4);
    std::vector<std::uint8_t> places;
    std::size_t top = colors.size();
    std::size_t bottom = 0;
    for (const Pixel& color : colors) {
        const std::size_t place = color[3] == most ? --top : bottom++;
        places.push_back(static_cast<std::uint8_t>(place));
        for (std::size_t c = 0; c < 4; ++c) {
            result[place * 4 + c] = static_cast<std::uint8_t>((color[c] * 255 + most / 2) / most);
        }
    }
    ColorTable known;
    for (std::size_t i = 0; i < image.rgba.size(); i += 4) {
        const Pixel color{image.rgba[i], image.rgba[i + 1], image.rgba[i + 2], image.rgba[i + 3]};
        const Item* item = known.Find(color);
        if (item == nullptr) {
            known.Add(color, NearestOf(colors, color));
            item = known.Find(color);
        }
        result.push_back(places[static_cast<std::size_t>(item->value)]);
    }
    return result;
}

}  // namespace converter_definitions
