#include "tools/zorvan/ffmpeg.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <utility>

namespace zorvan::tool {
namespace {

void CloseIfOpen(int& descriptor) {
    if (descriptor >= 0) {
        close(std::exchange(descriptor, -1));
    }
}

// The text behind the level that ffmpeg puts in front of it; nullptr for lines of no error.
char const* ErrorIn(std::string const& line) {
    for (char const* level : {"[error] ", "[fatal] ", "[panic] "}) {
        if (const size_t at = line.find(level); at != std::string::npos) {
            return line.c_str() + at + std::strlen(level);
        }
    }
    return nullptr;
}

// Of an end that is no success.
std::string DescribeEnd(int status) {
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        return "ffmpeg was ended by signal " + std::to_string(signal) + " (" + strsignal(signal) + ")";
    }
    return "ffmpeg ended with exit code " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

Ffmpeg::~Ffmpeg() {
    if (IsRunning()) {
        kill(child_, SIGKILL);
        Wait();
    }
    CloseIfOpen(input_);
    CloseIfOpen(messages_);
}

bool Ffmpeg::IsOnPath() {
    char const* path = std::getenv("PATH");
    const std::string folders = path == nullptr ? "" : path;
    for (size_t from = 0; from <= folders.size();) {
        const size_t end = std::min(folders.find(':', from), folders.size());
        const std::filesystem::path folder = folders.substr(from, end - from);
        if (access((folder / "ffmpeg").c_str(), X_OK) == 0) {
            return true;
        }
        from = end + 1;
    }
    return false;
}

bool Ffmpeg::OpenPipes(int (&input)[2], int (&output)[2]) {
    if (pipe2(input, O_CLOEXEC) != 0) {
        return false;
    }
    input_ = input[1];
    fcntl(input_, F_SETFL, O_NONBLOCK);
    // What does not fit into the pipe is lost instead of waited for: nobody reads before the end. A file
    // would be cut by the same limit or full disk that the messages tell of.
    if (pipe2(output, O_CLOEXEC | O_NONBLOCK) != 0) {
        const int reason = errno;
        close(input[0]);
        errno = reason;
        return false;
    }
    messages_ = output[0];
    return true;
}

std::string Ffmpeg::Start(std::vector<std::string> arguments, int descriptor) {
    int input[2], output[2];
    if (!OpenPipes(input, output)) {
        return std::strerror(errno);
    }
    arguments.insert(arguments.begin(), {"ffmpeg", "-v", "level+error", "-nostdin"});
    const int error = Spawn(arguments, input[0], output[1], descriptor);
    close(input[0]);
    close(output[1]);
    return error == 0 ? "" : std::string("ffmpeg cannot be run: ") + std::strerror(error);
}

int Ffmpeg::Spawn(std::vector<std::string>& words, int input, int output, int descriptor) {
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    // Onto itself: stays open in the child.
    posix_spawn_file_actions_adddup2(&actions, descriptor, descriptor);
    // This program ignores two signals. Of a closed pipe ffmpeg dies as usual; that a file grew beyond the
    // limit it is to report as a failed write, too.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t child = 0;
    const int error = posix_spawnp(&child, pointers[0], &actions, &attributes, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    child_ = error == 0 ? child : 0;
    return error;
}

ssize_t Ffmpeg::Write(std::span<uint8_t const> bytes) const {
    // Not forever: a signal that comes just before would go unnoticed.
    constexpr int kMilliseconds = 200;
    pollfd room{input_, POLLOUT, 0};
    if (poll(&room, 1, kMilliseconds) == 0) {
        return 0;
    }
    const ssize_t written = write(input_, bytes.data(), bytes.size());
    return written < 0 && errno == EAGAIN ? 0 : written;
}

int Ffmpeg::Wait() {
    int status = 0;
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
        kill(child_, SIGKILL);
    }
    child_ = 0;
    return status;
}

std::string Ffmpeg::ReadMessages() const {
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = read(messages_, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(got));
    }
    return text;
}

std::string Ffmpeg::Finish() {
    CloseIfOpen(input_);
    const int status = Wait();
    std::istringstream messages(ReadMessages());
    std::string last;
    for (std::string line; std::getline(messages, line);) {
        // The first error is the cause of the others.
        if (char const* error = ErrorIn(line)) {
            return std::string("ffmpeg: ") + error;
        }
        last = line.empty() ? last : line;
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return {};
    }
    return last.empty() ? DescribeEnd(status) : "ffmpeg: " + last;
}

}  // namespace zorvan::tool
