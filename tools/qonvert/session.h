// What the program's verbs share: the verb to run, and where text goes.
#pragma once

#include <functional>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/common/printable.h"
#include "tools/qonvert/finding.h"

namespace CLI {
class App;
}

namespace qonvert {

using tools::Printable;

struct Session {
    bool json = false;
    // Standard output carries a file, so that text goes to standard error.
    bool streamsData = false;
    // Set by the verb that the command line names.
    std::function<ExitCode()> run;

    std::ostream& text() const;
    // One line per problem on standard error, made printable.
    void Warn(const std::string& line) const;
    // Values that grow start as objects or arrays: the JSON library turns null into one before it has the
    // memory, and falls over it without.
    void Print(const nlohmann::ordered_json& json) const;
};

// A verb of the program: its options, help and --json. `run` becomes the session's when it is named.
CLI::App* AddVerb(CLI::App& program, Session& session, const char* name, const char* description,
                  std::function<ExitCode()> run);

nlohmann::ordered_json ToJson(const Finding& finding);
nlohmann::ordered_json ToJson(const Findings& findings);

}  // namespace qonvert
