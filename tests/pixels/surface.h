// An off-screen OpenGL ES 2.0 surface of the software driver, and its pixels.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace zorvan {

// Channel bits: red, green, blue, alpha.
using ChannelBits = std::array<int, 4>;

struct Pixel {
    std::array<double, 4> channels;  // 0 to 1
};

class Surface {
  public:
    // Current on this thread while it lives; null when the driver has no such surface.
    static std::unique_ptr<Surface> Make(int width, int height, ChannelBits const& bits);
    ~Surface();
    Surface(Surface const&) = delete;
    Surface& operator=(Surface const&) = delete;

    // Fetches what was drawn.
    void Read();
    // From the last Read; x and y from the top left.
    Pixel At(int x, int y) const;
    std::array<uint8_t, 4> BytesAt(int x, int y) const;
    int Width() const { return width_; }
    int Height() const { return height_; }

  private:
    Surface(int width, int height) : width_(width), height_(height) {}

    int width_, height_;
    void* surface_ = nullptr;
    void* context_ = nullptr;
    std::vector<uint8_t> pixels_;
};

}  // namespace zorvan
