#include "tools/zorvan/report.h"

namespace zorvan::tool {
namespace {

Json Spread(std::vector<double> const& values) {
    return {{"median", Median(values)}, {"p95", Percentile(values, 0.95)}};
}

}  // namespace

void AppendTimes(Json& object, FrameFigures const& figures) {
    object["frame_ms"] = Spread(figures.total);
    object["update_ms"] = Spread(figures.update);
    object["render_ms"] = Spread(figures.render);
}

void Print(Json const& json, std::FILE* stream) {
    std::fprintf(stream, "%s\n", json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

}  // namespace zorvan::tool
