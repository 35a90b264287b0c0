#include "tools/zorvan/film_output.h"

#include <cerrno>
#include <cstring>
#include <span>
#include <vector>

#include "texfile/output_file.h"
#include "tools/zorvan/ffmpeg.h"
#include "tools/zorvan/film_check.h"
#include "tools/zorvan/interruption.h"

namespace zorvan::tool {
namespace {

struct FilmFormat {
    char const* extension;
    char const* muxer;
    std::vector<char const*> options;
    bool (*isWhole)(int descriptor);
    bool isStreamable;
};

// GIF gets the best 256 colours of the whole film; films for players have even sides and halved chroma.
std::vector<FilmFormat> const& Formats() {
    constexpr char const* kEven = "pad=ceil(iw/2)*2:ceil(ih/2)*2";
    static const std::vector<FilmFormat> kFormats = {
        {".gif",
         "gif",
         {"-filter_complex",
          "split[a][b];[a]palettegen=stats_mode=diff[p];[b][p]paletteuse=dither=bayer:bayer_scale=4:diff_"
          "mode="
          "rectangle"},
         IsWholeGif,
         true},
        {".mp4",
         "mp4",
         {"-vf", kEven, "-c:v", "libx264", "-crf", "18", "-pix_fmt", "yuv420p", "-movflags", "+faststart"},
         IsWholeMp4,
         false},
        {".webm",
         "webm",
         {"-vf", kEven, "-c:v", "libvpx-vp9", "-crf", "24", "-b:v", "0", "-row-mt", "1", "-pix_fmt",
          "yuv420p"},
         IsWholeWebm,
         true}};
    return kFormats;
}

FilmFormat const* FindFormat(std::string const& path) {
    const std::string extension = LowerExtension(path);
    for (FilmFormat const& format : Formats()) {
        if (extension == format.extension) {
            return &format;
        }
    }
    return nullptr;
}

Failure CannotWrite(std::string const& path, std::string const& reason) {
    return {ExitCode::Io, path + ": cannot write: " + reason};
}

class FilmOutput final : public FrameOutput {
  public:
    FilmOutput(std::string path, FilmFormat const& format, uint32_t framesPerSecond)
        : path_(std::move(path)), format_(format), framesPerSecond_(framesPerSecond) {}

    Status Write(uint32_t number, Image const& frame) override;
    Status Finish() override;

  private:
    Status Start(Image const& frame);
    std::vector<std::string> Arguments(Image const& frame) const;
    // What ffmpeg calls the file: a name that cannot come to stand for another file meanwhile.
    std::string FileForFfmpeg() const;
    // A reason of ffmpeg's as a failure; empty becomes `otherwise`.
    Failure Explain(std::string reason, std::string const& otherwise) const;

    std::string path_;
    texfile::OutputFile file_;
    FilmFormat const& format_;
    uint32_t framesPerSecond_;
    Ffmpeg ffmpeg_;  // dies before its file goes
};

std::string FilmOutput::FileForFfmpeg() const {
    // A protocol in front, so that no name is taken for an option or an address. A file is opened anew, as
    // formats go back in it; a stream is written as it stands.
    return (file_.IsStream() ? "pipe:" : "file:/dev/fd/") + std::to_string(file_.Descriptor());
}

std::vector<std::string> FilmOutput::Arguments(Image const& frame) const {
    const std::string size = std::to_string(frame.width) + "x" + std::to_string(frame.height);
    const std::string rate = std::to_string(framesPerSecond_);
    std::vector<std::string> arguments = {"-y", "-f", "rawvideo", "-pix_fmt", "rgb0",  "-s",
                                          size, "-r", rate,       "-i",       "pipe:0"};
    arguments.insert(arguments.end(), format_.options.begin(), format_.options.end());
    arguments.insert(arguments.end(), {"-f", format_.muxer, FileForFfmpeg()});
    return arguments;
}

Status FilmOutput::Start(Image const& frame) {
    if (texfile::IoError error = file_.Open(path_, texfile::Existing::kReplace)) {
        return CannotWrite(path_, error.Text());
    }
    const std::string reason = ffmpeg_.Start(Arguments(frame), file_.Descriptor());
    return reason.empty() ? std::nullopt : Status(CannotWrite(path_, reason));
}

Failure FilmOutput::Explain(std::string reason, std::string const& otherwise) const {
    const std::string file = FileForFfmpeg();
    if (const size_t at = reason.find(file); at != std::string::npos) {
        reason.replace(at, file.size(), path_);
    }
    return CannotWrite(path_, reason.empty() ? otherwise : reason);
}

Status FilmOutput::Write(uint32_t, Image const& frame) {
    if (!ffmpeg_.IsRunning()) {
        if (Status failure = Start(frame)) {
            return failure;
        }
    }
    for (std::span<uint8_t const> rest = frame.rgba; !rest.empty();) {
        const ssize_t written = ffmpeg_.Write(rest);
        const int error = errno;
        // A signal ends a write that waits for ffmpeg, with or without a part of the frame written.
        if (Status interruption = CheckInterruption()) {
            return interruption;
        }
        if (written < 0) {
            return Explain(ffmpeg_.Finish(),
                           std::string("ffmpeg took no more frames: ") + std::strerror(error));
        }
        rest = rest.subspan(static_cast<size_t>(written));
    }
    return std::nullopt;
}

Status FilmOutput::Finish() {
    if (const std::string reason = ffmpeg_.Finish(); !reason.empty()) {
        return Explain(reason, {});
    }
    texfile::IoError error = file_.Sync();
    // ffmpeg does not tell of all that it failed to write.
    if (!error && !file_.IsStream() && !format_.isWhole(file_.Descriptor())) {
        return CannotWrite(path_, "ffmpeg reported no error, but left a film that is not whole");
    }
    error = error ? error : file_.Commit();
    return error ? Status(CannotWrite(path_, error.Text())) : std::nullopt;
}

}  // namespace

bool IsFilmName(std::string const& path) {
    return FindFormat(path) != nullptr;
}

Result<std::unique_ptr<FrameOutput>> MakeFilmOutput(std::string const& path, uint32_t framesPerSecond) {
    if (!Ffmpeg::IsOnPath()) {
        return Failure{
            ExitCode::Unsupported,
            path + ": films are made by the program ffmpeg, which is not on the path (Debian: ffmpeg)"};
    }
    if (Status failure = CheckFolder(path)) {
        return *failure;
    }
    FilmFormat const& format = *FindFormat(path);
    texfile::OutputTarget target;
    if (texfile::IoError error = texfile::FindTarget(path, texfile::Existing::kReplace, target)) {
        return CannotWrite(path, error.Text());
    }
    if (target.isStream && !format.isStreamable) {
        return CannotWrite(path, std::string("got a stream, expected a file for ") + format.extension +
                                     "; .gif and .webm can be streams");
    }
    return std::unique_ptr<FrameOutput>(new FilmOutput(path, format, framesPerSecond));
}

}  // namespace zorvan::tool
