#include "tools/qonvert/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace qonvert {

void ParallelFor(std::size_t count, unsigned threads, const std::function<void(std::size_t)>& work) {
    std::vector<std::exception_ptr> errors(count);
    std::atomic<std::size_t> next{0};
    const auto run = [&] {
        for (std::size_t i = next++; i < count; i = next++) {
            try {
                work(i);
            } catch (...) {
                errors[i] = std::current_exception();
            }
        }
    };
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < std::min<std::size_t>(threads, count); ++i) {
        try {
            others.emplace_back(run);
        } catch (const std::system_error&) {
            break;  // the machine gives no more; those that run do the work
        }
    }
    run();
    others.clear();
    for (const std::exception_ptr& error : errors) {
        if (error) {
            std::rethrow_exception(error);
        }
    }
}

}  // namespace qonvert
