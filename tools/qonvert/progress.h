// A line that counts finished files, on a terminal only.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace qonvert {

class Progress {
  public:
    explicit Progress(std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    // Clears the line.
    ~Progress();

    // From any thread.
    void Step(const std::string& name);

  private:
    std::mutex mutex_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool visible_;
};

}  // namespace qonvert
