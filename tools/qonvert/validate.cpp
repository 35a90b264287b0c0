// qonvert validate: every problem of a texture file, numbered.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/qonvert/files.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/verbs.h"

namespace qonvert {

namespace {

struct ValidateOptions {
    std::string file;
    std::string container;
    std::string raw;
};

// All findings: the warnings up to the error, if there is one.
Findings Check(const ValidateOptions& options, std::string& containerName) {
    ReadOptions read;
    if (!options.raw.empty()) {
        ParseRaw(options.raw, read);
    }
    Findings findings;
    LoadedTexture loaded;
    try {
        LoadTexture(options.file, options.container, read, findings, loaded);
    } catch (const FileError& error) {
        findings.push_back(error.finding());
    }
    containerName = loaded.container != nullptr ? loaded.container->name : "";
    return findings;
}

ExitCode RunValidate(const Session& session, const ValidateOptions& options) {
    std::string container;
    const Findings findings = Check(options, container);
    const auto error = std::find_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity() == Severity::kError;
    });
    const std::string path = InputName(options.file);
    if (session.json) {
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        json["file"] = path;
        json["container"] = container;
        json["valid"] = error == findings.end();
        json["findings"] = ToJson(findings);
        session.Print(json);
    } else {
        for (const Finding& finding : findings) {
            session.text() << Printable(path + ": " + finding.Describe()) << '\n';
        }
        if (error == findings.end()) {
            session.text() << Printable(path) << ": valid " << container << '\n';
        }
    }
    return error == findings.end() ? ExitCode::kOk : error->exitCode();
}

}  // namespace

void AddValidateVerb(CLI::App& program, Session& session) {
    auto options = std::make_shared<ValidateOptions>();
    CLI::App* verb = AddVerb(program, session, "validate", "List the problems of a texture file",
                             [&session, options] { return RunValidate(session, *options); });
    verb->add_option("FILE", options->file, "Texture file, - for standard input")->required();
    verb->add_option("--container", options->container, "Container that the file should be");
    verb->add_option("--raw", options->raw, "Size and format of a headerless file")->type_name("WxH:FORMAT");
    verb->footer(
        "Errors 1xx end with exit code 3 (damaged), 2xx with 5 (not supported); warnings 3xx with 0.\n"
        "Example:\n  qonvert validate leaf.ktx");
}

}  // namespace qonvert
