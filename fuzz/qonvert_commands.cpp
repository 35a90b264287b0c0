// Command lines of qonvert: any words are refused with a line, or give options and jobs that hold what they
// promise. No verb runs.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "fuzz/command_line.h"
#include "fuzz/fuzz_input.h"
#include "tools/qonvert/command_words.h"
#include "tools/qonvert/convert_options.h"
#include "tools/qonvert/verbs.h"

namespace {

using namespace qonvert;
using zorvan::fuzz::Require;

// The whole program, and the options of "convert", which it keeps to itself.
struct Parsers {
    Parsers() {
        program.require_subcommand(1);
        AddConvertVerb(program, session);
        AddInfoVerb(program, session);
        AddCompareVerb(program, session);
        AddValidateVerb(program, session);
        AddFormatsVerb(program, session);
        AddConvertOptions(convert, arguments);
        convert.add_flag("--json");
    }

    Session session;
    CLI::App program;
    ConvertArguments arguments;
    CLI::App convert;
};

bool Parses(CLI::App& app, const std::vector<std::string>& words) {
    try {
        app.parse(CommandWords(words));
        return true;
    } catch (const CLI::ParseError& error) {
        Require(error.get_exit_code() == 0 || *error.what() != '\0');
        return false;
    }
}

void RequireSound(const ConvertOptions& options, const std::vector<Job>& jobs) {
    Require(options.threads >= 1 && options.threads <= 256);
    Require(!options.format || (*options.format >= 1 && *options.format <= FMT_L32));
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    options.scale.Apply(100, 1, width, height);
    Require(width >= 1 && height >= 1);
    for (const Job& job : jobs) {
        Require(!job.out.empty());
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A list of files may be asked for from here.
    Require(std::freopen("/dev/null", "r", stdin) != nullptr);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Parsers parsers;
    std::vector<std::string> words = zorvan::fuzz::WordsOf({reinterpret_cast<const char*>(data), size});
    parsers.session.run = nullptr;
    const bool parsed = Parses(parsers.program, words);
    Require(parsed == (parsers.session.run != nullptr));
    if (words.empty() || words.front() != "convert") {
        return 0;
    }
    words.erase(words.begin());
    parsers.arguments = {};
    if (!Parses(parsers.convert, words)) {
        return 0;
    }
    try {
        const ConvertOptions options = ResolveOptions(parsers.arguments);
        RequireSound(options, ResolveJobs(parsers.arguments, options));
    } catch (const ToolError& error) {
        Require(error.code() == ExitCode::kUsage || error.code() == ExitCode::kIo);
    }
    return 0;
}
