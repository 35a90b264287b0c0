#include <cmath>

#include "examples/generator/art.h"

namespace zorvan::examples {

Image StarryRoom() {
    return Paint(800, 500, [](Point p) {
        const float glow = std::hypot((p.x - 400) / 1.5f, p.y - 250);
        Rgba color = Mix(Hex(0x2b1f52), Hex(0x070812), Ramp(0, 330, glow));
        constexpr float kCell = 22;
        const int column = static_cast<int>(p.x / kCell);
        const int row = static_cast<int>(p.y / kCell);
        const Point star = {(static_cast<float>(column) + 0.15f + 0.7f * Noise(column, row)) * kCell,
                            (static_cast<float>(row) + 0.15f + 0.7f * Noise(row + 5, column)) * kCell};
        const float size = 0.4f + 1.2f * Noise(column + 3, row + 17);
        const float bright =
            std::pow(Noise(row, column + 29), 3.0f) * Ramp(size, size * 0.2f, Distance(p, star));
        return Mix(color, Hex(0xdfe6ff), bright);
    });
}

Image GlassPane(int color) {
    const Rgba tint = Hue(static_cast<float>(color) / kPaneColors, 0.72f, 1);
    return Paint(64, 96, [tint](Point p) {
        // Distance to a rounded rectangle: negative inside.
        const float x = std::fabs(p.x - 32) - 20;
        const float y = std::fabs(p.y - 48) - 36;
        const float edge =
            std::hypot(std::fmax(x, 0.0f), std::fmax(y, 0.0f)) + std::fmin(std::fmax(x, y), 0.0f) - 8;
        const float inside = Ramp(0.6f, -0.6f, edge);
        const float rim = Ramp(2.4f, 0.6f, std::fabs(edge + 1.5f));
        const float sheen = Ramp(-30, 40, p.x * 0.6f - p.y * 0.5f + 20);
        const float halo = 0.35f * std::exp(-std::fmax(edge, 0.0f) / 1.3f) * Ramp(3.6f, 2, edge);
        const Rgba body = Mix(tint, {1, 1, 1, 1}, 0.55f * rim + 0.25f * sheen);
        return Fade(body, std::fmax(inside * (0.22f + 0.3f * sheen + 0.5f * rim), halo));
    });
}

Image Star(int color) {
    constexpr uint32_t kColors[kStarColors] = {0xfff1c9, 0xffd08a, 0xff9a8f, 0xd58cff, 0x8fa0ff, 0x7fd8ff};
    const Rgba tint = Hex(kColors[color]);
    return Paint(16, 16, [tint](Point p) {
        const float distance = Distance(p, {8, 8});
        const float core = Ramp(3.0f, 1.4f, distance);
        const float glow = 0.55f * Ramp(7.8f, 1, distance);
        return Fade(Mix(tint, {1, 1, 1, 1}, 0.7f * core), std::fmax(core, glow * glow * 1.6f));
    });
}

}  // namespace zorvan::examples
