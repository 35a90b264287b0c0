// Drawing the same string again takes no memory; counted by replacing the program's allocation functions.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tests/core/fake_backend.h"

namespace {

size_t allocations = 0;

}  // namespace

void* operator new(size_t size, std::nothrow_t const&) noexcept {
    ++allocations;
    return std::malloc(size > 0 ? size : 1);
}
void* operator new(size_t size) {
    if (void* memory = operator new(size, std::nothrow)) {
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
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}

namespace zorvan::test {
namespace {

TEST(FontAllocations, NonePerGlyphAndFrame) {
    const RefT<FakeFont> font(new FakeFont);
    font->lineHeight = Fix(10);
    Glyph glyph;
    glyph.width = glyph.height = 4;
    glyph.advance = Fix(5);
    for (uint32_t c = ' '; c <= '~'; ++c) {
        font->AddGlyph(c, glyph);
    }
    std::wstring words;
    for (int i = 0; i < 6000; ++i) {
        words += i % 6 == 5 ? L' ' : static_cast<wchar_t>(L'a' + i % 26);
    }
    const MStringT<wchar_t> text(words);
    FakeDevice device;
    const auto draw = [&] {
        font->draws.clear();
        const size_t before = allocations;
        font->DrawString(device, text, {}, {Fix(400), {}}, TextAlignment::Center, 0, 0);
        return allocations - before;
    };
    EXPECT_GT(draw(), 0u) << "the first time places and records";
    EXPECT_EQ(font->draws.size(), 5000u);
    EXPECT_EQ(draw(), 0u);
}

}  // namespace
}  // namespace zorvan::test
