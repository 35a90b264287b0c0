#include "core/layout_cache.h"

#include <algorithm>

namespace zorvan {
namespace {

constexpr uint32_t kHashBasis = 0x811C9DC5u;
constexpr uint32_t kHashPrime = 16777619u;
constexpr size_t kHashedEnds = 32;

// Looks at the ends of long strings only: the whole string is compared afterwards anyway.
uint32_t Hash(std::wstring_view text, TextLayoutOptions const& options) {
    uint32_t hash = kHashBasis;
    const auto mix = [&hash](auto value) { hash = (hash ^ static_cast<uint32_t>(value)) * kHashPrime; };
    mix(text.size());
    for (wchar_t c : text.substr(0, kHashedEnds)) {
        mix(c);
    }
    if (text.size() > kHashedEnds) {
        for (wchar_t c : text.substr(std::max(kHashedEnds, text.size() - kHashedEnds))) {
            mix(c);
        }
    }
    mix(options.hasBox);
    mix(options.box.width.raw);
    mix(options.box.height.raw);
    mix(options.alignment);
    mix(options.letterSpacing);
    mix(options.lineSpacing);
    return hash ^ (hash >> 16);
}

}  // namespace

LayoutCache::Entry& LayoutCache::Find(std::wstring_view text, TextLayoutOptions const& options) {
    slots_.resize(kSlots);
    std::unique_ptr<Entry>& slot = slots_[Hash(text, options) % kSlots];
    if (!slot) {
        slot = std::make_unique<Entry>();
    }
    if (slot->text != text || !(slot->options == options)) {
        slot->text = text;
        slot->options = options;
        slot->valid = false;
    }
    return *slot;
}

}  // namespace zorvan
