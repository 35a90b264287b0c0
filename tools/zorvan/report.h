// Figures and descriptions as JSON.
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>

#include "tools/zorvan/statistics.h"

namespace zorvan::tool {

using Json = nlohmann::ordered_json;

// Appends median and 95th percentile of the frame, update and render times, in milliseconds.
void AppendTimes(Json& object, FrameFigures const& figures);
// Indented, with a line end; text that is no UTF-8 gets replacement characters.
void Print(Json const& json, std::FILE* stream);

}  // namespace zorvan::tool
