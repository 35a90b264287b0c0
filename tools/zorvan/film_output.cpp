#include "tools/zorvan/film_output.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

#include "texfile/output_file.h"
#include "tools/zorvan/interruption.h"

namespace zorvan::tool {
namespace {

namespace fs = std::filesystem;

struct FilmFormat {
    char const* extension;
    char const* muxer;
    std::vector<char const*> options;
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
          "rectangle"}},
        {".mp4",
         "mp4",
         {"-vf", kEven, "-c:v", "libx264", "-crf", "18", "-pix_fmt", "yuv420p", "-movflags", "+faststart"}},
        {".webm",
         "webm",
         {"-vf", kEven, "-c:v", "libvpx-vp9", "-crf", "24", "-b:v", "0", "-row-mt", "1", "-pix_fmt",
          "yuv420p"}}};
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

bool IsOnPath(char const* program) {
    char const* path = std::getenv("PATH");
    std::string folders = path == nullptr ? "" : path;
    for (size_t from = 0; from <= folders.size();) {
        const size_t end = std::min(folders.find(':', from), folders.size());
        if (access((fs::path(folders.substr(from, end - from)) / program).c_str(), X_OK) == 0) {
            return true;
        }
        from = end + 1;
    }
    return false;
}

class FilmOutput final : public FrameOutput {
  public:
    FilmOutput(std::string path, FilmFormat const& format, uint32_t framesPerSecond)
        : path_(std::move(path)),
          format_(format),
          framesPerSecond_(framesPerSecond),
          messages_(std::tmpfile()) {}
    ~FilmOutput() override;

    Status Write(uint32_t number, Image const& frame) override;
    Status Finish() override;

  private:
    std::vector<std::string> Command(Image const& frame) const;
    bool Start(Image const& frame);
    // Ends ffmpeg's input and waits for its end; whether all went well.
    bool Close();
    // The failure, with the last line that ffmpeg said or the system's reason.
    Failure Explain();
    Failure CannotWrite(std::string const& reason) const;
    // What ffmpeg calls the file: a name that cannot come to stand for another file meanwhile.
    std::string FileForFfmpeg() const { return "/dev/fd/" + std::to_string(file_.Descriptor()); }

    std::string path_;
    texfile::OutputFile file_;
    FilmFormat const& format_;
    uint32_t framesPerSecond_;
    std::FILE* messages_;  // ffmpeg's
    int pipe_ = -1;        // ffmpeg's input
    pid_t child_ = 0;
};

FilmOutput::~FilmOutput() {
    if (child_ > 0) {
        kill(child_, SIGKILL);
        Close();
    }
    if (messages_ != nullptr) {
        std::fclose(messages_);
    }
}

std::vector<std::string> FilmOutput::Command(Image const& frame) const {
    const std::string size = std::to_string(frame.width) + "x" + std::to_string(frame.height);
    std::vector<std::string> command = {"ffmpeg",
                                        "-v",
                                        "error",
                                        "-nostdin",
                                        "-y",
                                        "-f",
                                        "rawvideo",
                                        "-pix_fmt",
                                        "rgb0",
                                        "-s",
                                        size,
                                        "-r",
                                        std::to_string(framesPerSecond_),
                                        "-i",
                                        "pipe:0"};
    command.insert(command.end(), format_.options.begin(), format_.options.end());
    // A protocol in front, so that no name is taken for an option or an address.
    command.insert(command.end(), {"-f", format_.muxer, "file:" + FileForFfmpeg()});
    return command;
}

bool FilmOutput::Start(Image const& frame) {
    int ends[2];
    if (messages_ == nullptr || pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    std::vector<std::string> command = Command(frame);
    std::vector<char*> words;
    for (std::string& word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    child_ = fork();
    if (child_ == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        fcntl(file_.Descriptor(), F_SETFD, 0);
        if (dup2(ends[0], STDIN_FILENO) >= 0 && dup2(fileno(messages_), STDOUT_FILENO) >= 0 &&
            dup2(fileno(messages_), STDERR_FILENO) >= 0) {
            execvp(words[0], words.data());
        }
        _exit(127);
    }
    close(ends[0]);
    pipe_ = ends[1];
    return child_ > 0;
}

bool FilmOutput::Close() {
    const bool written = close(std::exchange(pipe_, -1)) == 0;
    int status = 0;
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
        kill(child_, SIGKILL);  // interrupted: the film is given up
    }
    child_ = 0;
    return written && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Failure FilmOutput::Explain() {
    std::string reason = std::strerror(errno);
    if (child_ > 0) {
        Close();
    }
    if (messages_ != nullptr) {
        std::rewind(messages_);
        for (char line[512]; std::fgets(line, sizeof line, messages_) != nullptr;) {
            line[std::strcspn(line, "\r\n")] = 0;
            reason = line[0] != 0 ? std::string("ffmpeg: ") + line : reason;
            const std::string file = "file:" + FileForFfmpeg();
            if (const size_t at = reason.find(file); at != std::string::npos) {
                reason.replace(at, file.size(), path_);
            }
        }
    }
    return CannotWrite(reason);
}

Failure FilmOutput::CannotWrite(std::string const& reason) const {
    return {ExitCode::Io, path_ + ": cannot write: " + reason};
}

Status FilmOutput::Write(uint32_t, Image const& frame) {
    if (child_ == 0) {
        if (texfile::IoError error = file_.Open(path_, texfile::Existing::kReplace)) {
            return CannotWrite(error.Text());
        }
        if (!Start(frame)) {
            return Explain();
        }
    }
    for (std::span<uint8_t const> rest = frame.rgba; !rest.empty();) {
        const ssize_t written = write(pipe_, rest.data(), rest.size());
        // A signal ends a write that waits for ffmpeg, with or without a part of the frame written.
        if (Status interruption = CheckInterruption()) {
            return interruption;
        }
        if (written < 0) {
            return Explain();
        }
        rest = rest.subspan(static_cast<size_t>(written));
    }
    return std::nullopt;
}

Status FilmOutput::Finish() {
    if (!Close()) {
        return Explain();
    }
    texfile::IoError error = file_.Sync();
    error = error ? error : file_.Commit();
    return error ? Status(CannotWrite(error.Text())) : std::nullopt;
}

}  // namespace

bool IsFilmName(std::string const& path) {
    return FindFormat(path) != nullptr;
}

Result<std::unique_ptr<FrameOutput>> MakeFilmOutput(std::string const& path, uint32_t framesPerSecond) {
    if (!IsOnPath("ffmpeg")) {
        return Failure{
            ExitCode::Unsupported,
            path + ": films are made by the program ffmpeg, which is not on the path (Debian: ffmpeg)"};
    }
    if (Status failure = CheckFolder(path)) {
        return *failure;
    }
    return std::unique_ptr<FrameOutput>(new FilmOutput(path, *FindFormat(path), framesPerSecond));
}

}  // namespace zorvan::tool
