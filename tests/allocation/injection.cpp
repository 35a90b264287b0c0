#include "tests/allocation/injection.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kDeviceFails = 4;      // zorvan's, when the device gives no reason
constexpr int kQuantizerEnds = 255;  // qonvert's for the palette quantizer
// What the converter itself says on the way, where it is not told to be quiet.
constexpr std::string_view kConverterLine = "QXTextureConverter error: Could not create memory \n";
// What zorvan says when the device gives no reason.
constexpr std::string_view kReadBack = "zorvan: the device failed to read its pixels back\n";

// "TOOL: FILE: out of memory", or without the file.
bool IsOneLine(std::string_view text) {
    const std::string tool = fs::path(PROGRAM).filename().string() + ": ";
    return text.starts_with(tool) && text.rfind(tool) == 0 && text.find('\n') + 1 == text.size() &&
           (text.ends_with(": out of memory\n") || text == kReadBack);
}

// A fault shows in many places.
bool Continues() {
    constexpr int kMostFailures = 20;
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() <
           kMostFailures;
}

std::vector<std::uint64_t> Words(const std::string& bytes) {
    std::vector<std::uint64_t> words(bytes.size() / sizeof(std::uint64_t));
    std::memcpy(words.data(), bytes.data(), words.size() * sizeof(std::uint64_t));
    return words;
}

}  // namespace

void InjectionTest::SetUp() {
    if (*FAILING_MALLOC == '\0') {
        GTEST_SKIP() << "Needs glibc's allocator, which the sanitizers replace";
    }
}

InjectionTest::Files InjectionTest::AllFiles() const {
    Files files;
    for (const std::string& name : Names()) {
        if (fs::is_regular_file(Path(name))) {
            files[name] = Read(name);
        }
    }
    return files;
}

void InjectionTest::Restore(const Files& files) const {
    for (const auto& [name, bytes] : AllFiles()) {
        if (!files.contains(name)) {
            fs::remove(Path(name));
        } else if (files.at(name) != bytes) {
            Write(name, files.at(name));
        }
    }
}

ToolRun InjectionTest::RunWith(const std::string& task, const Command& command) const {
    return Run(command.arguments, "LD_PRELOAD='" FAILING_MALLOC "' " + task);
}

void InjectionTest::Check(const Command& command, const ToolRun& run, const ToolRun& whole) const {
    if (run.code == 0) {
        EXPECT_EQ(run.err, whole.err);
        EXPECT_TRUE(!command.sameText || run.out == whole.out) << run.out;
    } else if (command.quantizes && run.code == kQuantizerEnds) {
        EXPECT_TRUE(run.out.starts_with("  out of memory ")) << run.out;
        EXPECT_EQ(run.err, "");
    } else {
        EXPECT_EQ(run.code, run.err.ends_with(kReadBack) ? kDeviceFails : noMemory_);
        std::string_view text = run.err;
        for (const std::string_view line : {std::string_view(whole.err), kConverterLine}) {
            text.remove_prefix(text.starts_with(line) ? line.size() : 0);
        }
        if (command.traces && text.size() > 1) {
            text.remove_prefix(text.rfind('\n', text.size() - 2) + 1);
        }
        EXPECT_TRUE(IsOneLine(text)) << run.err;
    }
}

void InjectionTest::Inject(const Command& command) {
    SCOPED_TRACE(command.arguments);
    const Files before = AllFiles();
    const TempFolder logs;
    const std::string log = logs / "log";
    const ToolRun whole = RunWith("ALLOCATION_LOG='" + log + "'", command);
    ASSERT_EQ(whole.code, 0) << whole.err;
    const std::vector<std::uint64_t> sites = Words(Read(log));
    const Files after = AllFiles();
    ASSERT_GT(sites.size(), 100u);
    for (std::size_t i = 0; i < sites.size() && Continues(); ++i) {
        if (!tried_.insert(sites[i]).second) {
            continue;
        }
        Restore(before);
        const std::string task = "ALLOCATION_FAILS=" + std::to_string(i);
        SCOPED_TRACE(task);
        const ToolRun run = RunWith(task, command);
        Check(command, run, whole);
        // Where a file was made, it is whole.
        Files now = AllFiles();
        EXPECT_TRUE(run.code != 0 || now == after) << "another output";
        for (const auto& [name, bytes] : before) {
            EXPECT_TRUE(now[name] == bytes || (after.contains(name) && now[name] == after.at(name))) << name;
        }
        for (const auto& [name, bytes] : now) {
            EXPECT_TRUE(before.contains(name) || (after.contains(name) && bytes == after.at(name))) << name;
        }
    }
    Restore(before);
}
