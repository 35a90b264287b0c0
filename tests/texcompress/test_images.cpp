#include "test_images.h"

#include <algorithm>
#include <array>

namespace zorvan::texcompress {
namespace {

uint8_t Clamp8(int value) {
    return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// A lattice point's value, 0..255.
int Lattice(uint32_t x, uint32_t y, uint32_t seed) {
    uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ seed * 0xC2B2AE3Du;
    h = (h ^ h >> 15) * 0x2C1B3C6Du;
    h = (h ^ h >> 12) * 0x297A2D39u;
    return static_cast<int>((h ^ h >> 15) & 255);
}

// Smooth noise 0..255 with lattice points `cell` pixels apart.
int Noise(uint32_t x, uint32_t y, uint32_t cell, uint32_t seed) {
    const auto fade = [cell](uint32_t position) {
        const int t = static_cast<int>(position % cell * 256 / cell);
        return t * t * (768 - 2 * t) / 65536;
    };
    const auto blend = [](int a, int b, int t) { return a + (b - a) * t / 256; };
    const uint32_t cx = x / cell;
    const uint32_t cy = y / cell;
    const int top = blend(Lattice(cx, cy, seed), Lattice(cx + 1, cy, seed), fade(x));
    const int bottom = blend(Lattice(cx, cy + 1, seed), Lattice(cx + 1, cy + 1, seed), fade(x));
    return blend(top, bottom, fade(y));
}

// Noise of falling amplitude and rising frequency, 0..255.
int Fractal(uint32_t x, uint32_t y, uint32_t cell, uint32_t seed) {
    int sum = 0;
    int weight = 128;
    for (; cell >= 2 && weight >= 4; cell /= 2, weight /= 2) {
        sum += weight * Noise(x, y, cell, seed + cell);
    }
    return std::min(255, sum / 248);
}

template <typename Shade>
TestImage MakeImage(uint32_t width, uint32_t height, Shade shade) {
    TestImage image{width, height, {}};
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            for (const int channel : std::array<int, 4>(shade(x, y))) {
                image.pixels.push_back(Clamp8(channel));
            }
        }
    }
    return image;
}

using Pixel = std::array<int, 4>;

// A channel of pixel k in one kind of tile of the corpus.
int CorpusChannel(uint32_t kind, int k, size_t c, const std::array<Pixel, 4>& colors, Lcg& random) {
    const int base = colors[0][c];
    const auto noise = [&random](uint32_t range) { return static_cast<int>(random.Next(range)); };
    switch (kind) {
        case 0:
            return noise(256);
        case 1:
            return base + (colors[1][c] - 128) / 8 * (k % 4) + (colors[2][c] - 128) / 8 * (k / 4);
        case 2:
            return base + noise(31) - 15;
        case 3:
            return colors[k % 4 < 2 ? 0 : 1][c] + noise(9) - 4;
        case 4:
            return base;
        case 5:
            return k % 3 == 0 ? base / 8
                              : (static_cast<int>(c) == k % 2 || c == 3 ? 255 - base / 4 : base / 4);
        default:
            return base % 3 == 0 ? base : (k + static_cast<int>(c)) % 2 * 255;
    }
}

}  // namespace

uint32_t Lcg::Next(uint32_t limit) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 8) % limit;
}

std::vector<TestImage> NaturalImages(uint32_t size) {
    std::vector<TestImage> images;
    // A landscape.
    images.push_back(MakeImage(size, size, [size](uint32_t x, uint32_t y) {
        const int ridge =
            static_cast<int>(size) / 3 + Fractal(x, 0, size / 4, 1) * static_cast<int>(size) / 768;
        const int depth = static_cast<int>(y) - ridge;
        if (depth < 0) {
            const int cloud = std::max(0, Fractal(x, y * 2, size / 4, 2) - 128);
            const int haze = static_cast<int>(y * 160 / size);
            return Pixel{90 + haze + cloud, 140 + haze / 2 + cloud, 220 + cloud / 4, 255 - cloud};
        }
        const int rock = Fractal(x, y, size / 16, 3);
        return Pixel{40 + rock * 5 / 8, 60 + rock / 2, 30 + rock * 3 / 8, 255};
    }));
    // Foliage.
    images.push_back(MakeImage(size, size, [size](uint32_t x, uint32_t y) {
        const int leaf = Fractal(x, y, size / 32, 4);
        const int light = Fractal(x, y, size / 4, 5);
        const int dry = Noise(x, y, size / 8, 6);
        return Pixel{leaf * light / 200 * dry / 160, leaf * light / 170, leaf * light / 400,
                     leaf > 110 ? 255 : leaf * 2};
    }));
    // Sprites with soft edges.
    images.push_back(MakeImage(size, size, [size](uint32_t x, uint32_t y) {
        const int cell = static_cast<int>(size) / 8;
        const int dx = static_cast<int>(x) % cell - cell / 2;
        const int dy = static_cast<int>(y) % cell - cell / 2;
        const int inside = (cell * cell * 9 / 64 - (dx * dx + dy * dy)) * 24 / cell;
        const auto row = static_cast<uint32_t>(static_cast<int>(y) / cell);
        const auto column = static_cast<uint32_t>(static_cast<int>(x) / cell);
        const int shade = 256 - (dx + dy) * 96 / cell;
        return Pixel{Lattice(column, row, 7) * shade / 256, Lattice(column, row, 8) * shade / 256,
                     Lattice(column, row, 9) * shade / 256, 128 + inside};
    }));
    // A map of normals.
    images.push_back(MakeImage(size, size, [size](uint32_t x, uint32_t y) {
        const int here = Fractal(x, y, size / 8, 10);
        const int dx = Fractal(x + 1, y, size / 8, 10) - here;
        const int dy = Fractal(x, y + 1, size / 8, 10) - here;
        return Pixel{128 + 8 * dx, 128 + 8 * dy, 255 - 2 * (dx * dx + dy * dy), here};
    }));
    return images;
}

std::vector<TestImage> DrawnImages(uint32_t width, uint32_t height) {
    std::vector<TestImage> images;
    // Strokes like text.
    images.push_back(MakeImage(width, height, [](uint32_t x, uint32_t y) {
        const bool inGlyph = x % 8 < 6 && y % 12 < 9;
        const bool stroke = inGlyph && Lattice(x / 2 + x / 8, y / 3, 11) > 120;
        const int soft = (x % 2 + y % 3) * 20;
        return stroke ? Pixel{20 + soft, 24 + soft, 30, 255 - soft} : Pixel{240, 236, 220, soft};
    }));
    // Lights in the dark.
    images.push_back(MakeImage(width, height, [](uint32_t x, uint32_t y) {
        const int glow = Noise(x, y, 5, 12);
        const int dark = Lattice(x, y, 13) / 12;
        const auto hue = static_cast<size_t>(Lattice(x / 6, y / 6, 14)) % 3;
        Pixel pixel{dark, dark, dark, glow};
        if (glow > 150) {
            pixel[hue] = 2 * glow - 100;
            pixel[(hue + 1) % 3] = Lattice(x, y, 15) / 2;
        }
        return pixel;
    }));
    // Ramps in all channels.
    images.push_back(MakeImage(width, height, [width, height](uint32_t x, uint32_t y) {
        const auto across = static_cast<int>(x * 256 / width);
        const auto down = static_cast<int>(y * 256 / height);
        return Pixel{across, down, 255 - (across + down) / 2, across * down / 64 % 512 - 128};
    }));
    // Flags: flat areas with hard edges.
    images.push_back(MakeImage(width, height, [](uint32_t x, uint32_t y) {
        const auto color = static_cast<uint32_t>(Lattice((x + y / 3) / 11, y / 7, 16));
        const auto level = [color](uint32_t shift) { return static_cast<int>(color >> shift & 3) * 85; };
        return Pixel{level(0), level(2), level(4), level(6)};
    }));
    return images;
}

TestImage CorpusImage(uint32_t width, uint32_t height) {
    TestImage image{width, height, std::vector<uint8_t>(size_t{4} * width * height)};
    Lcg random(1);
    for (uint32_t y = 0; y < height; y += 4) {
        for (uint32_t x = 0; x < width; x += 4) {
            const uint32_t kind = random.Next(8);
            std::array<Pixel, 4> colors;
            for (Pixel& color : colors) {
                for (int& channel : color) {
                    channel = static_cast<int>(random.Next(4) == 0 ? random.Next(2) * 255 : random.Next(256));
                }
            }
            for (uint32_t k = 0; k < 16; ++k) {
                Pixel pixel{};
                for (size_t c = 0; c < 4; ++c) {
                    pixel[c] = CorpusChannel(kind, static_cast<int>(k), c, colors, random);
                }
                pixel = kind == 6 ? colors[random.Next(4)] : pixel;
                if (x + k % 4 < width && y + k / 4 < height) {
                    std::transform(pixel.begin(), pixel.end(),
                                   &image.pixels[4 * ((y + k / 4) * width + x + k % 4)], Clamp8);
                }
            }
        }
    }
    return image;
}

uint64_t Digest(const void* data, size_t size) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (size_t i = 0; i < size; ++i) {
        hash = (hash ^ static_cast<const uint8_t*>(data)[i]) * 0x100000001B3u;
    }
    return hash;
}

}  // namespace zorvan::texcompress
