// A line that says how far a long run is.
#pragma once

#include <cstdint>

namespace zorvan::tool {

// Written to standard error, only when that is a terminal and there is more than one step.
class Progress {
  public:
    explicit Progress(uint32_t steps);
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;
    ~Progress();  // wipes the line

    void Step();

  private:
    uint32_t steps_;
    uint32_t done_ = 0;
    bool shown_;
};

}  // namespace zorvan::tool
