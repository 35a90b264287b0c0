#include "tools/common/progress.h"

#include <unistd.h>

#include <cstdio>

#include "tools/common/printable.h"

namespace tools {

Progress::Progress(std::size_t total) : total_(total), visible_(total > 1 && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (visible_) {
        std::fputs("\r\033[K", stderr);
    }
}

void Progress::Step(const std::string& name) {
    const std::lock_guard lock(mutex_);
    ++done_;
    if (visible_) {
        std::fprintf(stderr, "\r\033[K[%zu/%zu] %.60s", done_, total_, Printable(name).c_str());
    }
}

}  // namespace tools
