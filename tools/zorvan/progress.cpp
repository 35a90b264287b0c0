#include "tools/zorvan/progress.h"

#include <unistd.h>

#include <cstdio>

namespace zorvan::tool {

Progress::Progress(uint32_t steps) : steps_(steps), shown_(steps > 1 && isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (shown_) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::Step() {
    ++done_;
    if (shown_) {
        std::fprintf(stderr, "\rframe %u of %u (%u %%)", done_, steps_,
                     static_cast<unsigned>(uint64_t{done_} * 100 / steps_));
    }
}

}  // namespace zorvan::tool
