// The end without memory, where no exception can tell of it.
#pragma once

namespace tools {

// From here on, what a lack of memory ends in a place that lets no exception through (before main, in a
// destructor, at the program's end) is one line on standard error and the exit code, as for any other such
// failure; exit handlers run. `line` must live as long as the program. Takes no memory.
void EndOnBadAlloc(const char* line, int code);

}  // namespace tools
