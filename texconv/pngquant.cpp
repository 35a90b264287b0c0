// The quantizer's passes over the image: histogram, palette and mapping of every pixel.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "texconv/palette_quantizer.h"
#include "texconv/row_kernels.h"

namespace QXTextureConverter {

namespace {

constexpr int kMaxColors = 32767;
constexpr int kErrorUnit = 1024;
constexpr long kSeed = 1234567;

struct Image {
    Color** rows;
    int width;
    int height;
};

std::uint8_t Byte(int value) {
    return static_cast<std::uint8_t>(value);
}

// Applies `change` to every channel of a colour.
template <typename Change>
Color EachChannel(const Color& color, const Change& change) {
    return {Byte(change(color.r)), Byte(change(color.g)), Byte(change(color.b)), Byte(change(color.a))};
}

void ScaleDown(const Image& image, int maxval, int newmaxval) {
    std::array<std::uint8_t, 256> scaled{};
    for (int c = 0; c <= maxval; ++c) {
        scaled[static_cast<std::size_t>(c)] = Byte((c * newmaxval + newmaxval) / maxval);
    }
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Color& color = image.rows[y][x];
            color = EachChannel(color, [&](std::size_t c) { return scaled[c]; });
        }
    }
}

// The image's histogram; halves the channels' range until it is small enough. Null without memory.
ColorItem* MakeHistogram(const Image& image, bool verbose, int& maxval, int& colors) {
    for (;;) {
        if (verbose) {
            pm_message("  making histogram...");
        }
        ColorItem* histogram =
            pam_computeacolorhist(image.rows, image.width, image.height, kMaxColors, &colors);
        if (histogram != nullptr || colors == 0) {
            return histogram;
        }
        const int newmaxval = maxval / 2;
        if (verbose) {
            pm_message("too many colors!");
            std::printf("  scaling colors from maxval=%d to maxval=%d to improve clustering...\n", maxval,
                        newmaxval);
            std::fflush(stdout);
        }
        ScaleDown(image, maxval, newmaxval);
        maxval = newmaxval;
    }
}

// Palette positions of the colour map entries: opaque ones from the top down, the others from
// the bottom up. False if they do not meet, which would be a fault of this program.
bool Remap(const ColorItem* colormap, int newcolors, int maxval, int* remap) {
    int top = newcolors - 1;
    int bottom = 0;
    for (int i = 0; i < newcolors; ++i) {
        remap[i] = colormap[i].color.a == maxval ? top-- : bottom++;
    }
    if (bottom != top + 1) {
        std::printf("  internal logic error: remapped bot_idx = %d, top_idx = %d\n", bottom, top);
        std::fflush(stdout);
        return false;
    }
    return true;
}

void WritePalette(const ColorItem* colormap, const int* remap, int newcolors, int maxval, bool verbose,
                  unsigned char* palette) {
    if (maxval != 255 && verbose) {
        std::printf("  rescaling colormap colors from maxval=%d to maxval=255\n", maxval);
        std::fflush(stdout);
    }
    for (int i = 0; i < newcolors; ++i) {
        Color color = colormap[i].color;
        if (maxval != 255) {
            color = EachChannel(color, [=](int c) { return (c * 255 + maxval / 2) / maxval; });
        }
        std::memcpy(palette + static_cast<std::ptrdiff_t>(remap[i]) * 4, &color, sizeof(color));
    }
}

// Finds the colour map entry nearest to a colour, each distinct colour once while memory lasts.
class NearestColor {
  public:
    NearestColor(const ColorItem* colormap, int newcolors, bool verbose)
        : m_verbose(verbose), m_known(pam_allocacolorhash()) {
        m_palette.count = static_cast<std::uint32_t>(newcolors);
        for (int i = 0; i < newcolors; ++i) {
            const Color& color = colormap[i].color;
            m_palette.red[i] = color.r;
            m_palette.green[i] = color.g;
            m_palette.blue[i] = color.b;
            m_palette.alpha[i] = color.a;
        }
    }
    ~NearestColor() { pam_freeacolorhash(m_known); }
    NearestColor(const NearestColor&) = delete;
    NearestColor& operator=(const NearestColor&) = delete;

    int operator()(const Color& color) {
        if (m_known == nullptr) {
            return Search(color);
        }
        int entry = pam_lookupacolor(m_known, color);
        if (entry < 0) {
            entry = Search(color);
            if (pam_addtoacolorhash(m_known, color, entry) != 0) {
                Forget();
            }
        }
        return entry;
    }

  private:
    int Search(const Color& color) const {
        const std::uint8_t rgba[] = {color.r, color.g, color.b, color.a};
        return static_cast<int>(m_kernels.nearest(m_palette, rgba));
    }

    void Forget() {
        if (m_verbose) {
            pm_message("  out of memory adding to hash table, proceeding without it");
        }
        pam_freeacolorhash(m_known);
        m_known = nullptr;
    }

    const RowKernels& m_kernels = SelectRowKernels();
    PaletteColors m_palette;
    bool m_verbose;
    ColorHash* m_known;
};

// Neighbours are often alike.
void MapPixels(const Image& image, NearestColor& nearest, const int* remap, unsigned char* indices) {
    Color last = image.rows[0][0];
    std::uint8_t index = Byte(remap[nearest(last)]);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            if (image.rows[y][x] != last) {
                last = image.rows[y][x];
                index = Byte(remap[nearest(last)]);
            }
            *indices++ = index;
        }
    }
}

// Errors of one pixel's channels in units of 1 / kErrorUnit.
using ChannelErrors = std::array<int, 4>;

void Spread(ChannelErrors& to, const ChannelErrors& error, int sixteenths) {
    for (std::size_t c = 0; c < to.size(); ++c) {
        to[c] += error[c] * sixteenths / 16;
    }
}

Color AddErrors(const Color& color, const ChannelErrors& errors, int maxval) {
    const auto add = [&](int channel, std::size_t c) {
        return Byte(std::clamp(channel + errors[c] / kErrorUnit, 0, maxval));
    };
    return {add(color.r, 0), add(color.g, 1), add(color.b, 2), add(color.a, 3)};
}

// Floyd-Steinberg: rows run to the right and to the left in turn. Error rows have a guard entry
// at each end, so that pixel x has entry x + 1.
void MapPixelsDiffusing(const Image& image, NearestColor& nearest, const ColorItem* colormap,
                        const int* remap, int maxval, unsigned char* indices) {
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
            const Color color = AddErrors(image.rows[y][x], current[x + 1], maxval);
            const int entry = nearest(color);
            const Color& chosen = colormap[entry].color;
            indices[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                    static_cast<std::size_t>(x)] = Byte(remap[entry]);
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

Image RowsOver(unsigned char* rgba, int width, int height) {
    auto** rows = static_cast<Color**>(pm_allocrow(static_cast<std::size_t>(height), sizeof(Color*)));
    auto* row = reinterpret_cast<Color*>(rgba);
    for (int y = 0; y < height; ++y) {
        rows[y] = row;
        row += width;
    }
    return {rows, width, height};
}

}  // namespace

std::uint32_t pngquant(unsigned char* rgba, unsigned char* indices, unsigned char* palette, int reqcolors,
                       unsigned long width, unsigned long height, bool floyd, bool verbose) {
    if (width == 0 || height == 0) {
        return 1;
    }
    if (reqcolors < 1) {
        return 0;
    }
    const Image image = RowsOver(rgba, static_cast<int>(width), static_cast<int>(height));
    int maxval = 255;
    int colors = 0;
    ColorItem* histogram = MakeHistogram(image, verbose, maxval, colors);
    if (histogram == nullptr) {
        pm_freerow(image.rows);
        return 0;
    }
    if (verbose) {
        std::printf("%d colors found\n", colors);
        std::fflush(stdout);
    }
    const int newcolors = std::min(reqcolors, colors);
    ColorItem* colormap = mediancut(histogram, colors, image.width * image.height, maxval, newcolors);
    pam_freeacolorhist(histogram);

    if (verbose) {
        pm_message("  remapping colormap to eliminate opaque tRNS-chunk entries...");
    }
    auto* remap = static_cast<int*>(pm_allocrow(static_cast<std::size_t>(newcolors), sizeof(int)));
    const bool remapped = Remap(colormap, newcolors, maxval, remap);
    if (remapped) {
        WritePalette(colormap, remap, newcolors, maxval, verbose, palette);
        if (verbose) {
            pm_message("  mapping image to new colors...");
        }
        NearestColor nearest(colormap, newcolors, verbose);
        if (floyd) {
            MapPixelsDiffusing(image, nearest, colormap, remap, maxval, indices);
        } else {
            MapPixels(image, nearest, remap, indices);
        }
    }
    pm_freerow(remap);
    pam_freeacolorhist(colormap);
    pm_freerow(image.rows);
    return remapped ? 1 : 0;
}

}  // namespace QXTextureConverter
