// The GL that a benchmark draws with.
#pragma once

namespace zorvan::bench {

// Makes a context for a surface of this size current, once; false with a line on standard error when there
// is none.
bool MakeContextCurrent(int width, int height);

// Returns when all that was asked for is drawn.
void FinishDrawing();

}  // namespace zorvan::bench
