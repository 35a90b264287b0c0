// qonvert compare: how much two textures differ.
#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <memory>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/qonvert/difference.h"
#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/verbs.h"

namespace qonvert {

namespace {

struct CompareOptions {
    std::string a;
    std::string b;
    std::string raw;
    std::optional<double> minPsnr;
    std::string diff;
    bool overwrite = false;
};

LoadedTexture Load(const std::string& path, const CompareOptions& options, const Session& session) {
    ReadOptions read;
    read.deepSamples = DeepSamples::kFloat;
    if (!options.raw.empty()) {
        ParseRaw(options.raw, read);
    }
    Findings findings;
    LoadedTexture loaded;
    LoadTexture(path, "", read, findings, loaded);
    for (const Finding& finding : findings) {
        session.Warn(InputName(path) + ": " + finding.Describe());
    }
    return loaded;
}

Picture Base(const TextureFile& texture) {
    return {texture.format, texture.width, texture.height, texture.levels.front()};
}

void WriteDifference(const CompareOptions& options, const Difference& difference, const TextureFile& size) {
    TextureFile picture;
    picture.format = FMT_RGB888;
    picture.width = size.width;
    picture.height = size.height;
    picture.levels.push_back(difference.picture);
    WriteFile(options.diff, WriteContainer(*FindContainer("png"), picture, {}), options.overwrite);
}

ExitCode ReportSizes(const Session& session, const TextureFile& a, const TextureFile& b) {
    const auto text = [](const TextureFile& t) {
        return std::to_string(t.width) + " x " + std::to_string(t.height);
    };
    if (session.json) {
        session.Print({{"equal", false}, {"sizes", {text(a), text(b)}}});
    } else {
        session.text() << "sizes differ: " << text(a) << " and " << text(b) << '\n';
    }
    return ExitCode::kDiffers;
}

ExitCode RunCompare(Session& session, const CompareOptions& options) try {
    if (IsStandardStream(options.a) && IsStandardStream(options.b)) {
        throw ToolError(ExitCode::kUsage, "only one of the files can be standard input");
    }
    if (options.minPsnr && std::isnan(*options.minPsnr)) {
        throw ToolError(ExitCode::kUsage, "--min-psnr takes a number of dB; got nan");
    }
    session.streamsData = IsStandardOutput(options.diff);
    if (!options.diff.empty()) {
        CheckWritable(options.diff, options.overwrite);
    }
    const LoadedTexture a = Load(options.a, options, session);
    const LoadedTexture b = Load(options.b, options, session);
    if (a.texture.width != b.texture.width || a.texture.height != b.texture.height) {
        return ReportSizes(session, a.texture, b.texture);
    }
    const Difference difference = Measure(Base(a.texture), Base(b.texture), !options.diff.empty());
    if (!options.diff.empty()) {
        WriteDifference(options, difference, a.texture);
    }
    const bool good =
        options.minPsnr ? difference.together.psnr(difference.peak) >= *options.minPsnr : difference.equal();
    if (session.json) {
        nlohmann::ordered_json json = ToJson(difference);
        json["passed"] = good;
        session.Print(json);
    } else {
        session.text() << (difference.equal() ? "equal; " : "") << ToText(difference) << '\n';
        if (!good && options.minPsnr) {
            session.text() << "below --min-psnr " << *options.minPsnr << '\n';
        }
    }
    return good ? ExitCode::kOk : ExitCode::kDiffers;
} catch (const std::bad_alloc&) {
    throw ToolError(ExitCode::kRuntime,
                    InputName(options.a) + ", " + InputName(options.b) + ": out of memory");
}

}  // namespace

void AddCompareVerb(CLI::App& program, Session& session) {
    auto options = std::make_shared<CompareOptions>();
    CLI::App* verb = AddVerb(program, session, "compare", "Measure how much two textures differ",
                             [&session, options] { return RunCompare(session, *options); });
    verb->add_option("A", options->a, "Texture file, - for standard input")->required();
    verb->add_option("B", options->b, "Texture file, - for standard input")->required();
    verb->add_option("--min-psnr", options->minPsnr, "Succeed when the PSNR together is at least this, in dB")
        ->type_name("DB");
    verb->add_option("--diff", options->diff,
                     "Write a PNG of the differences, each colour channel the larger of its own and alpha's")
        ->type_name("PNG");
    verb->add_option("--raw", options->raw, "Size and format of headerless files")->type_name("WxH:FORMAT");
    verb->add_flag("--overwrite", options->overwrite, "Replace an existing difference picture");
    verb->footer(std::string(kPsnrHelp) +
                 "\nLevel 0 is compared, as it lies in the file: the origin is not looked at.\n"
                 "Exit code 0 when equal (or at least --min-psnr), else 7.\n"
                 "Example:\n  qonvert compare leaf.png leaf.ktx --min-psnr 35 --diff leaf-diff.png");
}

}  // namespace qonvert
