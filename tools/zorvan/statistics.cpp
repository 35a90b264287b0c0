#include "tools/zorvan/statistics.h"

#include <algorithm>
#include <cmath>

namespace zorvan::tool {

void FrameFigures::Add(FrameTimes const& times, uint64_t calls) {
    update.push_back(times.update);
    render.push_back(times.render);
    total.push_back(times.total);
    drawCalls += calls;
}

double Percentile(std::vector<double> values, double fraction) {
    if (values.empty()) {
        return 0;
    }
    const auto rank = static_cast<size_t>(std::ceil(fraction * static_cast<double>(values.size())));
    const size_t index = std::clamp<size_t>(rank, 1, values.size()) - 1;
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(index), values.end());
    return values[index];
}

}  // namespace zorvan::tool
