// The quantizer's passes over the image: its colours, its palette and the palette's order.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "texconv/palette_mapping.h"
#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

constexpr int kMaxColors = 32767;

// (c * n + n) / maxval of every channel, where maxval is 2 * n + 1 and one less than a power of 2: that is
// c / 2.
void HalveRange(const ColorImage& image) {
    constexpr std::uint32_t kSevenBits = 0x7F7F7F7F;
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            Color& color = image.rows[y][x];
            color = std::bit_cast<Color>(std::bit_cast<std::uint32_t>(color) >> 1 & kSevenBits);
        }
    }
}

// The image's colours with their counts; halves the channels' range until they are few enough. Null without
// memory.
ColorHash* CountColors(const ColorImage& image, bool verbose, int& maxval, int& colors) {
    for (;;) {
        if (verbose) {
            pm_message("  making histogram...");
        }
        ColorHash* table = pam_computeacolorhash(image.rows, image.width, image.height, kMaxColors, &colors);
        if (table != nullptr || colors == 0) {
            return table;
        }
        const int newmaxval = maxval / 2;
        if (verbose) {
            pm_message("too many colors!");
            std::printf("  scaling colors from maxval=%d to maxval=%d to improve clustering...\n", maxval,
                        newmaxval);
            std::fflush(stdout);
        }
        HalveRange(image);
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
            const auto rescaled = [=](int c) {
                return static_cast<std::uint8_t>((c * 255 + maxval / 2) / maxval);
            };
            color = {rescaled(color.r), rescaled(color.g), rescaled(color.b), rescaled(color.a)};
        }
        std::memcpy(palette + static_cast<std::ptrdiff_t>(remap[i]) * 4, &color, sizeof(color));
    }
}

ColorImage RowsOver(unsigned char* rgba, int width, int height) {
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
    const ColorImage image = RowsOver(rgba, static_cast<int>(width), static_cast<int>(height));
    int maxval = 255;
    int colors = 0;
    ColorHash* table = CountColors(image, verbose, maxval, colors);
    ColorItem* histogram = table != nullptr ? pam_acolorhashtoacolorhist(table, colors) : nullptr;
    if (histogram == nullptr) {
        pam_freeacolorhash(table);
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
        const PaletteMap map{colormap, newcolors, maxval, remap};
        if (floyd) {
            MapPixelsDiffusing(image, map, verbose, indices);
        } else {
            MapPixels(image, map, table, indices);
        }
    }
    pm_freerow(remap);
    pam_freeacolorhist(colormap);
    pam_freeacolorhash(table);
    pm_freerow(image.rows);
    return remapped ? 1 : 0;
}

}  // namespace QXTextureConverter
