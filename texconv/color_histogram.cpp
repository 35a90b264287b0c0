// The colour hash, the histogram made from it, and the quantizer's memory.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "texconv/palette_quantizer.h"

namespace QXTextureConverter {

namespace {

constexpr std::uint32_t kBuckets = 20023;
constexpr std::size_t kItemsPerBlock = 1024;

struct HashItem {
    ColorItem item;
    HashItem* next;
};

// Items are handed out from blocks, so that a colour costs no allocation of its own.
struct HashBlock {
    HashBlock* next;
    std::array<HashItem, kItemsPerBlock> items;
};

std::uint32_t BucketOf(const Color& color) {
    const std::uint32_t hash = color.r * 33023u + color.g * 30013u + color.b * 27011u + color.a * 24007u;
    return (hash & 0x7FFFFFFF) % kBuckets;
}

[[noreturn]] void EndWithoutMemory(const char* text) {
    pm_message(text);
    std::exit(-1);
}

}  // namespace

struct ColorHash {
    std::array<HashItem*, kBuckets> buckets;
    HashBlock* blocks;
    std::size_t usedInBlock;
};

namespace {

HashItem* Find(const ColorHash& table, const Color& color) {
    HashItem* item = table.buckets[BucketOf(color)];
    while (item != nullptr && item->item.color != color) {
        item = item->next;
    }
    return item;
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
            if (HashItem* known = Find(*table, color); known != nullptr) {
                ++known->item.value;
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
    ColorItem* to = histogram;
    for (const HashItem* chain : table->buckets) {
        for (; chain != nullptr; chain = chain->next) {
            *to++ = chain->item;
        }
    }
    return histogram;
}

ColorHash* pam_allocacolorhash() {
    auto* table = new (std::nothrow) ColorHash{};
    if (table == nullptr) {
        pm_message("  out of memory allocating hash table");
    }
    return table;
}

int pam_addtoacolorhash(ColorHash* table, const Color& color, int value) {
    if (table->blocks == nullptr || table->usedInBlock == kItemsPerBlock) {
        auto* block = new (std::nothrow) HashBlock;
        if (block == nullptr) {
            return -1;
        }
        block->next = table->blocks;
        table->blocks = block;
        table->usedInBlock = 0;
    }
    HashItem*& chain = table->buckets[BucketOf(color)];
    HashItem& item = table->blocks->items[table->usedInBlock++];
    item = {{color, value}, chain};
    chain = &item;
    return 0;
}

int pam_lookupacolor(const ColorHash* table, const Color& color) {
    const HashItem* item = Find(*table, color);
    return item != nullptr ? item->item.value : -1;
}

void pam_freeacolorhash(ColorHash* table) {
    if (table == nullptr) {
        return;
    }
    while (table->blocks != nullptr) {
        HashBlock* next = table->blocks->next;
        delete table->blocks;
        table->blocks = next;
    }
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
