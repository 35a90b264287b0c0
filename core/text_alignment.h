// How lines stand in a text's box, as one number and as words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/api.h"

namespace zorvan {

// One value of each direction, added up.
struct TextAlignment {
    enum Enum : int32_t { Left = 0, Center = 1, Right = 2, Top = 0, Middle = 4, Bottom = 8 };
    static constexpr int32_t kHorizontalMask = 3;
    static constexpr int32_t kVerticalMask = 12;
};

// One or two of left, center, right, top, middle, bottom, in any order, with spaces between them; what is
// not named is left or top. "centre" is read as "center". Nothing when the words say something else.
ZORVAN_CORE_API std::optional<int32_t> ParseTextAlignment(std::string_view words);
// Two words, the horizontal one first; unknown bits read as left and top.
ZORVAN_CORE_API std::string TextAlignmentWords(int32_t alignment);

}  // namespace zorvan
