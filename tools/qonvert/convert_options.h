// The options of "qonvert convert": what the command line says, and what follows from it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/qonvert/container.h"
#include "tools/qonvert/pixels.h"

namespace CLI {
class App;
}

namespace qonvert {

// As on the command line.
struct ConvertArguments {
    std::vector<std::string> paths;
    std::string format, container, scale, filter = "box", normalMap, origin, mips, raw, outDir,
                                          ddsNames = "ati";
    double strength = 1;
    bool wrap = false, mirrorX = false, flipY = false, fast = false, ktxAmdTokens = false, png16 = false;
    bool keepGoing = false, report = false, overwrite = false;
    unsigned threads = 0;
};

// Size of the result: fixed, or in proportion to the source.
struct Scale {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    double factor = 1;  // used where width is 0

    void Apply(std::uint32_t sourceWidth, std::uint32_t sourceHeight, std::uint32_t& toWidth,
               std::uint32_t& toHeight) const;
};

// Checked and resolved.
struct ConvertOptions {
    std::optional<std::uint32_t> format;
    const Container* container = nullptr;  // of the outputs; null takes it from each output's name
    Scale scale;
    Steps steps;
    std::optional<Origin> origin;
    std::uint32_t levels = 0;  // 0: those that there are; UINT32_MAX: the whole chain
    ReadOptions read;
    WriteOptions write;
    bool keepGoing = false, report = false, overwrite = false;
    unsigned threads = 1;
};

// One file to convert.
struct Job {
    std::string in;
    std::string out;
};

void AddConvertOptions(CLI::App& verb, ConvertArguments& arguments);

// Throws ToolError (usage).
ConvertOptions ResolveOptions(const ConvertArguments& arguments);

// Inputs and outputs, with lists read and output names made. Throws ToolError: usage, or I/O for a list
// that cannot be read.
std::vector<Job> ResolveJobs(const ConvertArguments& arguments, const ConvertOptions& options);

}  // namespace qonvert
