#include "tools/common/out_of_memory.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include <unistd.h>

namespace tools {

namespace {

const char* lastLine = "";
int lastCode = 0;
std::terminate_handler otherwise = nullptr;

void End() {
    try {
        if (const std::exception_ptr error = std::current_exception()) {
            std::rethrow_exception(error);
        }
    } catch (const std::bad_alloc&) {
        static_cast<void>(write(STDERR_FILENO, lastLine, std::strlen(lastLine)) < 0);
        std::exit(lastCode);
    } catch (...) {  // left to the other handler
    }
    otherwise();
}

}  // namespace

void EndOnBadAlloc(const char* line, int code) {
    lastLine = line;
    lastCode = code;
    otherwise = std::set_terminate(End);
}

}  // namespace tools
