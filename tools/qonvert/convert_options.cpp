#include "tools/qonvert/convert_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <thread>

#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/parse.h"

namespace qonvert {

namespace {

constexpr unsigned kMostThreads = 256;
constexpr double kMostPercent = 100000;
constexpr double kMostStrength = 1000;
constexpr std::uint64_t kMostListBytes = std::uint64_t{16} << 20;

// Words of an option and what they stand for.
template <typename T>
using Choices = std::map<std::string, T>;

const Choices<std::uint32_t> kFilters = {{"box", 0}, {"point", 1}, {"four", 3}, {"cubic", 4}};
const Choices<std::uint32_t> kKernels = {{"diagonal", 1}, {"sobel", 2}, {"prewitt", 3}};
const Choices<Origin> kOrigins = {{"top-left", Origin::kTopLeft}, {"bottom-left", Origin::kBottomLeft}};
const Choices<DdsNames> kDdsNames = {
    {"ati", DdsNames::kAti}, {"bc", DdsNames::kBc}, {"dx10", DdsNames::kDx10}};

[[noreturn]] void Misuse(const std::string& message) {
    throw ToolError(ExitCode::kUsage, message);
}

template <typename T>
std::vector<std::string> Keys(const Choices<T>& choices) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : choices) {
        keys.push_back(key);
    }
    return keys;
}

Scale ParseScale(const std::string& text) {
    Scale scale;
    double percent = 0;
    if (text.ends_with('%') && ParseNumber(std::string_view(text).substr(0, text.size() - 1), percent) &&
        percent > 0 && percent <= kMostPercent) {
        scale.factor = percent / 100;
        return scale;
    }
    if (!ParseSize(text, scale.width, scale.height)) {
        Misuse("--scale takes WxH or N%, for example 64x64 or 50%; got \"" + text + "\"");
    }
    return scale;
}

std::uint32_t ParseLevels(const std::string& text) {
    std::uint32_t levels = 0;
    if (text == "all") {
        return UINT32_MAX;
    }
    if (!ParseNumber(text, levels) || levels == 0) {
        Misuse("--mips takes a number of levels from 1; got \"" + text + "\"");
    }
    return levels;
}

std::int32_t ParseStrength(double strength) {
    const auto tenths =
        static_cast<std::int32_t>(std::lround(std::clamp(strength, -kMostStrength, kMostStrength) * 10));
    if (tenths == 0 || !(std::abs(strength) <= kMostStrength)) {
        Misuse("--strength takes 0.1 to 1000, or as much below 0, in steps of 0.1");
    }
    return tenths;
}

Steps ResolveSteps(const ConvertArguments& arguments) {
    Steps steps;
    steps.mirrorX = arguments.mirrorX;
    steps.flipY = arguments.flipY;
    steps.fastCompress = arguments.fast;
    steps.filter = kFilters.at(arguments.filter);
    if (!arguments.normalMap.empty()) {
        steps.normalMap = kKernels.at(arguments.normalMap);
        steps.strengthTenths = ParseStrength(arguments.strength);
        steps.wrap = arguments.wrap;
    }
    return steps;
}

// Lines of a list file; empty ones are left out.
std::vector<std::string> ReadList(const std::string& path) {
    const Bytes bytes = ReadSmallFile(path, kMostListBytes);
    std::vector<std::string> lines(1);
    for (const std::uint8_t byte : bytes) {
        if (byte == '\n') {
            lines.emplace_back();
        } else if (byte != '\r') {
            lines.back() += static_cast<char>(byte);
        }
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (const texfile::IoError error = texfile::CheckName(lines[i])) {
            throw ToolError(ExitCode::kIo,
                            InputName(path) + ": line " + std::to_string(i + 1) + ": " + error.Text());
        }
    }
    std::erase(lines, "");
    return lines;
}

std::vector<std::string> ExpandLists(const std::vector<std::string>& paths) {
    std::vector<std::string> expanded;
    for (const std::string& path : paths) {
        if (path.starts_with('@')) {
            for (std::string& line : ReadList(path.substr(1))) {
                expanded.push_back(std::move(line));
            }
        } else {
            expanded.push_back(path);
        }
    }
    return expanded;
}

std::vector<Job> JobsIntoDirectory(const std::vector<std::string>& inputs, const std::string& directory,
                                   const ConvertOptions& options) {
    const Container& container = options.container != nullptr ? *options.container : *FindContainer("ktx");
    std::map<std::string, std::string> taken;
    std::vector<Job> jobs;
    for (const std::string& in : inputs) {
        if (IsStandardStream(in)) {
            Misuse("standard input has no name for a directory; give an output file");
        }
        const std::filesystem::path name = std::filesystem::path(in).stem();
        const std::string out = (std::filesystem::path(directory) / name).string() + "." +
                                std::string(container.extensions.front());
        const auto [other, isNew] = taken.emplace(out, in);
        if (!isNew) {
            Misuse(other->second + " and " + in + " would both become " + out);
        }
        jobs.push_back({in, out});
    }
    return jobs;
}

// False where there is nothing. Throws ToolError (I/O) where nothing can be.
bool IsDirectory(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_type type = std::filesystem::status(path, error).type();
    if (type == std::filesystem::file_type::none) {
        throw ToolError(ExitCode::kIo, path + ": " + error.message());
    }
    return type == std::filesystem::file_type::directory;
}

}  // namespace

void Scale::Apply(std::uint32_t sourceWidth, std::uint32_t sourceHeight, std::uint32_t& toWidth,
                  std::uint32_t& toHeight) const {
    const auto side = [this](std::uint32_t source) {
        const double scaled = std::clamp(std::round(source * factor), 1.0, static_cast<double>(UINT32_MAX));
        return static_cast<std::uint32_t>(scaled);
    };
    toWidth = width != 0 ? width : side(sourceWidth);
    toHeight = height != 0 ? height : side(sourceHeight);
}

void AddConvertOptions(CLI::App& verb, ConvertArguments& arguments) {
    verb.add_option("paths", arguments.paths,
                    "Inputs and the output; - is standard input or output, @FILE a list of inputs")
        ->option_text("IN... OUT");
    verb.add_option("-f,--format", arguments.format, "Pixel format, see \"qonvert formats\"")
        ->type_name("NAME");
    verb.add_option("--container", arguments.container, "Container of the output: png, ktx, dds, pkm or raw")
        ->type_name("NAME");
    CLI::Option* scale =
        verb.add_option("-s,--scale", arguments.scale, "Size of the result")->type_name("WxH|N%");
    verb.add_option("--filter", arguments.filter, "Filter of --scale")
        ->check(CLI::IsMember(Keys(kFilters)))
        ->needs(scale);
    verb.add_flag("--mirror-x", arguments.mirrorX, "Mirror left and right");
    verb.add_flag("--flip-y", arguments.flipY, "Move the rows top to bottom and record the other origin");
    verb.add_option("--assign-origin", arguments.origin, "Record this origin without moving pixels")
        ->check(CLI::IsMember(Keys(kOrigins)));
    CLI::Option* normal =
        verb.add_option("--normal-map", arguments.normalMap, "Turn heights into normals with this kernel")
            ->check(CLI::IsMember(Keys(kKernels)));
    verb.add_option("--strength", arguments.strength, "Strength of the slopes, 1 is as they are")
        ->needs(normal);
    verb.add_flag("--wrap", arguments.wrap, "Wrap heights around the edges")->needs(normal);
    verb.add_flag("--fast", arguments.fast, "Fast encoder of ATITC_RGB and ATITC_RGBA_EXPLICIT");
    verb.add_option("-m,--mips", arguments.mips, "Build all mip levels, or N of them")->type_name("[N]");
    verb.add_option("--raw", arguments.raw, "Size and format of headerless inputs")->type_name("WxH:FORMAT");
    verb.add_option("-o,--out-dir", arguments.outDir, "Write each input under its name into this directory")
        ->type_name("DIR");
    verb.add_option("--dds-names", arguments.ddsNames, "How DDS names formats: ATI1/ATI2, BC4U/BC5U or DX10")
        ->check(CLI::IsMember(Keys(kDdsNames)));
    verb.add_flag("--ktx-amd-tokens", arguments.ktxAmdTokens,
                  "Write 3Dc to KTX with the AMD tokens, not RGTC");
    verb.add_flag("--png16", arguments.png16, "Write float formats to PNG with 16 bits, cut to 0..1");
    verb.add_flag("-k,--keep-going", arguments.keepGoing, "Go on after an input that fails");
    verb.add_flag("-r,--report", arguments.report, "Measure what encoding lost");
    verb.add_flag("--overwrite", arguments.overwrite, "Replace existing files");
    verb.add_option("-j,--threads", arguments.threads,
                    "Threads, 0 for all; the result is the same for every number")
        ->type_name("N");
}

ConvertOptions ResolveOptions(const ConvertArguments& arguments) {
    ConvertOptions options;
    if (!arguments.format.empty()) {
        options.format = ParseFormat(arguments.format);
    }
    if (!arguments.container.empty()) {
        options.container = &NamedContainer(arguments.container);
    }
    if (!arguments.scale.empty()) {
        options.scale = ParseScale(arguments.scale);
    }
    options.steps = ResolveSteps(arguments);
    if (!arguments.origin.empty()) {
        options.origin = kOrigins.at(arguments.origin);
    }
    if (!arguments.mips.empty()) {
        options.levels = ParseLevels(arguments.mips);
    }
    if (!arguments.raw.empty()) {
        ParseRaw(arguments.raw, options.read);
    }
    options.write.ddsNames = kDdsNames.at(arguments.ddsNames);
    options.write.ktxAmdTokens = arguments.ktxAmdTokens;
    options.write.pngDeepFloats = arguments.png16;
    options.keepGoing = arguments.keepGoing;
    options.report = arguments.report;
    options.overwrite = arguments.overwrite;
    const unsigned all = std::max(std::thread::hardware_concurrency(), 1u);
    options.threads = std::min(arguments.threads == 0 ? all : arguments.threads, kMostThreads);
    return options;
}

std::vector<Job> ResolveJobs(const ConvertArguments& arguments, const ConvertOptions& options) {
    std::vector<std::string> paths = arguments.paths;
    std::string directory = arguments.outDir;
    if (directory.empty() && paths.size() > 1 && IsDirectory(paths.back())) {
        directory = paths.back();
        paths.pop_back();
    }
    if (!directory.empty()) {
        return JobsIntoDirectory(ExpandLists(paths), directory, options);
    }
    if (paths.size() < 2) {
        Misuse("an input and an output are needed, or --out-dir");
    }
    const std::string out = paths.back();
    paths.pop_back();
    paths = ExpandLists(paths);
    if (paths.size() != 1) {
        Misuse(std::to_string(paths.size()) + " inputs for the one output " + out +
               "; --out-dir takes several");
    }
    if (options.container == nullptr && ContainerOfPath(out) == nullptr) {
        Misuse(OutputName(out) + " names no container; --container does, with png, ktx, dds, pkm or raw");
    }
    return {{paths.front(), out}};
}

}  // namespace qonvert
