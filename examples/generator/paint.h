// Images as functions of a place, sampled into pixels with anti-aliasing.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "core/image.h"

namespace zorvan::examples {

// Straight (not premultiplied) colour, channels 0 to 1.
struct Rgba {
    float r = 0, g = 0, b = 0, a = 0;
};

struct Point {
    float x = 0, y = 0;
};

// Colour at a place in pixels, x to the right, y downwards.
using Art = std::function<Rgba(Point)>;

// Averages 4x4 places of each pixel.
Image Paint(int width, int height, Art const& art);

// A colour written as 0xRRGGBB.
Rgba Hex(uint32_t rgb, float alpha = 1);
// From a (t = 0) to b (t = 1); t is clamped.
Rgba Mix(Rgba a, Rgba b, float t);
// top over bottom.
Rgba Over(Rgba bottom, Rgba top);
// The colour with its alpha times a factor.
Rgba Fade(Rgba color, float factor);
// Full colours of the rainbow; hue in turns.
Rgba Hue(float turns, float saturation, float value);

// 0 below from, 1 above to, smooth between.
float Ramp(float from, float to, float value);
float Distance(Point a, Point b);
float DistanceToSegment(Point p, Point a, Point b);
// Whether p lies inside a polygon.
bool Inside(Point p, std::vector<Point> const& polygon);
// A number from 0 to 1 that depends on both arguments in no visible order.
float Noise(int x, int y);

// Distance from p to the strokes of a digit (0 to 9) in the box (0, 0) to (0.62, 1).
float DistanceToDigit(Point p, int digit);

}  // namespace zorvan::examples
