// The conversions that take most arithmetic, written as they are defined, pixel by pixel: what the
// converter's speed is compared with.
#pragma once

#include <cstdint>
#include <vector>

namespace converter_definitions {

// R, G, B, A bytes, rows packed.
struct Image {
    std::uint32_t width;
    std::uint32_t height;
    std::vector<std::uint8_t> rgba;
};

// The image in another size by the cubic filter.
Image Cubic(const Image& image, std::uint32_t width, std::uint32_t height);

// The image's normal map by the Sobel kernel, the edges repeated, at strength 10; alpha is 0.
Image SobelNormals(const Image& image);

// The image as a palette of 256 R, G, B, A colours and a byte for each pixel.
std::vector<std::uint8_t> Palette(Image image);

}  // namespace converter_definitions
