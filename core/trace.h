// Diagnostic messages of the engine.
#pragma once

#include <string_view>

#include "core/api.h"

namespace zorvan {

class ZORVAN_CORE_API Debug {
  public:
    using Sink = void (*)(void* context, std::string_view text);

    // Formats like printf and hands the text to the sink; without a sink, writes it to standard error.
    static void Trace(char const* format, ...);

    // Replaces the sink; null restores standard error. Not synchronised with running traces.
    static void SetSink(Sink sink, void* context);
};

}  // namespace zorvan
