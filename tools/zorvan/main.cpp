// zorvan: renders, shows, describes and measures scene files.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include "core/out_of_memory.h"
#include "tools/common/out_of_memory.h"
#include "tools/common/printable.h"
#include "tools/zorvan/interruption.h"
#include "tools/zorvan/verb.h"

namespace {

using zorvan::tool::ExitCode;
using zorvan::tool::Failure;
using zorvan::tool::Status;
using zorvan::tool::Verb;

// Before the objects that libraries' headers define here, which take memory.
[[gnu::constructor(101)]] void BeforeAllElse() {
    tools::EndOnBadAlloc("zorvan: out of memory\n", static_cast<int>(ExitCode::Memory));
}

// Also where the back end does without what it could not make.
[[noreturn]] void OnNoMemory() {
    zorvan::OutOfMemory::Note();
    throw std::bad_alloc();
}

int Report(ExitCode code, std::string const& message) {
    std::fprintf(stderr, "zorvan: %s\n", tools::Printable(message).c_str());
    return static_cast<int>(code);
}

// The first word names a verb, or asks about the program.
Status CheckVerb(CLI::App& program, std::string const& word) {
    std::string names;
    for (CLI::App const* verb : program.get_subcommands({})) {
        if (verb->get_name() == word) {
            return std::nullopt;
        }
        names += (names.empty() ? "" : ", ") + verb->get_name();
    }
    if (word.empty()) {
        return Failure{ExitCode::Usage, "got no verb, expected one of " + names + " (see zorvan --help)"};
    }
    if (word[0] != '-') {
        return Failure{ExitCode::Usage, "got the verb '" + word + "', expected one of " + names};
    }
    return std::nullopt;
}

int Run(int argc, char** argv) {
    CLI::App program("Renders, shows, describes and measures scene files of the zorvan engine.", "zorvan");
    program.set_version_flag("--version", "zorvan " ZORVAN_VERSION);
    program.require_subcommand(1);
    program.footer(
        "Exit codes: 0 done, 1 wrong options, 2 file not readable or writable, 3 bad file,\n"
        "            4 EGL, GL or plug-in failed, 5 not supported on this machine,\n"
        "            6 does not fit into the memory limit, or into memory.\n"
        "zorvan VERB --help explains each verb, with examples.");
    const Verb verbs[] = {zorvan::tool::AddRenderVerb(program), zorvan::tool::AddViewVerb(program),
                          zorvan::tool::AddInfoVerb(program), zorvan::tool::AddBenchVerb(program)};
    if (Status failure = CheckVerb(program, argc > 1 ? argv[1] : "")) {
        return Report(failure->code, failure->message);
    }
    try {
        program.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return program.exit(error);  // --help, --version
        }
        return Report(ExitCode::Usage, std::string(error.what()) + " (see zorvan --help)");
    }
    for (Verb const& verb : verbs) {
        if (!verb.command->parsed()) {
            continue;
        }
        if (Status failure = verb.run()) {
            return Report(failure->code, failure->message);
        }
    }
    return static_cast<int>(ExitCode::Ok);
}

// A standard stream that is closed would let the next file that is opened become it, with our words in it. It
// stays as good as closed: what is opened here can neither be read as input nor written as output.
void OccupyStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    OccupyStandardDescriptors();
    // A reader that goes away is a write error with a message, not a silent end.
    std::signal(SIGPIPE, SIG_IGN);
    // A file that grows beyond a limit is a failed write like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_new_handler(OnNoMemory);
    int code = 0;
    try {
        code = Run(argc, argv);
    } catch (std::bad_alloc const&) {
        code = Report(ExitCode::Memory, "out of memory");
    } catch (std::exception const& error) {
        code = Report(ExitCode::Runtime, error.what());
    }
    // What a full disk does not take shows here at the latest.
    if ((std::fflush(stdout) != 0 || std::ferror(stdout) != 0) && code == 0) {
        code = Report(ExitCode::Io, std::string("standard output: cannot write: ") + std::strerror(errno));
    }
    zorvan::tool::DieOfNotedSignal();
    return code;
}
