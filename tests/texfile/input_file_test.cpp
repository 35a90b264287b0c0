// Files are looked at before they are read, and sizes before memory is taken.
#include "texfile/input_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tests/temp_folder.h"

namespace texfile {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Kind = IoError::Kind;

TEST(InputFile, GivesTheFirstBytesAndThenAll) {
    const TempFolder folder;
    const Bytes content(3'000'000, 7);
    for (const char* name : {"file", "pipe"}) {
        SCOPED_TRACE(name);
        const std::string path = folder / name;
        if (path.ends_with("pipe")) {
            ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        }
        std::thread writer([&] {
            std::ofstream(path, std::ios::binary)
                .write(reinterpret_cast<const char*>(content.data()), std::ssize(content));
        });
        if (path.ends_with("file")) {
            writer.join();
        }
        InputFile file;
        ASSERT_FALSE(file.Open(path));
        std::span<const std::uint8_t> first;
        EXPECT_FALSE(file.First(12, first));
        EXPECT_EQ(first.size(), 12u);
        Bytes all;
        EXPECT_FALSE(file.ReadAll(content.size(), all));
        EXPECT_EQ(all, content);
        if (writer.joinable()) {
            writer.join();
        }
    }
}

TEST(InputFile, RefusesWhatIsTooLargeBeforeItTakesMemory) {
    const TempFolder folder;
    const std::string path = folder / "sparse";
    std::ofstream(path).close();
    ASSERT_EQ(truncate(path.c_str(), off_t{1} << 40), 0);
    Bytes bytes;
    EXPECT_EQ(ReadWholeFile(path, (std::uint64_t{1} << 40) - 1, bytes).kind, Kind::kTooLarge);
    EXPECT_EQ(bytes.capacity(), 0u);
}

TEST(InputFile, SaysWhatItCannotRead) {
    const TempFolder folder;
    std::ofstream(folder / "five") << "12345";
    Bytes bytes;
    const struct {
        std::string path;
        std::uint64_t largest;
        std::string text;
    } rows[] = {
        {folder / "five", 5, ""},
        {folder / "five", 4, "got more than 4 bytes"},
        {"/proc/self/status", 4, "got more than 4 bytes"},  // has no size
        {folder.Path(), 4, "got a folder, expected a file"},
        {folder / "missing", 4, "No such file or directory"},
        {(folder / "five") + std::string(1, '\0') + ".png", 5,
         "got a name with a zero byte, expected none in it"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ReadWholeFile(row.path, row.largest, bytes).Text(), row.text) << row.path;
    }
}

}  // namespace
}  // namespace texfile
