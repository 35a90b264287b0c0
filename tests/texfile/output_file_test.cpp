// Outputs are whole or not there, never somebody else's, and streams stay streams.
#include "texfile/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>

#include "tests/temp_folder.h"

namespace texfile {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;
using Kind = IoError::Kind;

Bytes Text(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string Read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> Names(const TempFolder& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.Path())) {
        names.insert(entry.path().filename());
    }
    return names;
}

TEST(OutputFile, TakesItsPlaceWhenWholeOrLeavesNothing) {
    const TempFolder folder;
    const std::string path = folder / std::string(255, 'n');  // the longest name there is
    {
        OutputFile file;
        ASSERT_FALSE(file.Open(path, Existing::kKeep));
        ASSERT_FALSE(file.Write(Text("half")));
        EXPECT_FALSE(fs::exists(path));
    }
    EXPECT_EQ(Names(folder).size(), 0u);
    EXPECT_FALSE(WriteWholeFile(path, Text("first"), Existing::kKeep));
    EXPECT_EQ(WriteWholeFile(path, Text("second"), Existing::kKeep).kind, Kind::kExists);
    EXPECT_EQ(Read(path), "first");
    EXPECT_FALSE(WriteWholeFile(path, Text("second"), Existing::kReplace));
    EXPECT_EQ(Read(path), "second");
    EXPECT_EQ(Names(folder).size(), 1u);
}

TEST(OutputFile, RefusesWhatIsNoFilesPlace) {
    const TempFolder folder;
    EXPECT_EQ(WriteWholeFile(folder.Path(), {}, Existing::kReplace).kind, Kind::kFolder);
    EXPECT_EQ(WriteWholeFile(folder / "missing/file", {}, Existing::kReplace).kind, Kind::kSystem);
    EXPECT_EQ(WriteWholeFile((folder / "a") + std::string(1, '\0') + "b", {}, Existing::kReplace).kind,
              Kind::kZeroByte);
    // A file that appeared while ours was written.
    OutputFile late;
    ASSERT_FALSE(late.Open(folder / "late", Existing::kKeep));
    std::ofstream(folder / "late") << "theirs";
    EXPECT_EQ(late.Commit().kind, Kind::kExists);
    EXPECT_EQ(Read(folder / "late"), "theirs");
}

TEST(OutputFile, FollowsNoLink) {
    const TempFolder folder;
    std::ofstream(folder / "victim") << "precious";
    fs::create_symlink("victim", folder / "link");
    fs::create_symlink("nowhere", folder / "dangling");
    for (const char* name : {"link", "dangling"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(WriteWholeFile(folder / name, {}, Existing::kKeep).kind, Kind::kExists);
        EXPECT_FALSE(WriteWholeFile(folder / name, Text("new"), Existing::kReplace));
        EXPECT_FALSE(fs::is_symlink(folder / name));
        EXPECT_EQ(Read(folder / name), "new");
    }
    EXPECT_EQ(Read(folder / "victim"), "precious");
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
    // Neither written through, which may harm a disk, nor replaced, which may harm /dev.
    fs::create_symlink("/dev/null", folder / "device");
    for (const Existing existing : {Existing::kKeep, Existing::kReplace}) {
        EXPECT_EQ(WriteWholeFile(folder / "device", {}, existing).kind, Kind::kLink);
    }
    EXPECT_TRUE(fs::is_symlink(folder / "device"));
    // What took a stream's place after it was looked at.
    fs::create_symlink("victim", folder / "link2");
    for (const char* name : {"victim", "link2", "device"}) {
        EXPECT_LT(OpenStream(folder / name), 0) << name;
    }
}

// Nobody can plant a file or link where the temporary one will be.
TEST(OutputFile, HasTemporaryNamesThatDiffer) {
    const TempFolder folder;
    std::set<std::string> seen;
    for (int i = 0; i < 8; ++i) {
        OutputFile file;
        ASSERT_FALSE(file.Open(folder / "target", Existing::kKeep));
        const std::set<std::string> names = Names(folder);
        ASSERT_EQ(names.size(), 1u);
        // Nothing that a process or its next file would have again stands in front.
        EXPECT_TRUE(seen.insert(names.begin()->substr(0, 16)).second);
    }
}

TEST(OutputFile, KeepsModeAndOwnerOfWhatItReplaces) {
    const TempFolder folder;
    const std::string path = folder / "file";
    const bool isRoot = geteuid() == 0;
    for (const mode_t mode : {0600u, 0640u, 0777u}) {
        std::ofstream(path) << "old";
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        if (isRoot) {
            ASSERT_EQ(chown(path.c_str(), 12345, 23456), 0);
        }
        ASSERT_FALSE(WriteWholeFile(path, Text("new"), Existing::kReplace));
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode);
        EXPECT_EQ(status.st_uid, isRoot ? 12345 : geteuid());
        EXPECT_EQ(status.st_gid, isRoot ? 23456 : getegid());
    }
}

TEST(OutputFile, OfManyWritersIsOneWhole) {
    constexpr int kWriters = 24;
    const TempFolder folder;
    std::vector<std::thread> writers;
    for (int i = 0; i < kWriters; ++i) {
        writers.emplace_back([&, i] {
            const Bytes bytes(100'000, static_cast<std::uint8_t>('a' + i));
            for (int round = 0; round < 10; ++round) {
                EXPECT_FALSE(WriteWholeFile(folder / "file", bytes, Existing::kReplace));
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    const std::string content = Read(folder / "file");
    EXPECT_EQ(content, std::string(100'000, content.at(0)));
    EXPECT_EQ(Names(folder).size(), 1u);
}

TEST(OutputFile, WritesStreamsAsTheyStand) {
    const TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::string got;
    std::thread reader([&] { got = Read(folder / "pipe"); });
    EXPECT_FALSE(WriteWholeFile(folder / "pipe", Text("through"), Existing::kKeep));
    reader.join();
    EXPECT_EQ(got, "through");
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));

    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, {}};
    (folder / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    EXPECT_FALSE(WriteWholeFile(folder / "socket", Text("talk"), Existing::kKeep));
    const int talker = accept(listener, nullptr, nullptr);
    char word[5] = {};
    EXPECT_EQ(read(talker, word, 4), 4);
    EXPECT_STREQ(word, "talk");
    close(talker);
    close(listener);

    EXPECT_FALSE(WriteWholeFile("/dev/null", Text("gone"), Existing::kKeep));
    EXPECT_EQ(WriteWholeFile("/dev/full", Text("full"), Existing::kReplace).Text(),
              "No space left on device");
}

// A name for a descriptor of the program's own, though that may be a file's: what stands before goes on.
TEST(OutputFile, WritesToItsOwnDescriptors) {
    const TempFolder folder;
    const int file = open((folder / "log").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_EQ(write(file, "one ", 4), 4);
    const std::string own = "/dev/fd/" + std::to_string(file);
    fs::create_symlink("/proc/self/fd/" + std::to_string(file), folder / "stdout");
    EXPECT_FALSE(WriteWholeFile(own, Text("two "), Existing::kKeep));
    EXPECT_FALSE(WriteWholeFile(folder / "stdout", Text("three"), Existing::kReplace));
    EXPECT_TRUE(fs::is_symlink(folder / "stdout"));
    EXPECT_EQ(Read(folder / "log"), "one two three");
    close(file);
    EXPECT_EQ(WriteWholeFile(own, {}, Existing::kKeep).Text(), "Bad file descriptor");
}

}  // namespace
}  // namespace texfile
