// Figures of a run of frames.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace zorvan::tool {

// Milliseconds since it was made.
class Stopwatch {
  public:
    double Milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Milliseconds of one frame; total includes clearing and waiting for GL to finish.
struct FrameTimes {
    double update = 0;
    double render = 0;
    double total = 0;
};

// All frames of a run.
struct FrameFigures {
    std::vector<double> update, render, total;
    uint64_t drawCalls = 0;

    void Add(FrameTimes const& times, uint64_t calls);
};

// The smallest value that at least the fraction (0 to 1) of all values do not exceed; 0 for no values.
double Percentile(std::vector<double> values, double fraction);

inline double Median(std::vector<double> const& values) {
    return Percentile(values, 0.5);
}

}  // namespace zorvan::tool
