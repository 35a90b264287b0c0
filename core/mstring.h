// Strings of the scene: text and file paths.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "core/api.h"

namespace zorvan {

template <typename C>
class MStringT {
  public:
    MStringT() = default;
    MStringT(C const* text) : text_(text) {}  // NOLINT: implicit on purpose
    explicit MStringT(std::basic_string<C> text) : text_(std::move(text)) {}

    C const* CStr() const { return text_.c_str(); }
    size_t Length() const { return text_.size(); }
    C operator[](size_t index) const { return text_[index]; }
    std::basic_string_view<C> View() const { return text_; }
    bool operator==(MStringT const&) const = default;

  private:
    std::basic_string<C> text_;
};

// Conversions between UTF-8 and wide text; malformed input becomes U+FFFD.
ZORVAN_CORE_API MStringT<wchar_t> FromUtf8(std::string_view text);
ZORVAN_CORE_API std::string ToUtf8(MStringT<wchar_t> const& text);

}  // namespace zorvan
