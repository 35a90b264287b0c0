// The colour hash, the histogram made from it, and the quantizer's memory.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kBuckets = 20023;
constexpr std::uint32_t kFirstItems = 1024;
// Most tables hold the colours of one histogram.
constexpr unsigned kFirstSlotBits = 16;

std::uint32_t BucketOf(const Color& color) {
    const std::uint32_t hash = color.r * 33023u + color.g * 30013u + color.b * 27011u + color.a * 24007u;
    return (hash & 0x7FFFFFFF) % kBuckets;
}

std::uint32_t KeyOf(const Color& color) {
    return std::bit_cast<std::uint32_t>(color);
}

// A colour and the number of its newest item plus 1; 0 marks a free slot.
struct Slot {
    std::uint32_t key;
    std::uint32_t item;
};

[[noreturn]] void EndWithoutMemory(const char* text) {
    pm_message(text);
    std::exit(-1);
}

}  // namespace

// The items lie in the order of their coming, which tells the chains of the buckets; slots, at least twice as
// many, find them: a colour's slot is the first from its own on that is free or has it.
struct ColorHash {
    ColorItem* items = nullptr;
    std::uint32_t count = 0;
    std::uint32_t room = 0;
    Slot* slots = nullptr;
    unsigned slotBits = 0;
};

namespace {

Slot& SlotOf(const ColorHash& table, std::uint32_t key) {
    constexpr std::uint32_t kSpread = 2654435769u;
    const std::uint32_t mask = (1u << table.slotBits) - 1;
    std::uint32_t at = key * kSpread >> (32 - table.slotBits);
    while (table.slots[at].item != 0 && table.slots[at].key != key) {
        at = (at + 1) & mask;
    }
    return table.slots[at];
}

bool GrowSlots(ColorHash& table, unsigned slotBits) {
    auto* slots = static_cast<Slot*>(std::calloc(std::size_t{1} << slotBits, sizeof(Slot)));
    if (slots == nullptr) {
        return false;
    }
    std::free(table.slots);
    table.slots = slots;
    table.slotBits = slotBits;
    for (std::uint32_t i = 0; i < table.count; ++i) {
        const std::uint32_t key = KeyOf(table.items[i].color);
        SlotOf(table, key) = {key, i + 1};
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
    const Slot& slot = SlotOf(table, KeyOf(color));
    return slot.item != 0 ? table.items + slot.item - 1 : nullptr;
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
    for (int y = 0; y < rowcount; ++y) {
        for (int x = 0; x < cols; ++x) {
            const Color& color = rows[y][x];
            if (ColorItem* known = Find(*table, color); known != nullptr) {
                ++known->value;
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
    const std::uint32_t key = KeyOf(color);
    table->items[table->count] = {color, value};
    SlotOf(*table, key) = {key, ++table->count};
    return 0;
}

int pam_lookupacolor(const ColorHash* table, const Color& color) {
    const ColorItem* item = Find(*table, color);
    return item != nullptr ? item->value : -1;
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

void* pm_allocrow(std::size_t cols, std::size_t size) {
    void* row =
        size == 0 || cols <= SIZE_MAX / size ? std::malloc(std::max<std::size_t>(cols * size, 1)) : nullptr;
    if (row == nullptr) {
        EndWithoutMemory("  out of memory allocating a row");
    }
    return row;
}

void pm_freerow(void* row) {
    std::free(row);
}

// One block of pointers and one of rows, which the first pointer owns; so there is always one.
void** pm_allocarray(std::size_t cols, std::size_t rows, std::size_t size) {
    rows = std::max<std::size_t>(rows, 1);
    const std::size_t rowBytes = size == 0 || cols <= SIZE_MAX / size ? cols * size : SIZE_MAX;
    const bool fits = rowBytes <= SIZE_MAX / rows && rows <= SIZE_MAX / sizeof(void*);
    auto** array = fits ? static_cast<void**>(std::malloc(rows * sizeof(void*))) : nullptr;
    auto* memory = array != nullptr
                       ? static_cast<char*>(std::malloc(std::max<std::size_t>(rows * rowBytes, 1)))
                       : nullptr;
    if (memory == nullptr) {
        std::free(array);
        EndWithoutMemory("  out of memory allocating an array");
    }
    for (std::size_t y = 0; y < rows; ++y) {
        array[y] = memory + y * rowBytes;
    }
    return array;
}

void pm_freearray(void** array) {
    std::free(array[0]);
    std::free(array);
}

void pm_message(const char* text) {
    std::puts(text);
    std::fflush(stdout);
}

}  // namespace QXTextureConverter
