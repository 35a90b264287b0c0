// Runs a program again and again, and each time takes another of its allocations away.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "tests/tool_test.h"

struct Command {
    const char* arguments;
    // Whether its text is the same in every run.
    bool sameText = true;
    // Where the palette quantizer ends the program without memory, as is documented.
    bool quantizes = false;
    // Whether the engine tells of programs that it cannot compile, before the program's own line.
    bool traces = false;
};

class InjectionTest : public ToolTest {
  protected:
    // `noMemory` is the program's exit code for a lack of memory.
    InjectionTest(const std::string& program, int noMemory) : ToolTest(program), noMemory_(noMemory) {}
    void SetUp() override;

    // Runs the command once as it is, then once for each place in the code that allocates and that no command
    // of this test met before. It must succeed with the same output, or end with the exit code for a lack of
    // memory, one line, and nothing but whole files.
    void Inject(const Command& command);

  private:
    using Files = std::map<std::string, std::string>;

    Files AllFiles() const;
    void Restore(const Files& files) const;
    ToolRun RunWith(const std::string& task, const Command& command) const;
    void Check(const Command& command, const ToolRun& run, const ToolRun& whole) const;

    int noMemory_;
    std::set<std::uint64_t> tried_;
};
