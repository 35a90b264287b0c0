#include "examples/generator/paint.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zorvan::examples {
namespace {

constexpr int kSamples = 4;  // per direction

uint8_t ToByte(float value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f));
}

using Stroke = std::vector<Point>;

// An arc of an ellipse as a chain of points; angles in turns, clockwise from the right.
Stroke Arc(Point center, float radiusX, float radiusY, float from, float to) {
    Stroke stroke;
    constexpr int kSteps = 24;
    for (int i = 0; i <= kSteps; ++i) {
        const float angle = 6.2831853f * (from + (to - from) * static_cast<float>(i) / kSteps);
        stroke.push_back({center.x + radiusX * std::cos(angle), center.y + radiusY * std::sin(angle)});
    }
    return stroke;
}

std::array<std::vector<Stroke>, 10> MakeDigits() {
    std::array<std::vector<Stroke>, 10> digits;
    digits[0] = {Arc({0.31f, 0.5f}, 0.29f, 0.5f, 0, 1)};
    digits[1] = {{{0.12f, 0.2f}, {0.36f, 0}, {0.36f, 1}}};
    digits[2] = {Arc({0.31f, 0.28f}, 0.27f, 0.28f, -0.47f, 0.11f), {{0.515f, 0.46f}, {0.04f, 1}, {0.6f, 1}}};
    digits[3] = {Arc({0.3f, 0.25f}, 0.25f, 0.25f, -0.44f, 0.25f),
                 Arc({0.3f, 0.75f}, 0.28f, 0.25f, -0.25f, 0.44f)};
    digits[4] = {{{0.46f, 1}, {0.46f, 0}, {0, 0.68f}, {0.62f, 0.68f}}};
    digits[5] = {{{0.55f, 0}, {0.12f, 0}, {0.07f, 0.45f}}, Arc({0.29f, 0.68f}, 0.3f, 0.32f, -0.38f, 0.4f)};
    digits[6] = {Arc({0.31f, 0.68f}, 0.29f, 0.32f, 0, 1), {{0.46f, 0}, {0.17f, 0.32f}, {0.04f, 0.6f}}};
    digits[7] = {{{0.02f, 0}, {0.6f, 0}, {0.2f, 1}}};
    digits[8] = {Arc({0.31f, 0.24f}, 0.24f, 0.24f, 0, 1), Arc({0.31f, 0.74f}, 0.29f, 0.26f, 0, 1)};
    digits[9] = {Arc({0.31f, 0.32f}, 0.29f, 0.32f, 0, 1), {{0.16f, 1}, {0.45f, 0.68f}, {0.58f, 0.4f}}};
    return digits;
}

}  // namespace

Image Paint(int width, int height, Art const& art) {
    Image picture{static_cast<uint32_t>(width), static_cast<uint32_t>(height), {}};
    picture.rgba.reserve(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    constexpr float kWeight = 1.0f / (kSamples * kSamples);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Rgba sum;  // premultiplied
            for (int i = 0; i < kSamples * kSamples; ++i) {
                const Rgba color =
                    art({static_cast<float>(x) + (static_cast<float>(i % kSamples) + 0.5f) / kSamples,
                         static_cast<float>(y) + (static_cast<float>(i / kSamples) + 0.5f) / kSamples});
                sum.r += color.r * color.a * kWeight;
                sum.g += color.g * color.a * kWeight;
                sum.b += color.b * color.a * kWeight;
                sum.a += color.a * kWeight;
            }
            const float scale = sum.a > 0 ? 1 / sum.a : 0;
            picture.rgba.insert(picture.rgba.end(), {ToByte(sum.r * scale), ToByte(sum.g * scale),
                                                     ToByte(sum.b * scale), ToByte(sum.a)});
        }
    }
    return picture;
}

Rgba Hex(uint32_t rgb, float alpha) {
    const auto channel = [rgb](int shift) { return static_cast<float>((rgb >> shift) & 255) / 255.0f; };
    return {channel(16), channel(8), channel(0), alpha};
}

Rgba Mix(Rgba a, Rgba b, float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t, a.a + (b.a - a.a) * t};
}

Rgba Over(Rgba bottom, Rgba top) {
    const float alpha = top.a + bottom.a * (1 - top.a);
    if (alpha <= 0) {
        return {};
    }
    const float under = bottom.a * (1 - top.a);
    return {(top.r * top.a + bottom.r * under) / alpha, (top.g * top.a + bottom.g * under) / alpha,
            (top.b * top.a + bottom.b * under) / alpha, alpha};
}

Rgba Fade(Rgba color, float factor) {
    color.a *= factor;
    return color;
}

Rgba Hue(float turns, float saturation, float value) {
    const auto channel = [=](float shift) {
        const float place = std::fabs(std::remainder((turns + shift) * 6.0f, 6.0f));
        const float pure = std::clamp(2.0f - place, 0.0f, 1.0f);
        return value * (1 - saturation + saturation * pure);
    };
    return {channel(0), channel(-1.0f / 3), channel(-2.0f / 3), 1};
}

float Ramp(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

float Distance(Point a, Point b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

float DistanceToSegment(Point p, Point a, Point b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    const float along = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0f, 1.0f);
    return Distance(p, {a.x + along * dx, a.y + along * dy});
}

bool Inside(Point p, std::vector<Point> const& polygon) {
    bool inside = false;
    Point previous = polygon.back();
    for (Point const& corner : polygon) {
        if ((corner.y > p.y) != (previous.y > p.y) &&
            p.x < (previous.x - corner.x) * (p.y - corner.y) / (previous.y - corner.y) + corner.x) {
            inside = !inside;
        }
        previous = corner;
    }
    return inside;
}

float Noise(int x, int y) {
    uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1u + static_cast<uint32_t>(y) * 0x85EBCA77u;
    h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
    h = (h ^ (h >> 12)) * 0x297A2D39u;
    return static_cast<float>((h ^ (h >> 15)) >> 8) / 16777216.0f;
}

float DistanceToDigit(Point p, int digit) {
    static const std::array<std::vector<Stroke>, 10> kDigits = MakeDigits();
    float nearest = 1e9f;
    for (Stroke const& stroke : kDigits[static_cast<size_t>(digit)]) {
        for (size_t i = 1; i < stroke.size(); ++i) {
            nearest = std::min(nearest, DistanceToSegment(p, stroke[i - 1], stroke[i]));
        }
    }
    return nearest;
}

}  // namespace zorvan::examples
