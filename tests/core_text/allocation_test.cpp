// Drawing the same string again takes no memory; counted by replacing the program's allocation functions.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/core/fake_backend.h"

namespace {

size_t allocations = 0;

}  // namespace

void* operator new(size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

namespace zorvan::test {
namespace {

TEST(FontAllocations, NonePerGlyphAndFrame) {
    const RefT<FakeFont> font(new FakeFont);
    font->lineHeight = Fix(10);
    font->AddGlyph('a', {4, 4, 0, {}, {}, {}, {}, {}, {}, Fix(5)});
    std::wstring words;
    for (int i = 0; i < 1000; ++i) {
        words += L"aaaaa ";
    }
    const MStringT<wchar_t> text(words);
    FakeDevice device;
    for (bool again : {false, true}) {
        font->draws.clear();
        const size_t before = allocations;
        font->DrawString(device, text, {}, {Fix(400), {}}, TextAlignment::Center, 0, 0);
        EXPECT_EQ(allocations == before, again) << "the first time places and records";
        EXPECT_EQ(font->draws.size(), 5000u);
    }
}

}  // namespace
}  // namespace zorvan::test
