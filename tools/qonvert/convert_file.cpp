#include "tools/qonvert/convert_file.h"

#include <new>

#include "texconv/format_table.h"
#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/transform.h"

namespace qonvert {

using QXTextureConverter::FindFormat;
using QXTextureConverter::FormatInfo;

namespace {

ReadOptions ReadOptionsFor(const ConvertOptions& options, const Container& output) {
    ReadOptions read = options.read;
    if (options.format ? FindFormat(*options.format)->IsFloat()
                       : options.write.pngDeepFloats && output.name == "png") {
        read.deepSamples = DeepSamples::kFloat;
    } else if (options.format == FMT_L16) {
        read.deepSamples = DeepSamples::kLuminance16;
    }
    return read;
}

// The source's format, or where the container cannot carry it, the plain one that it decodes to.
std::uint32_t DefaultFormat(const Container& output, std::uint32_t source, const WriteOptions& write) {
    const std::uint32_t plain = FindFormat(source)->alpha ? FMT_RGBA8888 : FMT_RGB888;
    for (const std::uint32_t format : {source, plain, std::uint32_t{FMT_ETC1_RGB8}}) {
        if (output.carries(format, write)) {
            return format;
        }
    }
    return source;
}

Origin OtherOrigin(Origin origin) {
    return origin == Origin::kBottomLeft ? Origin::kTopLeft : Origin::kBottomLeft;
}

void SettleOrigin(const ConvertOptions& options, const Container& output, TextureFile& texture,
                  Outcome& outcome) {
    if (options.steps.flipY) {
        texture.origin = OtherOrigin(texture.origin);
    }
    if (options.origin) {
        if (!output.origin) {
            throw ToolError(ExitCode::kUnsupported,
                            std::string(output.name) + " records no origin; ktx does");
        }
        texture.origin = *options.origin;
    }
    if (texture.origin == Origin::kBottomLeft && !output.origin && !options.steps.flipY) {
        outcome.warnings.push_back("the input's origin is bottom-left, which " + std::string(output.name) +
                                   " cannot record; --flip-y moves the rows");
    }
}

std::uint32_t LevelsFor(const ConvertOptions& options, const Container& output, std::size_t sourceLevels,
                        Outcome& outcome) {
    if (output.levels) {
        return options.levels;
    }
    if (options.levels > 1) {
        throw ToolError(ExitCode::kUnsupported,
                        std::string(output.name) + " holds one level; ktx, dds and raw hold more");
    }
    if (sourceLevels > 1) {
        outcome.warnings.push_back(std::string(output.name) + " holds one level; the others are left out");
    }
    return 1;
}

void WarnAboutFormats(const ConvertOptions& options, std::uint32_t from, std::uint32_t to, Outcome& outcome) {
    for (const std::uint32_t format : {from, to}) {
        if (from != to && IsWideLuminance(format)) {
            outcome.warnings.push_back("luminance of " + std::string(FormatName(format)) +
                                       " becomes 0 in every conversion to or from another format");
        }
    }
    if (options.steps.fastCompress && to != FMT_ATITC_RGB && to != FMT_ATITC_RGBA_EXPLICIT) {
        outcome.warnings.push_back("--fast has no effect on " + std::string(FormatName(to)));
    }
}

std::optional<Difference> Report(const TextureFile& source, const Transformed& result) {
    const TextureFile& texture = result.texture;
    const Picture encoded{texture.format, texture.width, texture.height, texture.levels.front()};
    if (result.pixels.empty()) {
        return Measure({source.format, source.width, source.height, source.levels.front()}, encoded);
    }
    return Measure({result.pixelFormat, texture.width, texture.height, result.pixels}, encoded);
}

// Before a picture of that size is made. `format` 0 is any.
void CheckSize(const Container& output, std::uint32_t format, std::uint32_t width, std::uint32_t height) {
    CheckConvertible(format, width, height);
    CheckSides(output, width, height);
}

void Convert(const Job& job, const ConvertOptions& options, unsigned threads, Outcome& outcome) {
    const Container& output = options.container != nullptr ? *options.container : *ContainerOfPath(job.out);
    CheckWritable(job.out, options.overwrite);
    if (options.format) {
        CheckCarries(output, *options.format, options.write);
    }
    if (options.scale.width != 0) {
        CheckSize(output, options.format.value_or(0), options.scale.width, options.scale.height);
    }
    Findings findings;
    LoadedTexture loaded;
    LoadTexture(job.in, "", ReadOptionsFor(options, output), findings, loaded);
    for (const Finding& finding : findings) {
        outcome.warnings.push_back(finding.Describe());
    }
    const TextureFile& source = loaded.texture;

    Recipe recipe;
    recipe.format = options.format.value_or(DefaultFormat(output, source.format, options.write));
    CheckCarries(output, recipe.format, options.write);
    recipe.steps = options.steps;
    recipe.levels = LevelsFor(options, output, source.levels.size(), outcome);
    recipe.threads = threads;
    options.scale.Apply(source.width, source.height, recipe.width, recipe.height);
    CheckSize(output, recipe.format, recipe.width, recipe.height);
    WarnAboutFormats(options, source.format, recipe.format, outcome);

    Transformed result = Transform(source, recipe);
    SettleOrigin(options, output, result.texture, outcome);
    const Bytes file = WriteContainer(output, result.texture, options.write);
    if (options.report) {
        outcome.report = Report(source, result);
    }
    outcome.container = output.name;
    outcome.format = recipe.format;
    outcome.width = recipe.width;
    outcome.height = recipe.height;
    outcome.levels = result.texture.levels.size();
    outcome.bytes = file.size();
    WriteFile(job.out, file, options.overwrite);
}

// Errors of reading name the file already.
std::string Named(const std::string& message, const Job& job) {
    const std::string in = InputName(job.in);
    const std::string out = OutputName(job.out);
    const bool named = message.starts_with(in + ": ") || message.starts_with(out + ": ");
    return named ? message : in + ": " + message;
}

}  // namespace

Outcome ConvertFile(const Job& job, const ConvertOptions& options, unsigned threads) {
    Outcome outcome;
    outcome.skipped = false;
    try {
        Convert(job, options, threads, outcome);
    } catch (const ToolError& error) {
        outcome.code = error.code();
        outcome.error = Named(error.what(), job);
    } catch (const std::bad_alloc&) {
        outcome.code = ExitCode::kRuntime;
        outcome.error = Named("out of memory", job);
    } catch (const std::exception& error) {
        outcome.code = ExitCode::kRuntime;
        outcome.error = Named(error.what(), job);
    }
    return outcome;
}

}  // namespace qonvert
