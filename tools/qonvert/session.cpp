#include "tools/qonvert/session.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

namespace qonvert {

std::ostream& Session::text() const {
    return streamsData ? std::cerr : std::cout;
}

void Session::Warn(const std::string& line) const {
    // Whole, as memory may lack for a part.
    const std::string text = "qonvert: " + Printable(line) + '\n';
    std::cerr << text;
}

void Session::Print(const nlohmann::ordered_json& value) const {
    // Paths may hold bytes that are no UTF-8.
    text() << tools::PrintableJson(value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace))
           << '\n';
}

CLI::App* AddVerb(CLI::App& program, Session& session, const char* name, const char* description,
                  std::function<ExitCode()> run) {
    CLI::App* verb = program.add_subcommand(name, description);
    verb->add_flag("--json", session.json, "Print the result as JSON");
    verb->callback([&session, run = std::move(run)] { session.run = run; });
    return verb;
}

nlohmann::ordered_json ToJson(const Finding& finding) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["number"] = static_cast<int>(finding.number);
    json["severity"] = finding.severity() == Severity::kError ? "error" : "warning";
    json["subject"] = finding.subject;
    json["got"] = finding.got;
    json["expected"] = finding.expected;
    return json;
}

nlohmann::ordered_json ToJson(const Findings& findings) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        json.push_back(ToJson(finding));
    }
    return json;
}

}  // namespace qonvert
