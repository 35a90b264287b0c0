#include "core/memory_budget.h"

#include <sys/resource.h>

#include <algorithm>
#include <fstream>

namespace zorvan {
namespace {

constexpr uint64_t kUnknownMemory = uint64_t{4} << 30;

// The first number of a file, UINT64_MAX for none: such a file says "max" where nothing is limited.
uint64_t ReadNumber(std::string const& path) {
    std::ifstream file(path);
    uint64_t number = 0;
    return file >> number ? number : UINT64_MAX;
}

uint64_t AvailableMemory(std::string const& root) {
    std::ifstream file(root + "/proc/meminfo");
    for (std::string name, unit; file >> name;) {
        uint64_t kibibytes = 0;
        if (name == "MemAvailable:" && file >> kibibytes) {
            return kibibytes * 1024;
        }
        std::getline(file, unit);
    }
    return kUnknownMemory;
}

// The lowest limit of the process's control group and of those around it.
uint64_t ControlGroupLimit(std::string const& root) {
    const std::string groups = root + "/sys/fs/cgroup";
    uint64_t limit = ReadNumber(groups + "/memory/memory.limit_in_bytes");  // version 1
    std::ifstream file(root + "/proc/self/cgroup");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("0::/")) {
            continue;
        }
        for (std::string group = line.substr(3); !group.empty(); group.resize(group.rfind('/'))) {
            limit = std::min(limit, ReadNumber(groups + group + "/memory.max"));
        }
        limit = std::min(limit, ReadNumber(groups + "/memory.max"));
    }
    return limit;
}

}  // namespace

MemoryBudget::~MemoryBudget() = default;

uint64_t MemoryBudget::DefaultLimit() {
    uint64_t usable = std::min<uint64_t>(UsableMemory(), SIZE_MAX);
    rlimit addresses{};
    if (getrlimit(RLIMIT_AS, &addresses) == 0 && addresses.rlim_cur != RLIM_INFINITY) {
        usable = std::min<uint64_t>(usable, addresses.rlim_cur);
    }
    return usable / 4;
}

bool MemoryBudget::Take(uint64_t bytes) {
    if (bytes > limit_ - taken_) {
        refused_ = bytes;
        exhausted_ = true;
        return false;
    }
    taken_ += bytes;
    return true;
}

std::string MemoryBudget::Refusal(std::string_view what) const {
    return "got " + std::to_string(refused_) + " bytes for " + std::string(what) + " beside " +
           std::to_string(taken_) + " taken before, expected at most " + std::to_string(limit_) +
           " together (the memory limit)";
}

uint64_t UsableMemory(std::string const& root) {
    return std::min(AvailableMemory(root), ControlGroupLimit(root));
}

}  // namespace zorvan
