// Plain pixels on vectors and in loops that compilers turn into such: the layouts of the usual formats as
// constants.
#pragma once

#include <cstring>
#include <type_traits>

#include "texconv/row_kernels.h"
#include "texconv/vector_types.h"

namespace QXTextureConverter {
namespace {

// Words of three bytes as lanes, whose highest bytes may hold anything, and back.
#if defined(__AVX2__) || defined(__aarch64__)

// Four words lie in the first 12 of 16 bytes; the pixels after a step must make up for the bytes beyond.
constexpr std::size_t kPixelsBeyond = 2;
constexpr std::size_t kGroupWords = 4;

template <typename Vector, std::size_t... kLane>
[[gnu::always_inline]] inline Vector WidenedGroups(const Vector& groups, std::index_sequence<kLane...>) {
    return __builtin_shufflevector(groups, groups, (kLane / 16 * 16 + kLane % 16 / 4 * 3 + kLane % 4 % 3)...);
}
template <typename Vector, std::size_t... kLane>
[[gnu::always_inline]] inline Vector NarrowGroups(const Vector& groups, std::index_sequence<kLane...>) {
    return __builtin_shufflevector(groups, groups,
                                   (kLane / 16 * 16 + kLane % 16 / 3 % 4 * 4 + kLane % 16 % 3)...);
}

template <typename Vector, std::size_t... kByte>
[[gnu::always_inline]] inline Vector LoadGroups(const std::uint8_t* from, std::index_sequence<kByte...>) {
    const auto first = LoadVector<Bytes16>(from);
    if constexpr (sizeof(Vector) == sizeof(Bytes16)) {
        return first;
    } else {
        return __builtin_shufflevector(first, LoadVector<Bytes16>(from + 3 * kGroupWords), kByte...);
    }
}
template <typename Vector, std::size_t... kByte>
[[gnu::always_inline]] inline void StoreGroups(const Vector& groups, std::uint8_t* to,
                                               std::index_sequence<kByte...>) {
    StoreVector(to, __builtin_shufflevector(groups, groups, kByte...));
    if constexpr (sizeof(Vector) != sizeof(Bytes16)) {
        StoreVector(to + 3 * kGroupWords,
                    __builtin_shufflevector(groups, groups, (sizeof(Bytes16) + kByte)...));
    }
}

[[gnu::always_inline]] inline U32 Widened(const std::uint8_t* from) {
    constexpr LaneNumbersOf<U8> kBytes;
    return reinterpret_cast<U32>(WidenedGroups(LoadGroups<U8>(from, kBytes), kBytes));
}

[[gnu::always_inline]] inline void StoreNarrow(const U32& words, std::uint8_t* to) {
    const U8 groups = NarrowGroups(reinterpret_cast<U8>(words), LaneNumbersOf<U8>{});
    StoreGroups(groups, to, LaneNumbersOf<Bytes16>{});
}

#else

// Without a shuffle of bytes, four pixels in three words.
constexpr std::size_t kPixelsBeyond = 0;

[[gnu::always_inline]] inline U32 Widened(const std::uint8_t* from) {
    std::uint32_t in[3];
    std::memcpy(in, from, sizeof(in));
    return U32{in[0], in[0] >> 24 | in[1] << 8, in[1] >> 16 | in[2] << 16, in[2] >> 8};
}

[[gnu::always_inline]] inline void StoreNarrow(const U32& words, std::uint8_t* to) {
    std::uint32_t in[4];
    std::memcpy(in, &words, sizeof(in));
    const std::uint32_t out[3] = {(in[0] & 0xFFFFFF) | in[1] << 24, (in[1] >> 8 & 0xFFFF) | in[2] << 16,
                                  (in[2] >> 16 & 0xFF) | in[3] << 8};
    std::memcpy(to, out, sizeof(out));
}

#endif

// What holds a word of kBytes.
template <std::size_t kBytes>
using StoredWord = std::conditional_t<kBytes == 1, std::uint8_t,
                                      std::conditional_t<kBytes == 2, std::uint16_t, std::uint32_t>>;

// A channel's byte in every lane.
template <typename Vector>
[[gnu::always_inline]] inline Vector ReadChannel(const Vector& words, const ChannelPlace& place) {
    using Lane = LaneOf<Vector>;
    const Vector bits = words >> static_cast<Lane>(place.shift) & static_cast<Lane>(place.readBits);
    return bits * static_cast<Lane>(place.scale) >> static_cast<Lane>(place.scaleShift);
}

// The loops of each direction over words of kBytes, and the plain kernel.
struct Unpacking {
    static constexpr auto kPlain = &RowKernels::unpack;

    template <std::size_t kBytes>
    [[gnu::always_inline]] static void Words(const WordLayout& layout, const std::uint8_t* __restrict words,
                                             std::size_t count, std::uint8_t* __restrict rgba) {
        const WordLayout fields = layout;
        std::size_t i = 0;
        if constexpr (kBytes == 3 || (kBytes == 2 && kVectorRegisters)) {
            constexpr std::size_t kStep = kBytes == 2 ? kShortLanes : kLanes;
            constexpr std::size_t kBeyond = kBytes == 2 ? 0 : kPixelsBeyond;
            // Masks beyond the word, which WordLayout::ForReading never leaves, would find no zeros in lanes.
            const std::size_t inLanes = LieInWord(fields.masks, kBytes) ? count : 0;
            for (; i + kStep + kBeyond <= inLanes; i += kStep) {
                Step<kBytes>(fields, words + i * kBytes, rgba + i * 4);
            }
        }
        for (; i < count; ++i) {
            StoredWord<kBytes> stored{};
            std::memcpy(&stored, words + i * kBytes, kBytes);
            const std::uint32_t word = stored;
            std::uint32_t pixel = fields.opaque ? 0xFF000000 : 0;
            for (unsigned c = 0; c < 4; ++c) {
                const ChannelPlace& place = fields.places[c];
                pixel |= ((((word >> place.shift) & place.readBits) * place.scale) >> place.scaleShift)
                         << (8 * c);
            }
            std::memcpy(rgba + i * 4, &pixel, 4);
        }
    }

  private:
    static constexpr bool LieInWord(const ChannelMasks& masks, std::size_t bytes) {
        return (masks.red | masks.green | masks.blue | masks.alpha) >> (8 * bytes) == 0;
    }

    // As many pixels as there are lanes: of 16 bits for words as long, each for half a pixel, else of 32.
    template <std::size_t kBytes>
    [[gnu::always_inline]] static void Step(const WordLayout& fields, const std::uint8_t* from,
                                            std::uint8_t* rgba) {
        if constexpr (kBytes == 2) {
            const auto words = LoadVector<U16>(from);
            const auto channel = [&](unsigned c) __attribute__((always_inline)) {
                return c == 3 && fields.opaque ? U16{} + std::uint16_t{0xFF}
                                               : ReadChannel(words, fields.places[c]);
            };
            Interleave(channel(0) | channel(1) << 8, channel(2) | channel(3) << 8, rgba);
        } else {
            const U32 words = Widened(from);
            U32 pixels = U32{} + (fields.opaque ? 0xFF000000 : 0);
            for (unsigned c = 0; c < 4; ++c) {
                pixels |= ReadChannel(words, fields.places[c]) << (8 * c);
            }
            StoreVector(rgba, pixels);
        }
    }
};

struct Packing {
    static constexpr auto kPlain = &RowKernels::pack;

    template <std::size_t kBytes>
    [[gnu::always_inline]] static void Words(const WordLayout& layout, const std::uint8_t* __restrict rgba,
                                             std::size_t count, std::uint8_t* __restrict words) {
        const WordLayout fields = layout;
        std::size_t i = 0;
        if constexpr (kBytes == 3) {
            for (; i + kLanes + kPixelsBeyond <= count; i += kLanes) {
                StoreNarrow(PackedWord(fields, LoadVector<U32>(rgba + i * 4)), words + i * 3);
            }
        }
        for (; i < count; ++i) {
            std::uint32_t pixel;
            std::memcpy(&pixel, rgba + i * 4, 4);
            const auto stored = static_cast<StoredWord<kBytes>>(PackedWord(fields, pixel));
            std::memcpy(words + i * kBytes, &stored, kBytes);
        }
    }

  private:
    // Of one pixel or of as many as a vector has.
    template <typename Pixel>
    [[gnu::always_inline]] static Pixel PackedWord(const WordLayout& fields, const Pixel& pixel) {
        Pixel word{};
        for (unsigned c = 0; c < 4; ++c) {
            const ChannelPlace& place = fields.places[c];
            word |= ((pixel >> (8 * c + place.dropped)) & place.writeBits) << place.shift;
        }
        return word;
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

template <std::size_t kBytes>
using WordSize = std::integral_constant<std::size_t, kBytes>;

// Calls action(layout, bytes) with a constant for the layout if it is a usual one, and with the size of its
// words.
template <typename Action>
[[gnu::always_inline]] inline void WithLayout(const WordLayout& layout, const Action& action) {
    if (IsLike(layout, kBgraWords)) {
        action(kBgraWords, WordSize<4>{});
    } else if (IsLike(layout, kRgb888Words)) {
        action(kRgb888Words, WordSize<3>{});
    } else if (IsLike(layout, kRgb565Words)) {
        action(kRgb565Words, WordSize<2>{});
    } else if (IsLike(layout, kRgba5551Words)) {
        action(kRgba5551Words, WordSize<2>{});
    } else if (IsLike(layout, kRgba4444Words)) {
        action(kRgba4444Words, WordSize<2>{});
    } else if (IsLike(layout, kLa88Words)) {
        action(kLa88Words, WordSize<2>{});
    } else if (IsLike(layout, kL8Words)) {
        action(kL8Words, WordSize<1>{});
    } else if (layout.bytes == 1) {
        action(layout, WordSize<1>{});
    } else if (layout.bytes == 2) {
        action(layout, WordSize<2>{});
    } else if (layout.bytes == 3) {
        action(layout, WordSize<3>{});
    } else {
        action(layout, WordSize<4>{});
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
        layout, [=](const WordLayout& known, auto bytes) __attribute__((always_inline)) {
            Direction::template Words<bytes>(known, from, count, to);
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
