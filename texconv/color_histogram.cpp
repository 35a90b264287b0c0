// The colour hash and the histogram made from it.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kBuckets = 20023;
constexpr std::uint32_t kFirstItems = 1024;
// Most tables hold the colours of one histogram.
constexpr unsigned kFirstSlotBits = 17;

std::uint32_t BucketOf(const Color& color) {
    const std::uint32_t hash = color.r * 33023u + color.g * 30013u + color.b * 27011u + color.a * 24007u;
    return (hash & 0x7FFFFFFF) % kBuckets;
}

std::uint32_t KeyOf(const Color& color) {
    return std::bit_cast<std::uint32_t>(color);
}

}  // namespace

// The items lie in the order of their coming, which tells the chains of the buckets. Slots, at least twice as
// many, find them: a colour's slot is the first from its own on that is free (0) or holds the number of its
// newest item, counted from 1.
struct ColorHash {
    ColorItem* items = nullptr;
    std::uint32_t count = 0;
    std::uint32_t room = 0;
    std::uint32_t* slots = nullptr;
    unsigned slotBits = 0;
};

namespace {

std::uint32_t& SlotOf(const ColorHash& table, std::uint32_t key) {
    constexpr std::uint32_t kSpread = 2654435769u;
    const std::uint32_t mask = (1u << table.slotBits) - 1;
    std::uint32_t at = key * kSpread >> (32 - table.slotBits);
    while (table.slots[at] != 0 && KeyOf(table.items[table.slots[at] - 1].color) != key) {
        at = (at + 1) & mask;
    }
    return table.slots[at];
}

bool GrowSlots(ColorHash& table, unsigned slotBits) {
    auto* slots = static_cast<std::uint32_t*>(std::calloc(std::size_t{1} << slotBits, sizeof(std::uint32_t)));
    if (slots == nullptr) {
        return false;
    }
    std::free(table.slots);
    table.slots = slots;
    table.slotBits = slotBits;
    for (std::uint32_t i = 0; i < table.count; ++i) {
        SlotOf(table, KeyOf(table.items[i].color)) = i + 1;
    }
    return true;
}

bool GrowItems(ColorHash& table) {
    const std::uint32_t room = std::max(table.room * 2, kFirstItems);
    auto* items = static_cast<ColorItem*>(std::realloc(table.items, room * sizeof(ColorItem)));
    if (items == nullptr) {
        return false;
    }
    table.items = items;
    table.room = room;
    return true;
}

ColorItem* Find(const ColorHash& table, const Color& color) {
    const std::uint32_t slot = SlotOf(table, KeyOf(color));
    return slot != 0 ? table.items + slot - 1 : nullptr;
}

}  // namespace

ColorItem* pam_computeacolorhist(const Color* const* rows, int cols, int rowcount, int maxacolors,
                                 int* colors) {
    ColorHash* table = pam_computeacolorhash(rows, cols, rowcount, maxacolors, colors);
    if (table == nullptr) {
        return nullptr;
    }
    ColorItem* histogram = pam_acolorhashtoacolorhist(table, *colors);
    pam_freeacolorhash(table);
    if (histogram == nullptr) {
        *colors = 0;
    }
    return histogram;
}

ColorHash* pam_computeacolorhash(const Color* const* rows, int cols, int rowcount, int maxacolors,
                                 int* colors) {
    *colors = 0;
    ColorHash* table = pam_allocacolorhash();
    if (table == nullptr) {
        return nullptr;
    }
    ColorHash known = *table;  // a copy that no store to an item can change
    for (int y = 0; y < rowcount; ++y) {
        for (int x = 0; x < cols; ++x) {
            const Color& color = rows[y][x];
            if (ColorItem* item = Find(known, color); item != nullptr) {
                ++item->value;
                continue;
            }
            if (*colors >= maxacolors) {
                *colors = maxacolors + 1;
                pam_freeacolorhash(table);
                return nullptr;
            }
            if (pam_addtoacolorhash(table, color, 1) != 0) {
                pm_message("  out of memory computing hash table");
                *colors = 0;
                pam_freeacolorhash(table);
                return nullptr;
            }
            known = *table;
            ++*colors;
        }
    }
    return table;
}

ColorItem* pam_acolorhashtoacolorhist(const ColorHash* table, int colors) {
    const auto count = static_cast<std::size_t>(std::max(colors, 1));
    auto* histogram = static_cast<ColorItem*>(std::malloc(count * sizeof(ColorItem)));
    if (histogram == nullptr) {
        pm_message("  out of memory generating histogram");
        return nullptr;
    }
    // Where each bucket ends: its newest item comes first.
    std::array<std::uint32_t, kBuckets> ends{};
    for (std::uint32_t i = 0; i < table->count; ++i) {
        ++ends[BucketOf(table->items[i].color)];
    }
    std::uint32_t end = 0;
    for (std::uint32_t& bucket : ends) {
        end += bucket;
        bucket = end;
    }
    for (std::uint32_t i = 0; i < table->count; ++i) {
        histogram[--ends[BucketOf(table->items[i].color)]] = table->items[i];
    }
    return histogram;
}

ColorHash* pam_allocacolorhash() {
    auto* table = new (std::nothrow) ColorHash;
    if (table == nullptr || !GrowSlots(*table, kFirstSlotBits)) {
        delete table;
        pm_message("  out of memory allocating hash table");
        return nullptr;
    }
    return table;
}

int pam_addtoacolorhash(ColorHash* table, const Color& color, int value) {
    if (table->count == table->room && !GrowItems(*table)) {
        return -1;
    }
    if (table->count >> (table->slotBits - 1) != 0 && !GrowSlots(*table, table->slotBits + 1)) {
        return -1;
    }
    table->items[table->count] = {color, value};
    std::uint32_t& slot = SlotOf(*table, KeyOf(color));
    slot = ++table->count;
    return 0;
}

int pam_lookupacolor(const ColorHash* table, const Color& color) {
    const ColorItem* item = Find(*table, color);
    return item != nullptr ? item->value : -1;
}

std::span<ColorItem> pam_coloritems(ColorHash* table) {
    return {table->items, table->count};
}

void pam_mapcolors(const ColorHash* table, const Color* pixels, std::size_t count, unsigned char* bytes) {
    const ColorHash known = *table;  // a copy that no store to a byte can change
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(known.items[SlotOf(known, KeyOf(pixels[i])) - 1].value);
    }
}

void pam_freeacolorhash(ColorHash* table) {
    if (table == nullptr) {
        return;
    }
    std::free(table->slots);
    std::free(table->items);
    delete table;
}

void pam_freeacolorhist(ColorItem* histogram) {
    std::free(histogram);
}

}  // namespace QXTextureConverter
