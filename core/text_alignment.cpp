#include "core/text_alignment.h"

#include <algorithm>

namespace zorvan {
namespace {

struct Word {
    std::string_view word;
    int32_t value, mask;
};

// The first word of a value is the one that is written.
constexpr Word kWords[] = {{"left", TextAlignment::Left, TextAlignment::kHorizontalMask},
                           {"center", TextAlignment::Center, TextAlignment::kHorizontalMask},
                           {"centre", TextAlignment::Center, TextAlignment::kHorizontalMask},
                           {"right", TextAlignment::Right, TextAlignment::kHorizontalMask},
                           {"top", TextAlignment::Top, TextAlignment::kVerticalMask},
                           {"middle", TextAlignment::Middle, TextAlignment::kVerticalMask},
                           {"bottom", TextAlignment::Bottom, TextAlignment::kVerticalMask}};

std::string_view WordOf(int32_t alignment, int32_t mask) {
    for (Word const& row : kWords) {
        if (row.mask == mask && row.value == (alignment & mask)) {
            return row.word;
        }
    }
    return WordOf(0, mask);
}

}  // namespace

std::optional<int32_t> ParseTextAlignment(std::string_view words) {
    int32_t alignment = 0, named = 0;
    while (true) {
        words.remove_prefix(std::min(words.find_first_not_of(' '), words.size()));
        if (words.empty()) {
            return named != 0 ? std::optional(alignment) : std::nullopt;
        }
        const std::string_view word = words.substr(0, words.find(' '));
        words.remove_prefix(word.size());
        Word const* found = nullptr;
        for (Word const& row : kWords) {
            found = row.word == word ? &row : found;
        }
        if (found == nullptr || (named & found->mask) != 0) {
            return std::nullopt;
        }
        named |= found->mask;
        alignment |= found->value;
    }
}

std::string TextAlignmentWords(int32_t alignment) {
    return std::string(WordOf(alignment, TextAlignment::kHorizontalMask)) + ' ' +
           std::string(WordOf(alignment, TextAlignment::kVerticalMask));
}

}  // namespace zorvan
