#include "tests/zorvan/run_tool.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zorvan::tool {
namespace {

std::filesystem::path TestFolder() {
    auto const* info = testing::UnitTest::GetInstance()->current_test_info();
    return std::filesystem::temp_directory_path() /
           ("zorvan-" + std::to_string(getpid()) + "-" + info->test_suite_name() + "-" + info->name());
}

void Redirect(std::string const& path, int descriptor) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0 || dup2(file, descriptor) < 0) {
        _exit(127);
    }
}

}  // namespace

ToolRun RunTool(std::vector<std::string> const& arguments, std::string const& outPath) {
    const std::filesystem::path base = TestFolder().string() + ".run";
    const std::string out = outPath.empty() ? base.string() + ".out" : outPath;
    const std::string err = base.string() + ".err";
    std::vector<char const*> argv = {ZORVAN_TOOL};
    for (std::string const& argument : arguments) {
        argv.push_back(argument.c_str());
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        Redirect(out, STDOUT_FILENO);
        Redirect(err, STDERR_FILENO);
        execv(argv[0], const_cast<char* const*>(argv.data()));
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ToolRun run{WIFEXITED(status) ? WEXITSTATUS(status) : -1, "", ReadText(err)};
    std::filesystem::remove(err);
    if (outPath.empty()) {
        run.out = ReadText(out);
        std::filesystem::remove(out);
    }
    return run;
}

std::string ReadText(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteText(std::filesystem::path const& path, std::string const& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string Example(std::string const& name) {
    return std::string(ZORVAN_EXAMPLES) + "/" + name;
}

void ToolTest::SetUp() {
    folder_ = TestFolder();
    std::filesystem::create_directories(folder_);
}

void ToolTest::TearDown() {
    std::filesystem::remove_all(folder_);
}

std::string ToolTest::File(std::string const& name, std::string const& text) const {
    WriteText(folder_ / name, text);
    return folder_ / name;
}

std::vector<std::string> ToolTest::Files() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(folder_)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void ExpectFailure(ToolRun const& run, int code, std::string const& text) {
    EXPECT_EQ(run.code, code);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("zorvan: ", 0), 0u) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_NE(run.err.find(text), std::string::npos) << "expected: " << text << "\ngot: " << run.err;
}

}  // namespace zorvan::tool
