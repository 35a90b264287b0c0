// qonvert convert: textures into other formats, sizes and containers.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/common/progress.h"
#include "tools/qonvert/convert_file.h"
#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/parallel.h"
#include "tools/qonvert/verbs.h"

namespace qonvert {

namespace {

// Files side by side; where there are fewer files than threads, each gets its share of them.
std::vector<Outcome> ConvertAll(const std::vector<Job>& jobs, const ConvertOptions& options) {
    std::vector<Outcome> outcomes(jobs.size());
    const auto files = static_cast<unsigned>(std::min<std::size_t>(jobs.size(), options.threads));
    const unsigned perFile = std::max(options.threads / std::max(files, 1u), 1u);
    std::atomic<bool> failed{false};
    tools::Progress progress(jobs.size());
    ParallelFor(jobs.size(), files, [&](std::size_t i) {
        if (failed && !options.keepGoing) {
            return;
        }
        outcomes[i] = ConvertFile(jobs[i], options, perFile);
        if (outcomes[i].code != ExitCode::kOk) {
            failed = true;
        }
        progress.Step(jobs[i].in);
    });
    return outcomes;
}

nlohmann::ordered_json ToJson(const Job& job, const Outcome& outcome) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["in"] = job.in;
    json["out"] = job.out;
    if (outcome.skipped) {
        json["skipped"] = true;
    } else if (outcome.code != ExitCode::kOk) {
        json["error"] = {{"exit", static_cast<int>(outcome.code)}, {"message", outcome.error}};
    } else {
        json["container"] = outcome.container;
        json["format"] = FormatName(outcome.format);
        json["width"] = outcome.width;
        json["height"] = outcome.height;
        json["levels"] = outcome.levels;
        json["bytes"] = outcome.bytes;
        if (outcome.report) {
            json["report"] = qonvert::ToJson(*outcome.report);
        }
    }
    json["warnings"] = outcome.warnings;
    return json;
}

void PrintText(const Session& session, const Job& job, const Outcome& outcome) {
    if (outcome.skipped || outcome.code != ExitCode::kOk) {
        return;
    }
    session.text() << Printable(job.in + " -> " + job.out) << ": " << FormatName(outcome.format) << ", "
                   << outcome.width << " x " << outcome.height << ", " << outcome.levels
                   << (outcome.levels == 1 ? " level, " : " levels, ") << outcome.bytes << " bytes\n";
    if (outcome.report) {
        session.text() << "  " << ToText(*outcome.report) << '\n';
    }
}

ExitCode PrintOutcomes(const Session& session, const std::vector<Job>& jobs,
                       const std::vector<Outcome>& outcomes) {
    ExitCode code = ExitCode::kOk;
    std::size_t converted = 0;
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["files"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const Outcome& outcome = outcomes[i];
        for (const std::string& warning : outcome.warnings) {
            session.Warn(InputName(jobs[i].in) + ": " + warning);
        }
        if (!outcome.error.empty()) {
            session.Warn(outcome.error);
        }
        if (code == ExitCode::kOk) {
            code = outcome.code;
        }
        converted += !outcome.skipped && outcome.code == ExitCode::kOk ? 1 : 0;
        if (session.json) {
            json["files"].push_back(ToJson(jobs[i], outcome));
        } else {
            PrintText(session, jobs[i], outcome);
        }
    }
    if (session.json) {
        json["converted"] = converted;
        json["failed"] = jobs.size() - converted;
        session.Print(json);
    } else if (jobs.size() > 1) {
        session.text() << converted << " of " << jobs.size() << " files converted\n";
    }
    return code;
}

ExitCode RunConvert(Session& session, const ConvertArguments& arguments) {
    const ConvertOptions options = ResolveOptions(arguments);
    const std::vector<Job> jobs = ResolveJobs(arguments, options);
    session.streamsData = jobs.size() == 1 && IsStandardOutput(jobs.front().out);
    if (!arguments.outDir.empty()) {
        std::error_code error;
        std::filesystem::create_directories(arguments.outDir, error);
        if (error) {
            throw ToolError(ExitCode::kIo, arguments.outDir + ": " + error.message());
        }
    }
    return PrintOutcomes(session, jobs, ConvertAll(jobs, options));
}

}  // namespace

void AddConvertVerb(CLI::App& program, Session& session) {
    auto arguments = std::make_shared<ConvertArguments>();
    CLI::App* verb = AddVerb(program, session, "convert", "Convert textures: IN OUT, or IN... --out-dir DIR",
                             [&session, arguments] { return RunConvert(session, *arguments); });
    AddConvertOptions(*verb, *arguments);
    verb->footer(
        "Without --format the output has the input's format, or where its container cannot carry that, "
        "RGBA8888\n"
        "or RGB888 (pkm: ETC1_RGB8). A level that needs no change is copied as it is. The container comes "
        "from\n"
        "the output's extension or --container (ktx for --out-dir).\n"
        "Examples:\n"
        "  qonvert convert leaf.png leaf.ktx --format atitc_rgba_explicit --mips --report\n"
        "  qonvert convert bricks.png bricks-n.ktx --normal-map sobel --strength 2 --wrap --format rgb888\n"
        "  qonvert convert *.png --out-dir textures --container dds --format ati2 --keep-going\n"
        "  qonvert convert leaf.ktx - --container png --scale 50% > small.png");
}

}  // namespace qonvert
