#include <algorithm>
#include <cmath>

#include "examples/generator/art.h"

namespace zorvan::examples {
namespace {

constexpr float kHorizon = 262;
constexpr Point kSun = {432, 168};

Rgba Sky(Point p) {
    const float t = std::clamp(p.y / kHorizon, 0.0f, 1.0f);
    Rgba color = Mix(Hex(0x141a3c), Hex(0x4a2f66), Ramp(0, 0.45f, t));
    color = Mix(color, Hex(0xc2556b), Ramp(0.35f, 0.75f, t));
    color = Mix(color, Hex(0xffb26b), Ramp(0.65f, 1, t));
    // Warm light around the sun.
    return Mix(color, Hex(0xffd79a), 0.5f * std::exp(-Distance(p, kSun) / 90.0f));
}

Rgba Stars(Point p) {
    constexpr float kCell = 26;
    const int column = static_cast<int>(p.x / kCell);
    const int row = static_cast<int>(p.y / kCell);
    const Point star = {(static_cast<float>(column) + 0.15f + 0.7f * Noise(column, row)) * kCell,
                        (static_cast<float>(row) + 0.15f + 0.7f * Noise(row + 91, column)) * kCell};
    const float size = 0.5f + 1.1f * Noise(column + 7, row + 13);
    const float bright = Noise(row, column + 51) * Ramp(150, 10, p.y);
    return {1, 0.97f, 0.9f, bright * Ramp(size, size * 0.3f, Distance(p, star))};
}

// Height of a mountain ridge above the horizon.
float Ridge(float x, int layer) {
    const float seed = static_cast<float>(layer) * 37.0f;
    const float wide = 1.0f - 0.22f * static_cast<float>(layer);
    return wide * (46 + 26 * std::sin((x + seed) * 0.0113f) + 15 * std::sin((x - seed) * 0.027f + 1.3f) +
                   6 * std::sin(x * 0.071f + seed) + 2.5f * std::sin(x * 0.163f + 2 * seed));
}

Rgba Land(Point p) {
    Rgba color = Over(Sky(p), Stars(p));
    constexpr uint32_t kTop[3] = {0x8a4a72, 0x5b3462, 0x2c2145};
    constexpr uint32_t kFoot[3] = {0xe08a72, 0x9c5570, 0x443056};
    for (int layer = 0; layer < 3; ++layer) {
        const float top = kHorizon - Ridge(p.x, layer);
        if (p.y > top) {
            color = Mix(Hex(kTop[layer]), Hex(kFoot[layer]), Ramp(top, kHorizon + 12, p.y));
        }
    }
    return color;
}

Rgba Lake(Point p) {
    const float depth = p.y - kHorizon;
    // Ripples shift the mirrored land sideways, more so nearer to us.
    const float ripple = std::sin(depth * 0.9f + 14 * std::log(1 + depth)) * (0.6f + depth * 0.05f);
    Rgba color = Land({p.x + ripple * 2.2f, kHorizon - depth * 1.25f - ripple});
    color = Mix(color, Hex(0x1b2148), 0.28f + 0.42f * Ramp(0, 138, depth));
    // The sun's path: dashes that spread towards us.
    const float spread = 7 + depth * 0.34f;
    const float across = std::fabs(p.x - kSun.x) / spread;
    const float dashes =
        Ramp(0.1f, 0.8f,
             std::sin(depth * 1.35f - 10 * std::sqrt(depth) + 3 * std::sin(p.x * 0.045f + depth * 0.2f)));
    return Mix(color, Hex(0xffe0a6), 0.85f * std::exp(-across * across) * dashes);
}

// The boat above its water line, which is at y = 0; x runs from -70 to 70.
Rgba Boat(Point p) {
    const float belly = 9 * std::sin(3.1415927f * std::clamp((p.y + 104) / 92, 0.0f, 1.0f));
    Rgba color;
    if (p.y < -12 && p.y > -104 && p.x > 3 && p.x < 3 + (p.y + 104) * 0.54f + belly * 0.5f) {
        color = Mix(Hex(0xfff2dc), Hex(0xf2b48a), Ramp(0, 48, p.x));
        color = Mix(color, Hex(0xd98a74), 0.35f * Ramp(-30, -12, p.y));
    }
    if (p.y < -16 && p.y > -92 && p.x < -3 && p.x > -3 - (p.y + 92) * 0.45f - belly * 0.3f) {
        color = Mix(Hex(0xe8a183), Hex(0xb5627a), Ramp(-4, -38, p.x));
    }
    if (std::fabs(p.x) < 1.4f && p.y > -112 && p.y < -6) {
        color = Hex(0x3a2234);
    }
    if (Inside(p, {{0, -112}, {-13, -108}, {0, -104}})) {
        color = Hex(0xe2483d);
    }
    const float side = 1 - std::pow(std::fabs(p.x + 2) / 58, 2.6f);
    if (p.y > -10 && p.y < 0 && p.y < 10 * side) {
        color = p.y < -7 ? Hex(0xf6d7ae) : Mix(Hex(0x6d2b3d), Hex(0x2b1730), Ramp(-7, 0, p.y));
        if (std::fabs(p.x + 2) > 58 + p.y * 0.9f) {
            color = {};
        }
    }
    return color;
}

}  // namespace

Image DuskLake() {
    return Paint(640, 400, [](Point p) {
        Rgba color = p.y < kHorizon ? Land(p) : Lake(p);
        // Mist along the shore, darker corners.
        color = Mix(color, Hex(0xffc79a), 0.35f * std::exp(-std::fabs(p.y - kHorizon) / 7));
        const float corner = std::hypot((p.x - 320) / 400, (p.y - 200) / 260);
        return Mix(color, Hex(0x0a0d22), 0.55f * Ramp(0.6f, 1.35f, corner));
    });
}

Image SunGlow() {
    return Paint(256, 256, [](Point p) {
        const float distance = Distance(p, {128, 128});
        const float disc = Ramp(30.6f, 29.4f, distance);
        const float glow = 0.55f * std::exp(-std::max(distance - 29, 0.0f) / 26) * Ramp(127, 70, distance);
        const Rgba color = Mix(Hex(0xffb765), Hex(0xfff0c8), disc);
        return Fade(color, std::max(disc * 0.95f, glow));
    });
}

Image SailingBoat() {
    constexpr float kWaterLine = 124;
    return Paint(160, 192, [](Point p) {
        const Point place = {p.x - 80, p.y - kWaterLine};
        if (place.y < 0) {
            return Boat(place);
        }
        const float ripple = std::sin(place.y * 0.85f) * (0.8f + place.y * 0.07f);
        const Rgba boat = Boat({place.x + ripple, -place.y * 1.7f});
        return Fade(Mix(boat, Hex(0x2a2048, boat.a), 0.35f), 0.6f * Ramp(66, 4, place.y));
    });
}

}  // namespace zorvan::examples
