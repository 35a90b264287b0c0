// Runs the program and keeps what it said.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zorvan::tool {

struct ToolRun {
    int code = -1;  // exit code, or -1 when the program crashed
    std::string out;
    std::string err;
};

// With outPath, standard output goes there and out stays empty.
ToolRun RunTool(std::vector<std::string> const& arguments, std::string const& outPath = "");

std::string ReadText(std::filesystem::path const& path);
void WriteText(std::filesystem::path const& path, std::string const& text);
// Path of a file in the examples' folder.
std::string Example(std::string const& name);

// Each test has a folder of its own, empty at its start.
class ToolTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string Path(std::string const& name) const { return folder_ / name; }
    // Writes a file into the folder and returns its path.
    std::string File(std::string const& name, std::string const& text) const;
    // Names of all files in the folder, sorted.
    std::vector<std::string> Files() const;

  private:
    std::filesystem::path folder_;
};

// Expects an exit code, nothing on standard output and one line on standard error that holds a text.
void ExpectFailure(ToolRun const& run, int code, std::string const& text);

}  // namespace zorvan::tool
