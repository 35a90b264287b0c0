// Normal maps from the working image read as a height field.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "texconv/image.h"

namespace QXTextureConverter {

namespace {

enum BumpKernel : std::uint32_t { kNone = 0, kDiagonal = 1, kSobel = 2, kPrewitt = 3 };

struct Slope {
    int dx;
    int dy;
};

// h(i, j) is the height i columns right of and j rows below the pixel.
template <typename Height>
Slope SlopeAt(std::uint32_t kernel, const Height& h) {
    switch (kernel) {
        case kDiagonal:
            return {h(0, 0) - h(1, 1), h(1, 0) - h(0, 1)};
        case kSobel:
            return {h(-1, 1) + h(-1, -1) - h(1, -1) - h(1, 1) + 2 * (h(-1, 0) - h(1, 0)),
                    h(1, -1) + h(-1, -1) - h(-1, 1) - h(1, 1) + 2 * (h(0, -1) - h(0, 1))};
        case kPrewitt:
            return {h(-1, -1) + h(-1, 0) + h(-1, 1) - h(1, -1) - h(1, 0) - h(1, 1),
                    h(-1, -1) + h(0, -1) + h(1, -1) - h(-1, 1) - h(0, 1) - h(1, 1)};
        default:
            return {0, 0};
    }
}

// The coordinate, at most one size outside 0 .. size - 1, brought inside.
int Inside(int at, int size, bool wrap) {
    if (!wrap) {
        return std::clamp(at, 0, size - 1);
    }
    if (at < 0) {
        return at + size;
    }
    return at >= size ? at - size : at;
}

}  // namespace

unsigned CImage::Bumpmap_GetPixel(int x, int y, bool wrap) {
    const int column = Inside(x, static_cast<int>(m_nWidth), wrap);
    const int row = Inside(y, static_cast<int>(m_nHeight), wrap);
    const unsigned char* pixel =
        m_pBuffer + (static_cast<std::size_t>(row) * m_nWidth + static_cast<std::size_t>(column)) * 4;
    return (unsigned{pixel[0]} + pixel[1] + pixel[2]) / 3;
}

void CImage::Generic_Bumpmap() {
    if (m_pBuffer == nullptr) {
        return;
    }
    const std::uint32_t kernel = ImgInfo(m_pDst, INFO_BUMPMAP);
    if (kernel == kNone) {
        return;
    }
    const bool wrap = ImgInfo(m_pDst, INFO_BUMPMAP_WRAP) != 0;
    const auto strength = static_cast<std::int32_t>(ImgInfo(m_pDst, INFO_BUMPMAP_HEIGHT));
    // Strength 0 makes the normal's z infinite, its bytes (128, 128, 0).
    const float nz = 1.0f / (static_cast<float>(strength) / 10.0f);

    unsigned char* normals = AllocateImage(m_nWidth, m_nHeight, 4);
    const int width = normals != nullptr && m_nHeight != 0 ? static_cast<int>(m_nWidth) : 0;
    const int height = width != 0 ? static_cast<int>(m_nHeight) : 0;
    unsigned char* to = normals;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Slope slope = SlopeAt(
                kernel, [&](int i, int j) { return static_cast<int>(Bumpmap_GetPixel(x + i, y + j, wrap)); });
            const float nx = static_cast<float>(slope.dx) / 255.0f;
            const float ny = static_cast<float>(slope.dy) / 255.0f;
            const float scale = 1.0f / std::sqrt(nx * nx + ny * ny + nz * nz);
            to[0] = Bumpmap_OffsetAndBias(nx * scale);
            to[1] = Bumpmap_OffsetAndBias(ny * scale);
            to[2] = Bumpmap_OffsetAndBias(nz * scale);
            to[3] = 0;
            to += 4;
        }
    }
    SetBuffer(normals);
}

}  // namespace QXTextureConverter
