// Plain pixels in loops that compilers turn into vectors: the layouts of the usual formats as constants.
#pragma once

#include <cstring>

#include "texconv/row_kernels.h"

namespace QXTextureConverter {
namespace {

constexpr std::size_t kPixelsPerStep = 4;

#if defined(__AVX2__) || defined(__aarch64__)

using ByteVector = std::uint8_t __attribute__((vector_size(16)));
// A step touches 16 bytes for its 12; the pixels after it must make up for them.
constexpr std::size_t kPixelsBeyond = 2;

[[gnu::always_inline]] inline void WidenStep(const std::uint8_t* from, std::uint8_t* to) {
    ByteVector bytes;
    std::memcpy(&bytes, from, sizeof(bytes));
    bytes =
        __builtin_shufflevector(bytes, ByteVector{}, 0, 1, 2, 16, 3, 4, 5, 16, 6, 7, 8, 16, 9, 10, 11, 16);
    std::memcpy(to, &bytes, sizeof(bytes));
}

[[gnu::always_inline]] inline void NarrowStep(const std::uint8_t* from, std::uint8_t* to) {
    ByteVector bytes;
    std::memcpy(&bytes, from, sizeof(bytes));
    bytes =
        __builtin_shufflevector(bytes, ByteVector{}, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 16, 16, 16, 16);
    std::memcpy(to, &bytes, sizeof(bytes));
}

#else

// Without a shuffle of bytes, four pixels in three words.
constexpr std::size_t kPixelsBeyond = 0;

[[gnu::always_inline]] inline void WidenStep(const std::uint8_t* from, std::uint8_t* to) {
    std::uint32_t in[3];
    std::memcpy(in, from, sizeof(in));
    const std::uint32_t out[4] = {in[0] & 0xFFFFFF, (in[0] >> 24 | in[1] << 8) & 0xFFFFFF,
                                  (in[1] >> 16 | in[2] << 16) & 0xFFFFFF, in[2] >> 8};
    std::memcpy(to, out, sizeof(out));
}

[[gnu::always_inline]] inline void NarrowStep(const std::uint8_t* from, std::uint8_t* to) {
    std::uint32_t in[4];
    std::memcpy(in, from, sizeof(in));
    const std::uint32_t out[3] = {(in[0] & 0xFFFFFF) | in[1] << 24, (in[1] >> 8 & 0xFFFF) | in[2] << 16,
                                  (in[2] >> 16 & 0xFF) | in[3] << 8};
    std::memcpy(to, out, sizeof(out));
}

#endif

void Widen24(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    std::size_t i = 0;
    for (; i + kPixelsPerStep + kPixelsBeyond <= count; i += kPixelsPerStep) {
        WidenStep(from + i * 3, to + i * 4);
    }
    for (; i < count; ++i) {
        std::uint32_t word = 0;
        std::memcpy(&word, from + i * 3, 3);
        std::memcpy(to + i * 4, &word, 4);
    }
}

void Narrow24(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    std::size_t i = 0;
    for (; i + kPixelsPerStep + kPixelsBeyond <= count; i += kPixelsPerStep) {
        NarrowStep(from + i * 4, to + i * 3);
    }
    for (; i < count; ++i) {
        std::memcpy(to + i * 3, from + i * 4, 3);
    }
}

// Words of three bytes go through words of four, some at a time so that these stay in the nearest cache.
constexpr std::size_t kChunkPixels = 256;

// The loops of each direction, over words of a type and over words of three bytes; the plain kernel; and a
// pixel's bytes before and after the conversion where a word has three.
struct Unpacking {
    static constexpr auto kPlain = &RowKernels::unpack;
    static constexpr std::size_t kFrom24 = 3;
    static constexpr std::size_t kTo24 = 4;

    template <typename Word>
    [[gnu::always_inline]] static void Words(const WordLayout& layout, const std::uint8_t* __restrict words,
                                             std::size_t count, std::uint8_t* __restrict rgba) {
        constexpr std::uint32_t kOpaque = 0xFF000000;
        const WordLayout fields = layout;
        for (std::size_t i = 0; i < count; ++i) {
            Word stored;
            std::memcpy(&stored, words + i * sizeof(Word), sizeof(Word));
            const std::uint32_t word = stored;
            std::uint32_t pixel = fields.opaque ? kOpaque : 0;
            for (unsigned c = 0; c < 4; ++c) {
                const ChannelPlace& place = fields.places[c];
                pixel |= ((((word >> place.shift) & place.readBits) * place.scale) >> place.scaleShift)
                         << (8 * c);
            }
            std::memcpy(rgba + i * 4, &pixel, 4);
        }
    }

    [[gnu::always_inline]] static void Words24(const WordLayout& layout, const std::uint8_t* words,
                                               std::size_t count, std::uint8_t* rgba) {
        std::uint8_t chunk[kChunkPixels * 4];
        Widen24(words, count, chunk);
        Words<std::uint32_t>(layout, chunk, count, rgba);
    }
};

struct Packing {
    static constexpr auto kPlain = &RowKernels::pack;
    static constexpr std::size_t kFrom24 = 4;
    static constexpr std::size_t kTo24 = 3;

    template <typename Word>
    [[gnu::always_inline]] static void Words(const WordLayout& layout, const std::uint8_t* __restrict rgba,
                                             std::size_t count, std::uint8_t* __restrict words) {
        const WordLayout fields = layout;
        for (std::size_t i = 0; i < count; ++i) {
            std::uint32_t pixel;
            std::memcpy(&pixel, rgba + i * 4, 4);
            std::uint32_t word = 0;
            for (unsigned c = 0; c < 4; ++c) {
                const ChannelPlace& place = fields.places[c];
                word |= ((pixel >> (8 * c + place.dropped)) & place.writeBits) << place.shift;
            }
            const auto stored = static_cast<Word>(word);
            std::memcpy(words + i * sizeof(Word), &stored, sizeof(Word));
        }
    }

    [[gnu::always_inline]] static void Words24(const WordLayout& layout, const std::uint8_t* rgba,
                                               std::size_t count, std::uint8_t* words) {
        std::uint8_t chunk[kChunkPixels * 4];
        Words<std::uint32_t>(layout, rgba, count, chunk);
        Narrow24(chunk, count, words);
    }
};

// Layouts with loops of their own, in which every shift and mask is a constant.
constexpr WordLayout kRgbaWords(detail::kRgba8888, 4);
constexpr WordLayout kBgraWords({0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 4);
constexpr WordLayout kRgb888Words(detail::kRgb888, 3);
constexpr WordLayout kRgb565Words(detail::kRgb565, 2);
constexpr WordLayout kRgba5551Words(detail::kRgba5551, 2);
constexpr WordLayout kRgba4444Words(detail::kRgba4444, 2);
constexpr WordLayout kLa88Words({0xFF00, 0xFF00, 0xFF00, 0x00FF}, 2);
constexpr WordLayout kL8Words({0xFF, 0xFF, 0xFF, 0}, 1);

[[gnu::always_inline]] inline bool IsLike(const WordLayout& layout, const WordLayout& usual) {
    return layout.bytes == usual.bytes && layout.opaque == usual.opaque &&
           layout.masks.red == usual.masks.red && layout.masks.green == usual.masks.green &&
           layout.masks.blue == usual.masks.blue && layout.masks.alpha == usual.masks.alpha;
}

// Calls action(layout, word) with a constant for the layout if it is a usual one, and with a value of the
// type that its words are stored in (32 bits for words of three bytes).
template <typename Action>
[[gnu::always_inline]] inline void WithLayout(const WordLayout& layout, const Action& action) {
    if (IsLike(layout, kBgraWords)) {
        action(kBgraWords, std::uint32_t{});
    } else if (IsLike(layout, kRgb888Words)) {
        action(kRgb888Words, std::uint32_t{});
    } else if (IsLike(layout, kRgb565Words)) {
        action(kRgb565Words, std::uint16_t{});
    } else if (IsLike(layout, kRgba5551Words)) {
        action(kRgba5551Words, std::uint16_t{});
    } else if (IsLike(layout, kRgba4444Words)) {
        action(kRgba4444Words, std::uint16_t{});
    } else if (IsLike(layout, kLa88Words)) {
        action(kLa88Words, std::uint16_t{});
    } else if (IsLike(layout, kL8Words)) {
        action(kL8Words, std::uint8_t{});
    } else if (layout.bytes == 1) {
        action(layout, std::uint8_t{});
    } else if (layout.bytes == 2) {
        action(layout, std::uint16_t{});
    } else {
        action(layout, std::uint32_t{});
    }
}

template <typename Direction>
[[gnu::always_inline]] inline void ConvertWords(const WordLayout& layout, const std::uint8_t* from,
                                                std::size_t count, std::uint8_t* to) {
    if (IsLike(layout, kRgbaWords)) {
        std::memcpy(to, from, count * 4);
        return;
    }
    if (layout.bytes == 0) {
        (kScalarRowKernels.*Direction::kPlain)(layout, from, count, to);
        return;
    }
    WithLayout(
        layout, [=](const WordLayout& known, auto word) __attribute__((always_inline)) {
            if (known.bytes != 3) {
                Direction::template Words<decltype(word)>(known, from, count, to);
                return;
            }
            for (std::size_t first = 0; first < count; first += kChunkPixels) {
                const std::size_t here = count - first < kChunkPixels ? count - first : kChunkPixels;
                Direction::Words24(known, from + first * Direction::kFrom24, here,
                                   to + first * Direction::kTo24);
            }
        });
}

void Unpack(const WordLayout& layout, const std::uint8_t* words, std::size_t count, std::uint8_t* rgba) {
    ConvertWords<Unpacking>(layout, words, count, rgba);
}

void Pack(const WordLayout& layout, const std::uint8_t* rgba, std::size_t count, std::uint8_t* words) {
    ConvertWords<Packing>(layout, rgba, count, words);
}

void Mirror(const std::uint8_t* __restrict rgba, std::size_t count, std::uint8_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, rgba + (count - 1 - i) * 4, 4);
        std::memcpy(to + i * 4, &pixel, 4);
    }
}

}  // namespace
}  // namespace QXTextureConverter
