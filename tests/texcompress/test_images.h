// Test images made in code, with integers only: the same on every CPU and compiler.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zorvan::texcompress {

// Pixels of four bytes R, G, B, A, packed.
struct TestImage {
    uint32_t width, height;
    std::vector<uint8_t> pixels;
};

// Pseudo-random numbers with a fixed sequence.
class Lcg {
  public:
    explicit Lcg(uint32_t seed) : state_(seed) {}
    // A number 0..limit-1.
    uint32_t Next(uint32_t limit);

  private:
    uint32_t state_;
};

// Pictures of size x size pixels with the statistics of natural ones: a landscape, foliage, a sprite
// with soft edges, a map of normals. Alpha varies in all of them.
std::vector<TestImage> NaturalImages(uint32_t size);

// A hard image: each 4x4 tile is of another kind (noise, gradients, few colours, two halves, flat,
// near black beside saturated colours, extremes), alpha likewise.
TestImage CorpusImage(uint32_t width, uint32_t height);

// Drawn pictures: text-like strokes, fine dots of bright saturated colours on near black, smooth ramps
// in all channels including alpha, and flat areas with hard edges.
std::vector<TestImage> DrawnImages(uint32_t width, uint32_t height);

// 64-bit FNV-1a hash.
uint64_t Digest(const void* data, size_t size);

}  // namespace zorvan::texcompress
