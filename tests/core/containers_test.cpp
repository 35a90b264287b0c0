#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include "core/class_registry.h"
#include "core/file_bytes.h"
#include "core/file_stream.h"
#include "core/list.h"
#include "core/mstring.h"
#include "core/trace.h"
#include "tests/temp_folder.h"

namespace zorvan {
namespace {

TEST(List, GrowsInEightsFindsAndCopies) {
    List<int> list;
    for (int i = 0; i < 16; ++i) {
        ASSERT_TRUE(list.Append(i));
        EXPECT_EQ(list.Capacity(), i < 8 ? 8u : 16u) << i;
    }
    ASSERT_TRUE(list.Append(list[1]));  // an element of the array that is full and moves
    EXPECT_EQ(list.IndexOf(1), 1u);
    list.RemoveAt(1);
    EXPECT_EQ(list.IndexOf(1), 15u);
    list.RemoveAt(99);
    List<int> copy = list;
    list.RemoveLast();
    EXPECT_EQ(copy.Last(), 1);
    copy = list;
    EXPECT_EQ(copy.Count(), 15u);
    EXPECT_EQ(copy.IndexOf(1), List<int>::kNotFound);
    copy.Clear();
    EXPECT_EQ(copy.Data(), nullptr);
    ASSERT_TRUE(copy.Resize(4));
    EXPECT_EQ(copy.Capacity(), 8u);
    EXPECT_EQ(copy[3], 0);
}

TEST(MString, ConvertsUtf8) {
    const struct {
        std::string_view utf8;
        std::wstring wide;
        std::string back;
    } cases[] = {
        {"Grün \xE2\x82\xAC \xF0\x9F\x8E\xA8", L"Grün \u20AC \U0001F3A8", "Grün € \U0001F3A8"},
        {"a\xFFz\xC0\xAF", L"a\uFFFDz\uFFFD", "a\uFFFDz\uFFFD"},  // the last one in too long a form
        {"\xED\xBF\xBF", L"\uFFFD", "\uFFFD"},                    // half of a pair
        {"\xF4\x90\x80\x80", L"\uFFFD", "\uFFFD"},                // beyond the last
        {{"\xE2\x82\x82", 2}, L"\uFFFD", "\uFFFD"},               // cut off
    };
    for (auto const& row : cases) {
        const MStringT<wchar_t> wide = FromUtf8(row.utf8);
        EXPECT_EQ(wide.View(), row.wide) << row.utf8;
        EXPECT_EQ(ToUtf8(wide), row.back) << row.utf8;
    }
    EXPECT_EQ(ToUtf8(MStringT<wchar_t>(L"\x7FF\x800\xD800")), "\u07FF\u0800\uFFFD");
}

struct Record final : ClassContainer {
    explicit Record(int& count) : ClassContainer(1), deleted(count) {}
    ~Record() override { ++deleted; }
    void* Create() override { return this; }
    int& deleted;
};

TEST(ClassRegistry, CreatesByTheLatestRecordAndOwnsAll) {
    int deleted = 0;
    {
        ClassRegistry registry;
        EXPECT_EQ(registry.Create(1), nullptr);
        for (Record* record : {new Record(deleted), new Record(deleted)}) {
            EXPECT_TRUE(registry.RegisterClass(record));
            EXPECT_EQ(registry.Create(1), record);
        }
    }
    EXPECT_EQ(deleted, 2);
}

TEST(Trace, GoesToTheSink) {
    std::string seen;
    Debug::SetSink([](void* to, std::string_view text) { *static_cast<std::string*>(to) += text; }, &seen);
    Debug::Trace("%s is %d;", std::string(5000, 'x').c_str(), 42);
    Debug::SetSink(nullptr, nullptr);
    EXPECT_EQ(seen, std::string(5000, 'x') + " is 42;");
}

TEST(Files, AreWrittenWholeAndReadBack) {
    const TempFolder folder;
    const std::string path = folder / "zörvan_bytes";
    EXPECT_EQ(WriteFileBytes(path, "first"), "");
    FileStream stream;
    ASSERT_TRUE(stream.Open(FromUtf8(path), FileMode::Write));
    EXPECT_EQ(stream.Write("other", 5), 5u);
    stream.Close();
    EXPECT_EQ(stream.Write("x", 1), 0u);
    const FileBytes read = ReadFileBytes(path, 5);
    EXPECT_EQ(std::string(read.bytes.begin(), read.bytes.end()), "other");
    EXPECT_EQ(ReadFileBytes(path, 4).error, "got more than 4 bytes");
    EXPECT_NE(WriteFileBytes(path + "/below", "x"), "");
    EXPECT_FALSE(stream.Open(FromUtf8(path + "/below"), FileMode::Write));
}

}  // namespace
}  // namespace zorvan
