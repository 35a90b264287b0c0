// The pictures of the example scenes.
#pragma once

#include "examples/generator/paint.h"

namespace zorvan::examples {

// hello: a lake at dusk, the sun's glow (to be added to what is below it), a sailing boat.
Image DuskLake();
Image SunGlow();
Image SailingBoat();

// transfer-modes: 37 numbered cells in seven rows of 4, 5, 6, 7, 6, 5 and 4; and what is blended on them.
inline constexpr int kModeSheetWidth = 964;
inline constexpr int kModeSheetHeight = 886;
// Centre of the cell of a mode, 0 to 36.
Point ModeCellCenter(int mode);
Image ModeSheet();
Image BlendedDisc();

// camera: a starry room, and panes of glass in colours around the wheel.
inline constexpr int kPaneColors = 12;
Image StarryRoom();
Image GlassPane(int color);

// crowd: stars from the galaxy's core (0) to its rim.
inline constexpr int kStarColors = 6;
Image Star(int color);

}  // namespace zorvan::examples
