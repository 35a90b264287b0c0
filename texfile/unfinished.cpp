#include "texfile/unfinished.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

namespace texfile {

namespace {

struct Registry {
    std::mutex mutex;
    std::set<std::string> names;
};

// Never destroyed: the waiting thread may need it until the process is gone.
Registry& TheRegistry() {
    static auto* registry = new Registry;
    return *registry;
}

void RemoveAll() {
    // Kept to the end, so that no other file is begun.
    TheRegistry().mutex.lock();
    for (const std::string& name : TheRegistry().names) {
        unlink(name.c_str());
    }
}

[[noreturn]] void RemoveAllAndDie(int signal, const sigset_t& signals) {
    RemoveAll();
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    raise(signal);
    _exit(128 + signal);
}

}  // namespace

void RemoveUnfinishedAtTheEnd() {
    std::atexit(RemoveAll);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            sigaddset(&signals, signal);
        }
    }
    // Inherited by every thread, so that only the one that waits gets them.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread([signals] {
            int signal = 0;
            if (sigwait(&signals, &signal) == 0) {
                RemoveAllAndDie(signal, signals);
            }
        }).detach();
    } catch (const std::system_error&) {
        // Without that thread they end the program as ever.
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }
}

bool BeginUnfinished(const std::string& name, const std::function<bool()>& begin) {
    const std::lock_guard lock(TheRegistry().mutex);
    // First, as memory may lack for it: a file that nobody knows would stay.
    const auto entry = TheRegistry().names.insert(name).first;
    const bool begun = begin();
    if (!begun) {
        TheRegistry().names.erase(entry);
    }
    return begun;
}

void EndUnfinished(const std::string& name, const std::function<void()>& end) {
    const std::lock_guard lock(TheRegistry().mutex);
    end();
    TheRegistry().names.erase(name);
}

}  // namespace texfile
