#include "tools/zorvan/frame_output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "core/image_file.h"

namespace zorvan::tool {
namespace {

Failure WriteFailure(std::string const& path, std::string const& reason) {
    return {ExitCode::Io, path + ": cannot write: " + reason};
}

// A path with a place for the frame's number.
struct Pattern {
    std::string before;
    int digits = 0;  // at least this many; 0 when the path has no place for a number
    bool numbered = false;
    std::string after;

    std::string Name(uint32_t number) const {
        if (!numbered) {
            return before;
        }
        std::string text = std::to_string(number);
        if (text.size() < static_cast<size_t>(digits)) {
            text.insert(0, static_cast<size_t>(digits) - text.size(), '0');
        }
        return before + text + after;
    }
};

// Nothing when the path has a % that is no %d or %0Nd (N one digit), or more than one.
std::optional<Pattern> ParsePattern(std::string const& path) {
    const size_t at = path.find('%');
    if (at == std::string::npos) {
        return Pattern{path, 0, false, ""};
    }
    Pattern pattern{path.substr(0, at), 0, true, ""};
    size_t next = at + 1;
    if (path.compare(next, 1, "0") == 0 && next + 1 < path.size() && path[next + 1] >= '1' &&
        path[next + 1] <= '9') {
        pattern.digits = path[next + 1] - '0';
        next += 2;
    }
    if (path.compare(next, 1, "d") != 0) {
        return std::nullopt;
    }
    pattern.after = path.substr(next + 1);
    if (pattern.after.find('%') != std::string::npos) {
        return std::nullopt;
    }
    return pattern;
}

class PngOutput final : public FrameOutput {
  public:
    explicit PngOutput(Pattern pattern) : pattern_(std::move(pattern)) {}

    Status Write(uint32_t number, Image const& frame) override {
        const std::string path = pattern_.Name(number);
        const std::string error = WritePng(path, frame);
        return error.empty() ? std::nullopt : Status(WriteFailure(path, error));
    }
    Status Finish() override { return std::nullopt; }

  private:
    Pattern pattern_;
};

class StreamOutput final : public FrameOutput {
  public:
    StreamOutput(RawFormat format, uint32_t framesPerSecond)
        : format_(format), framesPerSecond_(framesPerSecond) {}

    Status Write(uint32_t number, Image const& frame) override;
    Status Finish() override { return Check(std::fflush(stdout) == 0); }

  private:
    Status Check(bool good) const {
        return good ? std::nullopt : Status(WriteFailure("standard output", std::strerror(errno)));
    }
    bool WriteHeader(Image const& frame);
    bool WritePlanes(Image const& frame);

    RawFormat format_;
    uint32_t framesPerSecond_;
    bool started_ = false;
};

Status StreamOutput::Write(uint32_t, Image const& frame) {
    if (format_ == RawFormat::Rgba) {
        return Check(std::fwrite(frame.rgba.data(), 1, frame.rgba.size(), stdout) == frame.rgba.size());
    }
    return Check((started_ || WriteHeader(frame)) && WritePlanes(frame));
}

bool StreamOutput::WriteHeader(Image const& frame) {
    started_ = true;
    return std::printf("YUV4MPEG2 W%u H%u F%u:1 Ip A1:1 C444\n", frame.width, frame.height,
                       framesPerSecond_) > 0;
}

bool StreamOutput::WritePlanes(Image const& frame) {
    // BT.601 in 16.16; video range: 16 to 235 and 16 to 240.
    constexpr int kRows[3][4] = {
        {16829, 33039, 6416, 16}, {-9714, -19070, 28784, 128}, {28784, -24103, -4681, 128}};
    const size_t count = frame.rgba.size() / 4;
    std::vector<uint8_t> planes(3 * count);
    for (size_t plane = 0; plane < 3; ++plane) {
        int const* row = kRows[plane];
        for (size_t i = 0; i < count; ++i) {
            uint8_t const* pixel = &frame.rgba[4 * i];
            const int sum = row[0] * pixel[0] + row[1] * pixel[1] + row[2] * pixel[2] + 32768;
            planes[plane * count + i] = static_cast<uint8_t>((sum >> 16) + row[3]);
        }
    }
    return std::fputs("FRAME\n", stdout) >= 0 &&
           std::fwrite(planes.data(), 1, planes.size(), stdout) == planes.size();
}

}  // namespace

std::string LowerExtension(std::string const& path) {
    std::string extension = std::filesystem::path(path).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
    return extension;
}

Status CheckPngName(std::string const& path) {
    if (LowerExtension(path) != ".png") {
        return Failure{ExitCode::Usage, path +
                                            ": got an output of unknown kind, expected a name that ends in "
                                            ".png, .gif, .mp4 or .webm, or -"};
    }
    return CheckFolder(path);
}

Status CheckFolder(std::string const& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error)) {
        return WriteFailure(path, "there is no folder '" + folder.string() + "'");
    }
    return std::nullopt;
}

Result<std::unique_ptr<FrameOutput>> MakePngOutput(std::string const& path, FrameRange const& frames) {
    std::optional<Pattern> pattern = ParsePattern(path);
    if (!pattern) {
        return Failure{ExitCode::Usage, path + ": got a name with '%', expected one %d or %0Nd in it"};
    }
    if (frames.Count() > 1 && !pattern->numbered) {
        return Failure{ExitCode::Usage, path + ": got one name for " + std::to_string(frames.Count()) +
                                            " frames, expected a name like out_%04d.png"};
    }
    if (Status failure = CheckPngName(pattern->Name(frames.first))) {
        return *failure;
    }
    return std::unique_ptr<FrameOutput>(new PngOutput(*pattern));
}

std::unique_ptr<FrameOutput> MakeStreamOutput(RawFormat format, uint32_t framesPerSecond) {
    return std::make_unique<StreamOutput>(format, framesPerSecond);
}

}  // namespace zorvan::tool
