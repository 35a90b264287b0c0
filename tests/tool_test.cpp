#include "tests/tool_test.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

ToolTest::ToolTest(const std::string& program) : program_(program) {}

ToolRun ToolTest::Run(const std::string& arguments, const std::string& variables) const {
    // Beside the folder, so that they are not among its files. An argument may redirect them again.
    const std::string out = folder_.Path().string() + ".out", err = folder_.Path().string() + ".err";
    const int status = std::system(("cd '" + folder_.Path().string() + "' && >'" + out + "' 2>'" + err +
                                    "' " + variables + " '" + program_ + "' " + arguments)
                                       .c_str());
    ToolRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, Read(out), Read(err)};
    fs::remove(out);
    fs::remove(err);
    return run;
}

bool ToolTest::Shell(const std::string& commands) const {
    return std::system(("cd '" + folder_.Path().string() + "' && TOOL='" + program_ + "' && { " + commands +
                        "; } >/dev/null 2>&1")
                           .c_str()) == 0;
}

void ToolTest::WriteBytes(const std::string& name, std::string_view bytes) const {
    fs::create_directories(fs::path(Path(name)).parent_path());
    std::ofstream(Path(name), std::ios::binary) << bytes;
}

std::string ToolTest::Read(const std::string& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> ToolTest::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.Path())) {
        names.push_back(entry.path().lexically_relative(folder_.Path()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

void ToolTest::ExpectFailures(std::span<const FailureRow> rows) const {
    const std::vector<std::string> before = Names();
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.arguments);
        const ToolRun run = Run(row.arguments);
        EXPECT_EQ(run.code, row.code);
        EXPECT_EQ(run.out, "");
        std::string expected = fs::path(program_).filename().string() + ": " + row.message;
        std::string got = run.err.substr(0, run.err.find('\n'));
        EXPECT_EQ(got.size() + 1, run.err.size()) << "not one line: " << run.err;
        if (expected.ends_with("...")) {
            expected.resize(expected.size() - 3);
            got = got.substr(0, expected.size());
        }
        EXPECT_EQ(got, expected);
        EXPECT_EQ(Names(), before);
    }
}
