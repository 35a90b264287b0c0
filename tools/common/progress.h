// A line that says how far a long run is.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace tools {

// Written to standard error, only when that is a terminal and there is more than one step.
class Progress {
  public:
    explicit Progress(std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Clears the line.
    ~Progress();

    // One more is done; from any thread.
    void Step(const std::string& name);

  private:
    std::mutex mutex_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool visible_;
};

}  // namespace tools
