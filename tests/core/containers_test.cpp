#include <gtest/gtest.h>

#include <clocale>

#include "core/class_registry.h"
#include "core/file_bytes.h"
#include "core/file_stream.h"
#include "core/list.h"
#include "core/mstring.h"
#include "core/referenced.h"
#include "core/trace.h"

namespace zorvan {
namespace {

TEST(List, GrowsOnlyWhenFullInEights) {
    List<int> list;
    EXPECT_EQ(sizeof(list), 2 * sizeof(void*) + (sizeof(void*) == 4 ? 4 : 0));
    for (uint32_t i = 0; i < 20; ++i) {
        ASSERT_TRUE(list.Append(static_cast<int>(i)));
        EXPECT_EQ(list.Capacity(), (i / 8 + 1) * 8) << i;
    }
    ASSERT_TRUE(list.Append(list[0]));  // an element of the array that may move
    EXPECT_EQ(list.Last(), 0);
    list.Clear();
    EXPECT_EQ(list.Capacity(), 0u);
    EXPECT_EQ(list.Data(), nullptr);
    ASSERT_TRUE(list.Resize(4));
    EXPECT_EQ(list.Count(), 4u);
    EXPECT_EQ(list.Capacity(), 8u);
    EXPECT_EQ(list[3], 0);
}

TEST(List, RemovesFindsAndCopies) {
    List<int> list;
    for (int value : {5, 6, 5, 7}) {
        list.Append(value);
    }
    EXPECT_EQ(list.IndexOf(5), 0u);
    list.RemoveAt(0);
    EXPECT_EQ(list.IndexOf(5), 1u);
    list.RemoveAt(9);
    EXPECT_EQ(list.Count(), 3u);
    List<int> copy = list;
    list.RemoveLast();
    EXPECT_EQ(copy.Count(), 3u);
    EXPECT_EQ(copy.Last(), 7);
    copy = list;
    EXPECT_EQ(copy.Count(), 2u);
    EXPECT_EQ(copy.IndexOf(7), List<int>::kNotFound);
}

TEST(MString, ConvertsUtf8) {
    struct Case {
        std::string_view utf8;
        std::wstring wide;
        std::string back;  // empty: as it was
    };
    const Case cases[] = {
        {"", L"", ""},
        {"Grün \xE2\x82\xAC \xF0\x9F\x8E\xA8", L"Grün \u20AC \U0001F3A8", ""},
        {"a\xFFz", L"a\uFFFDz", "a\xEF\xBF\xBDz"},
        {"\xC0\xAF", L"\uFFFD", "\xEF\xBF\xBD"},          // too long a form
        {"\xED\xA0\x80", L"\uFFFD", "\xEF\xBF\xBD"},      // half of a pair
        {"\xE2\x82", L"\uFFFD", "\xEF\xBF\xBD"},          // cut off
        {"\xF4\x90\x80\x80", L"\uFFFD", "\xEF\xBF\xBD"},  // beyond the last
    };
    for (Case const& c : cases) {
        const MStringT<wchar_t> wide = FromUtf8(c.utf8);
        EXPECT_EQ(wide.View(), c.wide) << c.utf8;
        EXPECT_EQ(ToUtf8(wide), c.back.empty() ? c.utf8 : c.back) << c.utf8;
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
        EXPECT_EQ(second->references, 1);
        RefT<Counted> moved = std::move(second);
        EXPECT_EQ(moved->references, 1);
        EXPECT_EQ(deleted, 0);
    }
    EXPECT_EQ(deleted, 1);
}

TEST(ClassId, IsTheHashOfTheName) {
    EXPECT_EQ(MakeClassId(u""), 5381u);
    EXPECT_EQ(MakeClassId(u"a"), 5381u * 33 + 'a');
    uint32_t hash = 5381;
    for (char c : std::string("TransformNode")) {
        hash = hash * 33 + static_cast<uint32_t>(c);
    }
    EXPECT_EQ(MakeClassId(u"TransformNode"), hash & 0x7FFFFFFF);
}

class NumberContainer final : public ClassContainer {
  public:
    NumberContainer(ClassId id, int* number, int& deleted)
        : ClassContainer(id), number_(number), deleted_(deleted) {}
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
        EXPECT_TRUE(registry.RegisterClass(new NumberContainer(1, &numbers[0], deleted)));
        EXPECT_TRUE(registry.RegisterClass(new ClassContainer(2)));
        EXPECT_EQ(registry.Create(1), &numbers[0]);
        EXPECT_EQ(registry.Create(2), nullptr);
        registry.RegisterClass(new NumberContainer(1, &numbers[1], deleted));
        EXPECT_EQ(registry.Create(1), &numbers[1]);
    }
    EXPECT_EQ(deleted, 2);
}

TEST(Trace, GoesToTheSink) {
    std::string seen;
    Debug::SetSink([](void* context, std::string_view text) { *static_cast<std::string*>(context) += text; },
                   &seen);
    Debug::Trace("%s is %d;", "answer", 42);
    Debug::Trace("%s", std::string(5000, 'x').c_str());
    Debug::SetSink(nullptr, nullptr);
    EXPECT_EQ(seen, "answer is 42;" + std::string(5000, 'x'));
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
    EXPECT_EQ(read.error, "");
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
