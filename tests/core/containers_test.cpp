#include <gtest/gtest.h>

#include "core/class_registry.h"
#include "core/file_bytes.h"
#include "core/file_stream.h"
#include "core/list.h"
#include "core/mstring.h"
#include "core/referenced.h"
#include "core/trace.h"

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
    EXPECT_EQ(copy.Count(), 16u);
    EXPECT_EQ(copy.Last(), 1);
    copy = list;
    EXPECT_EQ(copy.Count(), 15u);
    EXPECT_EQ(copy.IndexOf(1), List<int>::kNotFound);
    copy.Clear();
    EXPECT_EQ(copy.Capacity(), 0u);
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
        {"", L"", ""},
        {"Grün \xE2\x82\xAC \xF0\x9F\x8E\xA8", L"Grün \u20AC \U0001F3A8", "Grün € \U0001F3A8"},
        {"a\xFFz", L"a\uFFFDz", "a\uFFFDz"},
        {"\xC0\xAF", L"\uFFFD", "\uFFFD"},          // too long a form
        {"\xED\xA0\x80", L"\uFFFD", "\uFFFD"},      // half of a pair
        {"\xE2\x82", L"\uFFFD", "\uFFFD"},          // cut off
        {"\xF4\x90\x80\x80", L"\uFFFD", "\uFFFD"},  // beyond the last
    };
    for (auto const& row : cases) {
        const MStringT<wchar_t> wide = FromUtf8(row.utf8);
        EXPECT_EQ(wide.View(), row.wide) << row.utf8;
        EXPECT_EQ(ToUtf8(wide), row.back) << row.utf8;
    }
}

struct Counted final : Referenced {
    explicit Counted(int& deleted) : deleted_(deleted) {}
    ~Counted() override { ++deleted_; }
    int& deleted_;
};

TEST(Referenced, LivesAsLongAsSomeoneHoldsIt) {
    int deleted = 0;
    {
        RefT<Counted> first(new Counted(deleted));
        RefT<Counted> second = first;
        EXPECT_EQ(first->references, 2);
        EXPECT_EQ(Counted(*first).references, 0);
        deleted = 0;
        first = RefT<Counted>();
        RefT<Counted>& alias = second;
        second = alias;
        RefT<Counted> moved = std::move(second);
        EXPECT_EQ(moved->references, 1);
        EXPECT_EQ(deleted, 0);
    }
    EXPECT_EQ(deleted, 1);
}

class NumberContainer final : public ClassContainer {
  public:
    NumberContainer(int* number, int& deleted) : ClassContainer(1), number_(number), deleted_(deleted) {}
    ~NumberContainer() override { ++deleted_; }
    void* Create() override { return number_; }

  private:
    int* number_;
    int& deleted_;
};

TEST(ClassRegistry, CreatesByTheLatestRecordAndOwnsAll) {
    int numbers[2];
    int deleted = 0;
    {
        ClassRegistry registry;
        EXPECT_EQ(registry.Create(1), nullptr);
        EXPECT_FALSE(registry.RegisterClass(nullptr));
        for (int& number : numbers) {
            EXPECT_TRUE(registry.RegisterClass(new NumberContainer(&number, deleted)));
            EXPECT_EQ(registry.Create(1), &number);
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
    const std::string path = testing::TempDir() + "zörvan_bytes";
    EXPECT_EQ(WriteFileBytes(path, "first"), "");
    FileStream stream;
    ASSERT_TRUE(stream.Open(FromUtf8(path), FileMode::Write));
    EXPECT_EQ(stream.Write("other", 5), 5u);
    stream.Close();
    EXPECT_EQ(stream.Write("x", 1), 0u);
    const FileBytes read = ReadFileBytes(path, 5);
    EXPECT_EQ(std::string(read.bytes.begin(), read.bytes.end()), "other");
    EXPECT_EQ(ReadFileBytes(path, 4).error, "got more than 4 bytes");
    EXPECT_NE(ReadFileBytes(path + ".missing", 4).error, "");
    EXPECT_EQ(ReadFileBytes(testing::TempDir(), 4).error, "got a folder, expected a file");
    EXPECT_NE(WriteFileBytes(path + "/below", "x"), "");
    EXPECT_FALSE(stream.Open(FromUtf8(path + "/below"), FileMode::Write));
    std::remove(path.c_str());
}

}  // namespace
}  // namespace zorvan
