#include "tools/zorvan/interruption.h"

#include <csignal>

namespace zorvan::tool {
namespace {

volatile std::sig_atomic_t notedSignal = 0;

}  // namespace

void NoteSignals() {
    struct sigaction note {};
    note.sa_handler = [](int signal) { notedSignal = signal; };
    note.sa_flags = static_cast<int>(SA_RESETHAND);
    for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old {};
        if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler != SIG_IGN) {
            sigaction(signal, &note, nullptr);
        }
    }
}

Status CheckInterruption() {
    return notedSignal == 0 ? std::nullopt : Status(Failure{ExitCode::Runtime, "interrupted"});
}

void DieOfNotedSignal() {
    if (notedSignal != 0) {
        std::signal(notedSignal, SIG_DFL);
        std::raise(notedSignal);
    }
}

}  // namespace zorvan::tool
