#include "core/trace.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace zorvan {
namespace {

Debug::Sink traceSink = nullptr;
void* traceContext = nullptr;

}  // namespace

void Debug::Trace(char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (traceSink == nullptr) {
        std::vfprintf(stderr, format, arguments);
        va_end(arguments);
        return;
    }
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    traceSink(traceContext, text);
}

void Debug::SetSink(Sink sink, void* context) {
    traceSink = sink;
    traceContext = context;
}

}  // namespace zorvan
