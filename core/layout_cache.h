// Remembers where the glyphs of recently drawn strings lie.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/text_layout.h"

namespace zorvan {

// A table of fixed size with one entry to a slot: a string that is drawn again and again is laid out once,
// and one that changes uses the memory of an older one.
class LayoutCache {
  public:
    struct Entry {
        std::wstring text;
        TextLayoutOptions options;
        std::vector<PlacedGlyph> glyphs;
        TextExtent extent;
        bool valid = false;
    };

    // The entry of the string; unless it is valid the caller fills glyphs and extent in and sets valid.
    Entry& Find(std::wstring_view text, TextLayoutOptions const& options);
    void Clear() { slots_.clear(); }

  private:
    static constexpr size_t kSlots = 1024;
    std::vector<std::unique_ptr<Entry>> slots_;
};

}  // namespace zorvan
