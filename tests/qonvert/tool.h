// Runs the built program in an empty directory of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "tools/qonvert/container.h"

namespace qonvert {

struct ToolResult {
    int exit = -1;
    std::string out;
    std::string err;
};

class ToolTest : public testing::Test {
  protected:
    ToolTest();
    ~ToolTest() override;

    // Runs the program with the words of `arguments` as the shell splits them.
    ToolResult Run(const std::string& arguments);
    // Runs any command line in the directory; true when it succeeds.
    bool Shell(const std::string& command);

    std::string Path(const std::string& name) const { return (directory_ / name).string(); }
    void Write(const std::string& name, ByteSpan bytes) const;
    Bytes Read(const std::string& name) const;
    // A smooth picture with alpha, as PNG.
    void WritePicture(const std::string& name, std::uint32_t width, std::uint32_t height) const;
    std::set<std::string> Names() const;
    // Skips a test whose independent reader is not installed.
    bool Installed(const std::string& program) { return Shell("command -v " + program); }

  private:
    std::filesystem::path directory_;
};

}  // namespace qonvert
