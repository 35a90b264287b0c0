// An off-screen OpenGL ES 2.0 surface of the software driver, and its pixels.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace zorvan {

// Channel bits: red, green, blue, alpha.
using ChannelBits = std::array<int, 4>;
using Bytes = std::array<uint8_t, 4>;

class Surface {
  public:
    // Current on this thread while it lives; null when the driver has no such surface.
    static std::unique_ptr<Surface> Make(int width, int height, ChannelBits const& bits);
    ~Surface();

    // Fetches what was drawn.
    void Read();
    // From the last Read; x and y from the top left.
    Bytes At(int x, int y) const { return pixels_[static_cast<size_t>((height_ - 1 - y) * width_ + x)]; }

  private:
    int width_ = 0, height_ = 0;
    void* surface_ = nullptr;
    void* context_ = nullptr;
    std::vector<Bytes> pixels_;
};

}  // namespace zorvan
