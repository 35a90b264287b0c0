// qonvert: converts, inspects and compares texture files.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <new>
#include <nlohmann/json.hpp>
#include <string>

#include "texfile/unfinished.h"
#include "tools/common/out_of_memory.h"
#include "tools/qonvert/command_words.h"
#include "tools/qonvert/verbs.h"

namespace {

using namespace qonvert;

// Before the objects that libraries' headers define here, which take memory.
[[gnu::constructor(101)]] void BeforeAllElse() {
    tools::EndOnBadAlloc("qonvert: out of memory\n", static_cast<int>(ExitCode::kRuntime));
}

ExitCode Fail(const Session& session, ExitCode code, const std::string& message) {
    if (session.json) {
        session.Print({{"error", {{"exit", static_cast<int>(code)}, {"message", message}}}});
    }
    session.Warn(message);
    return code;
}

// The first word names a verb, or asks about the program.
void CheckVerb(CLI::App& program, int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "";
    std::string names;
    for (const CLI::App* verb : program.get_subcommands({})) {
        if (verb->get_name() == word) {
            return;
        }
        names += (names.empty() ? "" : ", ") + verb->get_name();
    }
    if (word.empty()) {
        throw ToolError(ExitCode::kUsage, "a verb is needed: " + names + " (--help shows how)");
    }
    if (!word.starts_with('-')) {
        throw ToolError(ExitCode::kUsage, "no verb is called \"" + word + "\"; there are " + names);
    }
}

ExitCode Run(int argc, char** argv, Session& session) {
    CLI::App program(
        "Converts, inspects and compares texture files: PNG, JPEG (input), KTX1, DDS, PKM and raw.",
        "qonvert");
    program.require_subcommand(1);
    program.set_version_flag("--version", QONVERT_TOOL_VERSION);
    program.footer(
        "Exit codes: 0 ok, 1 usage, 2 input or output, 3 bad file, 4 run time, 5 not supported, 7 differs.\n"
        "\"qonvert VERB --help\" shows a verb's options with examples.");
    AddConvertVerb(program, session);
    AddInfoVerb(program, session);
    AddCompareVerb(program, session);
    AddValidateVerb(program, session);
    AddFormatsVerb(program, session);
    CheckVerb(program, argc, argv);
    try {
        program.parse(CommandWords({argv + 1, argv + argc}));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            program.exit(error);
            return ExitCode::kOk;
        }
        return Fail(session, ExitCode::kUsage, std::string(error.what()) + " (--help shows how)");
    }
    return session.run();
}

}  // namespace

int main(int argc, char** argv) {
    texfile::RemoveUnfinishedAtTheEnd();
    // A reader that goes away is a write error with a message, not a silent end.
    std::signal(SIGPIPE, SIG_IGN);
    // A file that grows beyond a limit is a failed write like any other.
    std::signal(SIGXFSZ, SIG_IGN);
    Session session;
    ExitCode code = ExitCode::kRuntime;
    try {
        code = Run(argc, argv, session);
    } catch (const ToolError& error) {
        code = Fail(session, error.code(), error.what());
    } catch (const std::bad_alloc&) {
        code = Fail(session, ExitCode::kRuntime, "out of memory");
    } catch (const std::exception& error) {
        code = Fail(session, ExitCode::kRuntime, error.what());
    }
    std::cout.flush();
    if (!std::cout) {
        session.Warn(std::string("standard output: cannot write: ") + std::strerror(errno));
        code = code == ExitCode::kOk ? ExitCode::kIo : code;
    }
    return static_cast<int>(code);
}
