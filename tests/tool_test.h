// Runs one of the command-line programs in an empty folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "tests/temp_folder.h"

struct ToolRun {
    int code = -1;  // exit code, as the shell has it
    std::string out;
    std::string err;
};

struct FailureRow {
    const char* arguments;
    int code;
    // The whole line on standard error, without the program's name; "..." at its end stands for words that
    // are not ours.
    std::string message;
};

class ToolTest : public testing::Test {
  protected:
    // `program` is the path of the built program.
    explicit ToolTest(const std::string& program);

    // Runs the program in the folder, with `arguments` as the shell splits them, and variables ("A=1 B=2").
    ToolRun Run(const std::string& arguments, const std::string& variables = "") const;
    // Runs any commands in the folder, where $TOOL is the program; true when they succeed.
    bool Shell(const std::string& commands) const;
    bool Installed(const std::string& program) const { return Shell("command -v " + program); }

    std::string Path(const std::string& name) const { return folder_ / name; }
    template <typename Bytes>
    void Write(const std::string& name, const Bytes& bytes) const {
        WriteBytes(name, {reinterpret_cast<const char*>(std::data(bytes)), std::size(bytes)});
    }
    // Empty when there is no such file.
    std::string Read(const std::string& name) const;
    // Of all files and folders below the folder, sorted.
    std::vector<std::string> Names() const;

    // Expects each row to fail with its exit code and its one line, and to leave all files as they were.
    void ExpectFailures(std::span<const FailureRow> rows) const;
    void ExpectFailure(const FailureRow& row) const { ExpectFailures({&row, 1}); }

  private:
    void WriteBytes(const std::string& name, std::string_view bytes) const;

    std::string program_;
    TempFolder folder_;
};
