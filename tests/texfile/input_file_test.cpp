// Files are looked at before they are read, and sizes before memory is taken.
#include "texfile/input_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <thread>
#include <utility>

#include "tests/temp_folder.h"

namespace texfile {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Kind = IoError::Kind;

TEST(InputFile, GivesTheFirstBytesAndThenAll) {
    const TempFolder folder;
    Bytes content(3'000'000);
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<std::uint8_t>(i ^ i >> 8 ^ i >> 16);
    }
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const auto& [name, inPieces] :
         {std::pair("file", false), {"pipe", false}, {"file", true}, {"pipe", true}}) {
        SCOPED_TRACE(std::string(name) + (inPieces ? " in pieces" : ""));
        const std::string path = folder / name;
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
        Bytes all(content.size());
        if (inPieces) {
            const std::size_t ends[] = {0, 5, 12, 20, 2'000'000, content.size()};
            for (std::size_t i = 1; i < std::size(ends); ++i) {
                const std::size_t wanted = ends[i] - ends[i - 1];
                std::uint64_t ahead = 0;
                EXPECT_FALSE(file.Ahead(wanted, ahead));
                ASSERT_EQ(ahead, wanted);
                EXPECT_FALSE(file.Take(std::span(all).subspan(ends[i - 1], wanted)));
            }
            std::uint64_t ahead = 1;
            EXPECT_FALSE(file.Ahead(9, ahead));
            EXPECT_EQ(ahead, 0u);
        } else {
            EXPECT_FALSE(file.ReadAll(content.size(), all));
        }
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

TEST(InputFile, SkipsTheRestAndTellsWhatWentMissing) {
    const TempFolder folder;
    const std::string path = folder / "file";
    std::ofstream(path) << "0123456789";
    std::uint64_t count = 0;
    for (const std::uint64_t largest : {6u, 5u}) {
        InputFile file;
        ASSERT_FALSE(file.Open(path));
        Bytes four(4);
        EXPECT_FALSE(file.Take(four));
        EXPECT_EQ(file.Skip(largest, count).kind, largest == 6 ? Kind::kNone : Kind::kTooLarge);
        EXPECT_EQ(count, 6u);
        EXPECT_FALSE(file.Skip(largest, count));
        EXPECT_EQ(count, 0u);
    }
    InputFile endless;
    ASSERT_FALSE(endless.Open("/dev/zero"));
    EXPECT_EQ(endless.Skip(9, count).kind, Kind::kTooLarge);
    InputFile cut;
    ASSERT_FALSE(cut.Open(path));
    EXPECT_FALSE(cut.Ahead(10, count));
    ASSERT_EQ(truncate(path.c_str(), 3), 0);
    Bytes ten(10);
    EXPECT_EQ(cut.Take(ten).kind, Kind::kEnds);
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
