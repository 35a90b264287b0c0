// Failures as data: what a verb hands back instead of throwing or printing.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zorvan::tool {

// The program's exit codes; documented in docs/zorvan.md.
enum class ExitCode : int {
    Ok = 0,
    Usage = 1,        // wrong options
    Io = 2,           // a file is missing, unreadable or cannot be written
    BadFile = 3,      // a file holds something else than it should
    Runtime = 4,      // the plug-in, EGL or GL failed
    Unsupported = 5,  // this machine's EGL or GL cannot do what was asked for
    Memory = 6,       // something does not fit into the memory limit, or into memory
};

// One failure: the exit code, and one line without the program's name and the line end.
struct Failure {
    ExitCode code;
    std::string message;
};

// The program did not get the memory that it needs for a file.
inline Failure NoMemoryFor(std::string const& file) {
    return {ExitCode::Memory, file + ": out of memory"};
}

// Nothing on success.
using Status = std::optional<Failure>;

// A value, or the failure that prevented it.
template <typename T>
class Result {
  public:
    Result(T value) : value_(std::move(value)) {}            // NOLINT: implicit on purpose
    Result(Failure failure) : value_(std::move(failure)) {}  // NOLINT: implicit on purpose

    explicit operator bool() const { return std::holds_alternative<T>(value_); }
    T& operator*() { return std::get<T>(value_); }
    T* operator->() { return &std::get<T>(value_); }
    Failure const& GetFailure() const { return std::get<Failure>(value_); }

  private:
    std::variant<T, Failure> value_;
};

}  // namespace zorvan::tool
