// One file of "qonvert convert".
#pragma once

#include <optional>

#include "tools/qonvert/convert_options.h"
#include "tools/qonvert/difference.h"

namespace qonvert {

// What became of one file.
struct Outcome {
    bool skipped = true;  // not tried, after another one failed
    ExitCode code = ExitCode::kOk;
    std::string error;
    std::vector<std::string> warnings;
    std::string_view container;
    std::uint32_t format = 0, width = 0, height = 0;
    std::size_t levels = 0, bytes = 0;
    std::optional<Difference> report;
};

// Never throws; a failure is in the outcome, and leaves no file.
Outcome ConvertFile(const Job& job, const ConvertOptions& options, unsigned threads);

}  // namespace qonvert
