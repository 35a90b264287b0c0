// The quantizer's last pass: the pixels of an image as positions in its palette.
#pragma once

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

struct ColorImage {
    Color** rows;
    int width;
    int height;
};

// The colour map, with channels of 0 to maxval, and the palette position of each of its entries.
struct PaletteMap {
    const ColorItem* colors;
    int count;
    int maxval;
    const int* positions;
};

// One byte per pixel. `colors` holds all colours of the image; their values are lost. `indices` may start
// where the image's pixels do, if its rows are packed.
void MapPixels(const ColorImage& image, const PaletteMap& map, ColorHash* colors, unsigned char* indices);

// The same by Floyd-Steinberg error diffusion, rows running to the right and to the left in turn. Reseeds
// lrand48; `indices` must be apart from the pixels.
void MapPixelsDiffusing(const ColorImage& image, const PaletteMap& map, bool verbose, unsigned char* indices);

}  // namespace QXTextureConverter
