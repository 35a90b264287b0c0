// Reduction of an RGBA image to a palette: colour histogram, median cut, nearest colour.
//
// Alpha counts as a fourth dimension. Memory exhaustion is fatal in arrays, rows and boxes: a
// line on standard output, then the process ends with status -1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace QXTextureConverter {

struct Color {
    std::uint8_t r;
    std::uint8_t g;
    std::uint8_t b;
    std::uint8_t a;

    friend constexpr bool operator==(const Color&, const Color&) = default;
};

// A histogram entry (value: pixel count) or a colour map entry (value unused).
struct ColorItem {
    Color color;
    int value;
};

// Colours with a value each, listed by bucket, in each bucket the newest first.
struct ColorHash;

// Histogram entries [first, first + colors) that share one palette entry.
struct ColorBox {
    int first;
    int colors;
    int sum;  // of their pixel counts
};

// Reduces `rgba` (width * height packed pixels) to at most `reqcolors` colours, 1 to 256.
// `indices` receives one byte per pixel; `palette` one R, G, B, A entry per colour used, and
// nothing beyond. More than 32,767 distinct colours are scaled down in `rgba` itself. `indices` may start
// where `rgba` does, which then is lost, but not with `floyd`, which adds error diffusion (and reseeds the
// process-wide generator of lrand48). `verbose` prints progress. Returns 1, or 0 on failure, with `indices`
// and `palette` then undefined.
std::uint32_t pngquant(unsigned char* rgba, unsigned char* indices, unsigned char* palette, int reqcolors,
                       unsigned long width, unsigned long height, bool floyd, bool verbose);

// The distinct colours of an image, with their counts, in bucket order; `*colors` receives their
// number. Null with *colors = maxacolors + 1 when there are more than maxacolors; null with
// *colors = 0, after a line on standard output, without memory. To be freed with
// pam_freeacolorhist.
ColorItem* pam_computeacolorhist(const Color* const* rows, int cols, int rowcount, int maxacolors,
                                 int* colors);
// The same as a hash, to be freed with pam_freeacolorhash.
ColorHash* pam_computeacolorhash(const Color* const* rows, int cols, int rowcount, int maxacolors,
                                 int* colors);
// The items of a hash as an array: buckets in order, each from its newest item.
ColorItem* pam_acolorhashtoacolorhist(const ColorHash* table, int colors);

// An empty hash; null, after a line on standard output, without memory.
ColorHash* pam_allocacolorhash();
// Adds a colour that is not in the table. 0, or -1 without memory.
int pam_addtoacolorhash(ColorHash* table, const Color& color, int value);
// The colour's value, or -1 if it is not in the table.
int pam_lookupacolor(const ColorHash* table, const Color& color);
// The colours in the order of their coming; their values may be changed.
std::span<ColorItem> pam_coloritems(ColorHash* table);
// The low byte of the value of every pixel's colour, which must be in the table. `bytes` may start where
// `pixels` does.
void pam_mapcolors(const ColorHash* table, const Color* pixels, std::size_t count, unsigned char* bytes);
void pam_freeacolorhash(ColorHash* table);
void pam_freeacolorhist(ColorItem* histogram);

// Splits the histogram's colours (reordering it) into `newcolors` boxes or as many as there are
// colours; one colour map entry per box, in box order, by descending pixel count. `sum` is the
// image's pixel count. To be freed with pam_freeacolorhist.
ColorItem* mediancut(ColorItem* histogram, int colors, int sum, int maxval, int newcolors);

// Sort orders: negative where the first sorts before the second. Colours ascend by one channel,
// boxes descend by pixel count.
int redcompare(const ColorItem& first, const ColorItem& second);
int greencompare(const ColorItem& first, const ColorItem& second);
int bluecompare(const ColorItem& first, const ColorItem& second);
int alphacompare(const ColorItem& first, const ColorItem& second);
int sumcompare(const ColorBox& first, const ColorBox& second);

// Uninitialised rows of `cols` elements of `size` bytes; an array is `rows` of them. End the
// process without memory.
void* pm_allocrow(std::size_t cols, std::size_t size);
void pm_freerow(void* row);
void** pm_allocarray(std::size_t cols, std::size_t rows, std::size_t size);
void pm_freearray(void** array);

// Prints one line on standard output and flushes it.
void pm_message(const char* text);

}  // namespace QXTextureConverter
