#include <CLI/CLI.hpp>
#include <new>
#include <numeric>

#include "tools/common/printable.h"
#include "tools/common/progress.h"
#include "tools/zorvan/census.h"
#include "tools/zorvan/draw_counter.h"
#include "tools/zorvan/report.h"
#include "tools/zorvan/stage.h"
#include "tools/zorvan/verb.h"

namespace zorvan::tool {
namespace {

constexpr char const* kFooter =
    "Examples:\n"
    "  zorvan bench crowd.json\n"
    "  zorvan bench crowd.json --frames 500 --size 1920x1080 --json\n"
    "\n"
    "Frame times run from clearing until GL has finished; reading back and writing files are not in them.\n"
    "The first frames, which build programs and upload textures, are drawn but not counted.";

constexpr uint32_t kWarmUpFrames = 5;
constexpr uint32_t kFramesPerSecond = 60;

struct BenchOptions {
    StageOptions stage;
    uint32_t frames = 200;
    bool json = false;
};

struct Rates {
    uint32_t sprites = 0;
    double spritesPerSecond = 0;
    double drawsPerSecond = 0;
};

FrameFigures Measure(BenchOptions const& options, Stage& stage) {
    FrameFigures figures;
    tools::Progress progress(options.frames);
    for (uint32_t i = 0; i < kWarmUpFrames + options.frames; ++i) {
        const uint64_t callsBefore = DrawCallCount();
        const FrameTimes times =
            stage.Draw(RealFixed::FromRaw(static_cast<int32_t>(int64_t{i} * 65536 / kFramesPerSecond)));
        if (i >= kWarmUpFrames) {
            figures.Add(times, DrawCallCount() - callsBefore);
            progress.Step(options.stage.scene);
        }
    }
    return figures;
}

void PrintText(BenchOptions const& options, Rates const& rates, Stage const& stage,
               FrameFigures const& figures) {
    std::printf("%s: %s, %u sprites, %u frames\n", tools::Printable(options.stage.scene).c_str(),
                ToText(stage.GetSize()).c_str(), rates.sprites, options.frames);
    constexpr struct {
        char const* name;
        std::vector<double> FrameFigures::*values;
    } kRows[] = {{"frame", &FrameFigures::total},
                 {"update", &FrameFigures::update},
                 {"render", &FrameFigures::render}};
    for (auto const& row : kRows) {
        std::printf("  %-8s median %8.3f ms   p95 %8.3f ms\n", row.name, Median(figures.*row.values),
                    Percentile(figures.*row.values, 0.95));
    }
    std::printf("  %.0f sprites/s, %.0f draws/s\n", rates.spritesPerSecond, rates.drawsPerSecond);
}

void PrintJson(BenchOptions const& options, Rates const& rates, Stage const& stage,
               FrameFigures const& figures) {
    Json json = {{"scene", options.stage.scene},     {"width", stage.GetSize().width},
                 {"height", stage.GetSize().height}, {"frames", options.frames},
                 {"sprites", rates.sprites},         {"sprites_per_second", rates.spritesPerSecond},
                 {"draw_calls", figures.drawCalls},  {"draws_per_second", rates.drawsPerSecond}};
    AppendTimes(json, figures);
    Print(json, stdout);
}

Status Bench(BenchOptions const& options) try {
    Result<std::unique_ptr<Stage>> stage = Stage::Open(options.stage);
    if (!stage) {
        return stage.GetFailure();
    }
    const FrameFigures figures = Measure(options, **stage);
    const double seconds = std::accumulate(figures.total.begin(), figures.total.end(), 0.0) / 1000;
    Rates rates;
    rates.sprites = CountNodes(*(*stage)->GetLoaded().GetScene().root).sprites;
    rates.spritesPerSecond = double{1} * rates.sprites * options.frames / seconds;
    rates.drawsPerSecond = static_cast<double>(figures.drawCalls) / seconds;
    (options.json ? PrintJson : PrintText)(options, rates, **stage, figures);
    return std::nullopt;
} catch (std::bad_alloc const&) {
    return NoMemoryFor(options.stage.scene);
}

}  // namespace

Verb AddBenchVerb(CLI::App& program) {
    CLI::App* command = program.add_subcommand("bench", "Measures how fast a scene updates and renders");
    auto options = std::make_shared<BenchOptions>();
    command->add_option("SCENE", options->stage.scene, "Scene file (JSON)")->required();
    command->add_option("--frames", options->frames, "Number of frames, 1 to 100000; default 200")
        ->check(CLI::Range(1, 100000));
    options->stage.AddTo(*command);
    command->add_flag("--json", options->json, "Print the figures as JSON");
    command->footer(kFooter);
    return {command, [options] { return Bench(*options); }};
}

}  // namespace zorvan::tool
