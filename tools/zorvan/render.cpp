#include <unistd.h>

#include <CLI/CLI.hpp>
#include <new>

#include "texfile/output_target.h"
#include "tools/common/printable.h"
#include "tools/common/progress.h"
#include "tools/zorvan/draw_counter.h"
#include "tools/zorvan/film_output.h"
#include "tools/zorvan/frame_output.h"
#include "tools/zorvan/interruption.h"
#include "tools/zorvan/node_places.h"
#include "tools/zorvan/report.h"
#include "tools/zorvan/sheet_output.h"
#include "tools/zorvan/stage.h"
#include "tools/zorvan/verb.h"

namespace zorvan::tool {
namespace {

constexpr char const* kFooter =
    "Examples:\n"
    "  zorvan render hello.json hello.png\n"
    "  zorvan render crowd.json out_%04d.png --frames 0..59 --fps 30\n"
    "  zorvan render crowd.json crowd.mp4 --frames 0..299\n"
    "  zorvan render crowd.json sheet.png --frames 0..299 --sheet 4x3 --size 320x180\n"
    "  zorvan render crowd.json - --frames 0..299 | ffmpeg -i - crowd.mkv\n"
    "  zorvan render hello.json hello.png --size 1280x800 --supersample 2 --background '#203040'\n"
    "  zorvan render hello.json hello.png --json\n"
    "  zorvan render hello.json sun.png --area 300,40,256x256 --locate sun\n"
    "\n"
    "Frame N shows the scene at the time T + N / FPS. OUT is a PNG file, a name with %d or %04d for the\n"
    "frame's number, a film (.gif, .mp4, .webm; made by the program ffmpeg), or - for raw frames on "
    "standard\n"
    "output (everything else then goes to standard error). A sheet spreads its cells over the frames.";

struct RenderOptions {
    StageOptions stage;
    std::string out;
    FrameRange frames;
    uint32_t framesPerSecond = 30;
    RealFixed time;
    std::optional<RawFormat> raw;
    std::optional<SheetGrid> sheet;
    std::optional<RectangleT<int>> area;
    std::vector<std::string> located;  // names or paths of nodes
    bool json = false;
    bool glInfo = false;
};

bool ToStream(RenderOptions const& options) {
    return options.out == "-";
}

// Time of a frame as a raw 16.16 number of seconds, which may be too large for one.
int64_t RawTimeOf(RenderOptions const& options, uint32_t frame) {
    const int64_t rate = options.framesPerSecond;
    return options.time.raw + (int64_t{frame} * 65536 + rate / 2) / rate;
}

Status CheckOptions(RenderOptions const& options) {
    if (options.raw && !ToStream(options)) {
        return Failure{ExitCode::Usage,
                       "--raw: got the file " + options.out + " as output, expected - (standard output)"};
    }
    if (ToStream(options) && isatty(STDOUT_FILENO) == 1) {
        return Failure{ExitCode::Usage, "standard output: got a terminal, expected a file or a pipe"};
    }
    if (options.sheet && (ToStream(options) || IsFilmName(options.out))) {
        return Failure{ExitCode::Usage, "--sheet: got the output " + options.out + ", expected a PNG file"};
    }
    const int64_t last = RawTimeOf(options, options.frames.last);
    if (last > INT32_MAX) {
        return Failure{ExitCode::Usage, "--frames: got a last frame at " + std::to_string(last / 65536) +
                                            " seconds, expected at most 32767"};
    }
    return std::nullopt;
}

Status DrawFrames(RenderOptions const& options, Stage& stage, FrameOutput& output, FrameFigures& figures,
                  NodePlaces& places) {
    const SheetGrid all{options.frames.Count(), 1};
    const std::vector<uint32_t> numbers = SheetFrames(options.frames, options.sheet.value_or(all));
    tools::Progress progress(numbers.size());
    for (uint32_t number : numbers) {
        const uint64_t callsBefore = DrawCallCount();
        const FrameTimes times =
            stage.Draw(RealFixed::FromRaw(static_cast<int32_t>(RawTimeOf(options, number))));
        figures.Add(times, DrawCallCount() - callsBefore);
        places.Record(number, options.stage.supersample);
        Result<Image> frame = options.area ? stage.ReadArea(*options.area) : stage.Read();
        if (!frame) {
            return frame.GetFailure();
        }
        if (Status failure = output.Write(number, *frame)) {
            return failure;
        }
        if (Status interruption = CheckInterruption()) {
            return interruption;
        }
        progress.Step(options.out);
    }
    return output.Finish();
}

void PrintJson(RenderOptions const& options, Stage& stage, FrameFigures const& figures,
               NodePlaces const& places, std::FILE* stream) {
    Json json = {{"scene", options.stage.scene},   {"output", options.out},
                 {"width", stage.GetSize().width}, {"height", stage.GetSize().height},
                 {"frames", figures.total.size()}, {"fps", options.framesPerSecond}};
    AppendTimes(json, figures);
    json["draw_calls"] = figures.drawCalls;
    json["texture_bytes"] = stage.GetLoaded().GetTextureBytes();
    if (!places.IsEmpty()) {
        json["places"] = places.ToJson();
    }
    if (options.glInfo) {
        for (auto const& [name, text] : stage.DescribeGl()) {
            json["gl"][name] = text;
        }
    }
    Print(json, stream);
}

void PrintText(RenderOptions const& options, Stage& stage, FrameFigures const& figures,
               NodePlaces const& places, std::FILE* stream) {
    places.Print(stream);
    if (options.glInfo) {
        for (auto const& [name, text] : stage.DescribeGl()) {
            std::fprintf(stream, "%-12s %s\n", name.c_str(), text.c_str());
        }
    }
    const size_t frames = figures.total.size();
    std::fprintf(stream, "%s: %s, %zu frame%s, %llu draw calls, median %.2f ms, p95 %.2f ms\n",
                 ToStream(options) ? "standard output" : tools::Printable(options.out).c_str(),
                 ToText(stage.GetSize()).c_str(), frames, frames == 1 ? "" : "s",
                 static_cast<unsigned long long>(figures.drawCalls), Median(figures.total),
                 Percentile(figures.total, 0.95));
}

Result<std::unique_ptr<FrameOutput>> MakeOutput(RenderOptions const& options) {
    if (ToStream(options)) {
        return MakeStreamOutput(options.raw.value_or(RawFormat::Y4m), options.framesPerSecond);
    }
    if (options.sheet) {
        return MakeSheetOutput(options.out, *options.sheet);
    }
    return IsFilmName(options.out) ? MakeFilmOutput(options.out, options.framesPerSecond)
                                   : MakePngOutput(options.out, options.frames);
}

Status Render(RenderOptions const& options) try {
    if (Status failure = CheckOptions(options)) {
        return failure;
    }
    Result<std::unique_ptr<FrameOutput>> output = MakeOutput(options);
    if (!output) {
        return output.GetFailure();
    }
    Result<std::unique_ptr<Stage>> stage = Stage::Open(options.stage);
    if (!stage) {
        return stage.GetFailure();
    }
    // A stream has nothing to clean up.
    if (!ToStream(options)) {
        NoteSignals();
    }
    NodePlaces places;
    for (std::string const& node : options.located) {
        if (Status failure = places.Follow(*(*stage)->GetLoaded().GetScene().root, node)) {
            return failure;
        }
    }
    FrameFigures figures;
    if (Status failure = DrawFrames(options, **stage, **output, figures, places)) {
        // An output that a signal broke off failed for that reason, whatever it says.
        const Status interruption = CheckInterruption();
        return interruption ? interruption : failure;
    }
    const auto print = options.json ? PrintJson : PrintText;
    // Not among frames, whatever their name for standard output is.
    const bool taken = ToStream(options) || texfile::NamedDescriptor(options.out) == STDOUT_FILENO;
    print(options, **stage, figures, places, taken ? stderr : stdout);
    return std::nullopt;
} catch (std::bad_alloc const&) {
    return NoMemoryFor(options.stage.scene);
}

}  // namespace

Verb AddRenderVerb(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("render", "Draws frames of a scene into PNG files, a film or a stream");
    auto options = std::make_shared<RenderOptions>();
    command->add_option("SCENE", options->stage.scene, "Scene file (JSON)")->required();
    command->add_option("OUT", options->out, "PNG file, name with %04d, film, or -")->required();
    AddValue(*command, "--frames", options->frames, "A..B, or one frame number; default 0");
    command->add_option("--fps", options->framesPerSecond, "Frames per second, 1 to 1000; default 30")
        ->check(CLI::Range(1, 1000));
    AddValue(*command, "--time", options->time, "Time of frame 0, in seconds; default 0");
    AddValue(*command, "--raw", options->raw,
             "rgba or y4m: layout of frames on standard output; default y4m");
    AddValue(*command, "--sheet", options->sheet, "COLUMNSxROWS: a contact sheet, one PNG file");
    AddValue(*command, "--area", options->area,
             "X,Y,WIDTHxHEIGHT: this part of the picture only, in pixels from its top left, without alpha");
    command->add_option("--locate", options->located,
                        "Name or path of a node: tell where its zero point lies in each frame; repeatable");
    options->stage.AddTo(*command);
    command->add_flag("--json", options->json, "Print statistics as JSON");
    command->add_flag("--gl-info", options->glInfo, "Tell which EGL, GL and plug-in are at work");
    command->footer(kFooter);
    return {command, [options] { return Render(*options); }, [options] { return CheckOptions(*options); }};
}

}  // namespace zorvan::tool
