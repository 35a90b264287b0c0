// Pixels to palette positions: each colour to the nearest of the colour map, with or without diffusion.
#include "texconv/palette_mapping.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "texconv/row_kernels.h"

namespace QXTextureConverter {

namespace {

constexpr int kErrorUnit = 1024;
constexpr long kSeed = 1234567;

// Finds the colour map entry nearest to a colour.
class NearestColor {
  public:
    explicit NearestColor(const PaletteMap& map) {
        m_palette.count = static_cast<std::uint32_t>(map.count);
        for (int i = 0; i < map.count; ++i) {
            const Color& color = map.colors[i].color;
            m_palette.red[i] = color.r;
            m_palette.green[i] = color.g;
            m_palette.blue[i] = color.b;
            m_palette.alpha[i] = color.a;
        }
    }

    int operator()(const Color& color) const {
        const std::uint8_t rgba[] = {color.r, color.g, color.b, color.a};
        return static_cast<int>(m_kernels.nearest(m_palette, rgba));
    }

  private:
    const RowKernels& m_kernels = SelectRowKernels();
    PaletteColors m_palette;
};

// The same, searched once for each colour while memory lasts.
class RememberedNearestColor {
  public:
    RememberedNearestColor(const PaletteMap& map, bool verbose)
        : m_nearest(map), m_verbose(verbose), m_known(pam_allocacolorhash()) {}
    ~RememberedNearestColor() { pam_freeacolorhash(m_known); }
    RememberedNearestColor(const RememberedNearestColor&) = delete;
    RememberedNearestColor& operator=(const RememberedNearestColor&) = delete;

    int operator()(const Color& color) {
        if (m_known == nullptr) {
            return m_nearest(color);
        }
        int entry = pam_lookupacolor(m_known, color);
        if (entry < 0) {
            entry = m_nearest(color);
            if (pam_addtoacolorhash(m_known, color, entry) != 0) {
                Forget();
            }
        }
        return entry;
    }

  private:
    void Forget() {
        if (m_verbose) {
            pm_message("  out of memory adding to hash table, proceeding without it");
        }
        pam_freeacolorhash(m_known);
        m_known = nullptr;
    }

    NearestColor m_nearest;
    bool m_verbose;
    ColorHash* m_known;
};

// Errors of one pixel's channels in units of 1 / kErrorUnit.
using ChannelErrors = std::array<int, 4>;

void Spread(ChannelErrors& to, const ChannelErrors& error, int sixteenths) {
    for (std::size_t c = 0; c < to.size(); ++c) {
        to[c] += error[c] * sixteenths / 16;
    }
}

Color AddErrors(const Color& color, const ChannelErrors& errors, int maxval) {
    const auto add = [&](int channel, std::size_t c) {
        return static_cast<std::uint8_t>(std::clamp(channel + errors[c] / kErrorUnit, 0, maxval));
    };
    return {add(color.r, 0), add(color.g, 1), add(color.b, 2), add(color.a, 3)};
}

}  // namespace

void MapPixels(const ColorImage& image, const PaletteMap& map, ColorHash* colors, unsigned char* indices) {
    const NearestColor nearest(map);
    for (ColorItem& item : pam_coloritems(colors)) {
        item.value = map.positions[nearest(item.color)];
    }
    const auto width = static_cast<std::size_t>(image.width);
    for (int y = 0; y < image.height; ++y, indices += width) {
        pam_mapcolors(colors, image.rows[y], width, indices);
    }
}

// Floyd-Steinberg: rows run to the right and to the left in turn. Error rows have a guard entry
// at each end, so that pixel x has entry x + 1.
void MapPixelsDiffusing(const ColorImage& image, const PaletteMap& map, bool verbose,
                        unsigned char* indices) {
    RememberedNearestColor nearest(map, verbose);
    const std::size_t entries = static_cast<std::size_t>(image.width) + 2;
    void** errors = pm_allocarray(entries, 2, sizeof(ChannelErrors));
    auto* current = static_cast<ChannelErrors*>(errors[0]);
    auto* next = static_cast<ChannelErrors*>(errors[1]);
    srand48(kSeed);
    for (std::size_t i = 0; i < entries; ++i) {
        for (int& error : current[i]) {
            error = static_cast<int>(lrand48() % (2 * kErrorUnit)) - kErrorUnit;
        }
    }
    for (int y = 0; y < image.height; ++y) {
        std::fill(next, next + entries, ChannelErrors{});
        const bool right = y % 2 == 0;
        const int step = right ? 1 : -1;
        int x = right ? 0 : image.width - 1;
        for (int i = 0; i < image.width; ++i, x += step) {
            const Color color = AddErrors(image.rows[y][x], current[x + 1], map.maxval);
            const int entry = nearest(color);
            const Color& chosen = map.colors[entry].color;
            indices[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                    static_cast<std::size_t>(x)] = static_cast<unsigned char>(map.positions[entry]);
            const ChannelErrors error{(color.r - chosen.r) * kErrorUnit, (color.g - chosen.g) * kErrorUnit,
                                      (color.b - chosen.b) * kErrorUnit, (color.a - chosen.a) * kErrorUnit};
            Spread(current[x + 1 + step], error, 7);
            Spread(next[x + 1 - step], error, 3);
            Spread(next[x + 1], error, 5);
            Spread(next[x + 1 + step], error, 1);
        }
        std::swap(current, next);
    }
    pm_freearray(errors);
}

}  // namespace QXTextureConverter
