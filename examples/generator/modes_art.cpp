#include <cmath>

#include "examples/generator/art.h"

namespace zorvan::examples {
namespace {

constexpr int kRows[] = {4, 5, 6, 7, 6, 5, 4};
constexpr float kRadius = 72;                    // of a hexagon's corners
constexpr float kPitchX = kRadius * 1.7320508f;  // between cells of a row
constexpr float kPitchY = kRadius * 1.5f;

// Distance from the centre of a hexagon that stands on a corner: 1 on its edge.
float HexagonRadius(Point p) {
    const float x = std::fabs(p.x);
    const float y = std::fabs(p.y);
    return std::fmax(x, x * 0.5f + y * 0.8660254f) / (kRadius * 0.8660254f);
}

// Modes that do not blend plainly.
bool IsSpecial(int mode) {
    return mode == 4 || mode == 5 || mode == 6 || mode == 23 || mode == 25 || mode == 27 || mode == 29;
}

// The ground that all blending happens on: dark to light, with a band of saturated colours.
Rgba CellGround(Point p) {
    Rgba color = Mix(Hex(0x10182e), Hex(0xf2e6d0), Ramp(-52, 52, p.x));
    const float band = Ramp(13.5f, 12.5f, std::fabs(p.y + 16));
    return Mix(color, Hue((p.x + 62) / 150, 0.75f, 0.85f), band);
}

// The number of a cell in a pill at its lower corner.
Rgba Label(Point p, int mode) {
    const float half = mode < 10 ? 1 : 7;
    const float pill = DistanceToSegment(p, {-half - 2, 47}, {half + 2, 47});
    Rgba color = Fade(IsSpecial(mode) ? Hex(0xffb547) : Hex(0x2a3350), Ramp(11.5f, 10.5f, pill));
    constexpr float kHeight = 12;
    float ink = 1e9f;
    if (mode < 10) {
        ink = DistanceToDigit({(p.x + 3.7f) / kHeight, (p.y - 41) / kHeight}, mode);
    } else {
        ink = std::fmin(DistanceToDigit({(p.x + 8.6f) / kHeight, (p.y - 41) / kHeight}, mode / 10),
                        DistanceToDigit({(p.x - 1.2f) / kHeight, (p.y - 41) / kHeight}, mode % 10));
    }
    const Rgba text = IsSpecial(mode) ? Hex(0x2a1a00) : Hex(0xe8edf8);
    return Over(color, Fade(text, Ramp(0.11f, 0.06f, ink)));
}

}  // namespace

Point ModeCellCenter(int mode) {
    int row = 0;
    while (mode >= kRows[row]) {
        mode -= kRows[row++];
    }
    return {
        kModeSheetWidth / 2 + (static_cast<float>(mode) - static_cast<float>(kRows[row] - 1) / 2) * kPitchX,
        kModeSheetHeight / 2 + static_cast<float>(row - 3) * kPitchY};
}

Image ModeSheet() {
    return Paint(kModeSheetWidth, kModeSheetHeight, [](Point p) {
        const float middle = Distance(p, {kModeSheetWidth / 2, kModeSheetHeight / 2});
        Rgba color = Mix(Hex(0x1c2340), Hex(0x080a14), Ramp(100, 620, middle));
        for (int mode = 0; mode < 37; ++mode) {
            const Point center = ModeCellCenter(mode);
            const Point place = {p.x - center.x, p.y - center.y};
            const float radius = HexagonRadius(place);
            if (radius > 0.97f) {
                continue;
            }
            const Rgba edge = IsSpecial(mode) ? Hex(0xffb547) : Hex(0x4a5680);
            color = radius > 0.93f ? edge : Over(CellGround(place), Label(place, mode));
            break;
        }
        return color;
    });
}

Image BlendedDisc() {
    return Paint(96, 96, [](Point p) {
        const Point place = {p.x - 48, p.y - 48};
        const float radius = std::hypot(place.x, place.y);
        const float turn = std::atan2(place.y, place.x) / 6.2831853f;
        Rgba color = Mix(Hex(0xffffff), Hue(turn, 0.8f, 1), Ramp(4, 26, radius));
        const float petals = 34 + 9 * std::cos(turn * 6.2831853f * 6);
        const float alpha =
            0.9f * Ramp(petals, petals - 24, radius) + 0.9f * Ramp(1.8f, 0.8f, std::fabs(radius - 44));
        // Modes that ignore the texture's alpha need a colour that fades away as well.
        const float light = std::sqrt(std::fmin(alpha, 1.0f));
        return Rgba{color.r * light, color.g * light, color.b * light, std::fmin(alpha, 1.0f)};
    });
}

}  // namespace zorvan::examples
