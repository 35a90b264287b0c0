// Rows of pixels, pulled one at a time: the conversion's steps stand one behind the other, and none needs the
// whole image.
#pragma once

#include <cstdint>
#include <memory>
#include <new>

namespace QXTextureConverter {

class RowSource {
  public:
    RowSource() = default;
    virtual ~RowSource() = default;
    RowSource(const RowSource&) = delete;
    RowSource& operator=(const RowSource&) = delete;

    // Stores row `y` as packed working pixels. Any order of rows is possible; rising ones are cheapest.
    virtual void Read(std::uint32_t y, std::uint8_t* to) = 0;

    // The row where it already lies in memory as packed working pixels, or null.
    virtual const std::uint8_t* Peek(std::uint32_t y) {
        static_cast<void>(y);
        return nullptr;
    }

    // The row in place or, if it is not in memory, in `scratch`.
    const std::uint8_t* Row(std::uint32_t y, std::uint8_t* scratch) {
        if (const std::uint8_t* row = Peek(y); row != nullptr) {
            return row;
        }
        Read(y, scratch);
        return scratch;
    }
};

using RowSourcePointer = std::unique_ptr<RowSource>;

// What `width` pixels have when each has `count`; throws std::bad_alloc where no memory can hold as many.
inline std::size_t CountInRow(std::uint32_t width, std::uint32_t count) {
    if (count != 0 && width > SIZE_MAX / 8 / count) {
        throw std::bad_alloc();
    }
    return std::size_t{width} * count;
}

// Memory for one row; throws std::bad_alloc.
using RowMemory = std::unique_ptr<std::uint8_t[]>;
inline RowMemory AllocateRow(std::uint32_t width, std::uint32_t bytesPerPixel) {
    return std::make_unique_for_overwrite<std::uint8_t[]>(CountInRow(width, bytesPerPixel));
}

}  // namespace QXTextureConverter
