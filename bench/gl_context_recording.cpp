// The recording GL of the tests, with its log off: functions that do next to nothing.
#include "bench/gl_context.h"
#include "tests/recording_gl/recording_gl.h"

namespace zorvan::bench {

bool MakeContextCurrent(int, int) {
    recording_gl::Reset();
    recording_gl::script.logging = false;
    return true;
}

void FinishDrawing() {}

}  // namespace zorvan::bench
