// The program ffmpeg as a child that gets its input through a pipe.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zorvan::tool {

class Ffmpeg {
  public:
    Ffmpeg() = default;
    Ffmpeg(Ffmpeg const&) = delete;
    Ffmpeg& operator=(Ffmpeg const&) = delete;
    // Kills it if it still runs.
    ~Ffmpeg();

    static bool IsOnPath();

    // Starts it, with these arguments and one more descriptor of the same number here and there. Empty on
    // success, else the system's reason. To be called once.
    std::string Start(std::vector<std::string> arguments, int descriptor);
    bool IsRunning() const { return child_ > 0; }

    // As write(2): the count may be smaller, and a signal breaks it off. 0 when there was no room for a
    // while.
    ssize_t Write(std::span<uint8_t const> bytes) const;
    // Ends its input and waits for its end; a signal meanwhile kills it. Empty when it ended well and
    // reported no error; it may report one and still end well. Else the reason, in one line.
    std::string Finish();

  private:
    bool OpenPipes(int (&input)[2], int (&output)[2]);
    int Spawn(std::vector<std::string>& words, int input, int output, int descriptor);
    int Wait();
    std::string ReadMessages() const;

    int input_ = -1;     // what it reads comes from here
    int messages_ = -1;  // what it says comes out here
    pid_t child_ = 0;
};

}  // namespace zorvan::tool
