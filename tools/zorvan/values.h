// The values that options take, and how they are written on the command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/fixed.h"
#include "core/geometry.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zorvan::tool {

// Width and height of a surface, in pixels.
using PixelSize = SizeT<int>;
// EGL allows no more on common drivers; the driver's own limit may be lower.
inline constexpr int kLargestSurface = 16384;

// Numbers of the first and the last frame.
struct FrameRange {
    uint32_t first = 0;
    uint32_t last = 0;

    uint32_t Count() const { return last - first + 1; }
};
inline constexpr uint32_t kLargestFrame = 10'000'000;

// The screen-space camera that the host pushes around a frame: the arguments of PushCamera2D, or none
// of it.
struct Camera2D {
    bool enabled = true;
    SizeT<RealFixed> size;
};

// Colour bits of a surface.
enum class SurfaceFormat { Rgb565, Rgb888, Rgba8888 };

// Cells of a contact sheet.
struct SheetGrid {
    uint32_t columns = 1;
    uint32_t rows = 1;
};
inline constexpr uint32_t kMostSheetCells = 100;  // in each direction

// Bytes of memory.
struct MemorySize {
    uint64_t bytes = 0;
};

// Layout of frames on standard output.
enum class RawFormat { Rgba, Y4m };

// Each reads a whole text; false when it is malformed or out of range.
bool ParseValue(std::string const& text, PixelSize& value);          // "640x480"
bool ParseValue(std::string const& text, FrameRange& value);         // "0..59" or "12"
bool ParseValue(std::string const& text, Camera2D& value);           // "640x480", "320.5x240" or "none"
bool ParseValue(std::string const& text, SurfaceFormat& value);      // "565", "888", "8888"
bool ParseValue(std::string const& text, SheetGrid& value);          // "4x3"
bool ParseValue(std::string const& text, RawFormat& value);          // "rgba", "y4m"
bool ParseValue(std::string const& text, ColorT<RealFixed>& value);  // "#rrggbb" or "#rrggbbaa"
bool ParseValue(std::string const& text, RealFixed& value);          // decimal number of 16.16
bool ParseValue(std::string const& text, RectangleT<int>& value);    // "10,20,300x200"
bool ParseValue(std::string const& text, MemorySize& value);         // "512M", "2G"

// What a user should have written, for messages.
char const* Expected(PixelSize const&);
char const* Expected(FrameRange const&);
char const* Expected(Camera2D const&);
char const* Expected(SurfaceFormat const&);
char const* Expected(SheetGrid const&);
char const* Expected(RawFormat const&);
char const* Expected(ColorT<RealFixed> const&);
char const* Expected(RealFixed const&);
char const* Expected(RectangleT<int> const&);
char const* Expected(MemorySize const&);

// "640x480"
std::string ToText(PixelSize const& size);

// Adds an option that is parsed by ParseValue; a wrong value ends the parse with one line that says what
// was got and what was expected. Instantiated for the types above.
template <typename T>
CLI::Option* AddValue(CLI::App& app, std::string const& name, T& value, std::string const& help);
template <typename T>
CLI::Option* AddValue(CLI::App& app, std::string const& name, std::optional<T>& value,
                      std::string const& help);

}  // namespace zorvan::tool
