// Command lines of zorvan: any words are refused with a line, or are options that fit together. No verb runs.
#include <CLI/CLI.hpp>

#include "fuzz/command_line.h"
#include "fuzz/fuzz_input.h"
#include "tools/zorvan/verb.h"

namespace {

using namespace zorvan::tool;
using zorvan::fuzz::Require;

struct Program {
    Program() { app.require_subcommand(1); }

    CLI::App app;
    std::array<Verb, 4> verbs = {AddRenderVerb(app), AddViewVerb(app), AddInfoVerb(app), AddBenchVerb(app)};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    static std::unique_ptr<Program> program;
    std::vector<std::string> words = zorvan::fuzz::WordsOf({reinterpret_cast<char const*>(data), size});
    // Options keep what earlier inputs said. Only this verb looks at them here, and gets new ones.
    if (!program || std::find(words.begin(), words.end(), "render") != words.end()) {
        program = std::make_unique<Program>();
    }
    std::reverse(words.begin(), words.end());
    try {
        program->app.parse(std::move(words));
    } catch (CLI::ParseError const& error) {
        Require(error.get_exit_code() == 0 || *error.what() != '\0');
        return 0;
    }
    for (Verb const& verb : program->verbs) {
        if (verb.command->parsed() && verb.check) {
            const Status failure = verb.check();
            Require(!failure || (failure->code == ExitCode::Usage && !failure->message.empty()));
        }
    }
    return 0;
}
