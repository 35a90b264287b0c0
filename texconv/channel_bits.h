// Channels as bit fields of a pixel word: counting, shifting and widening.
#pragma once

#include <bit>
#include <cstdint>

namespace QXTextureConverter {

// Number of set bits in the low 32 bits of `mask`.
constexpr unsigned NumBitsSet(unsigned long mask) {
    return static_cast<unsigned>(std::popcount(static_cast<std::uint32_t>(mask)));
}

// Index, 0 to 31, of the lowest set bit in the low 32 bits of `mask`; 0 where none is set.
constexpr unsigned FirstBitSet(unsigned long mask) {
    return static_cast<unsigned>(std::countr_zero(static_cast<std::uint32_t>(mask))) & 31u;
}

// Widens a channel that lies in the top `bits` of a byte. Only 4, 5 and 6 bits repeat their top
// bits below; 1 bit becomes 0 or 255; all other widths stay as they are.
constexpr unsigned char ExpandTo8bit(unsigned char value, unsigned bits) {
    if (bits >= 4 && bits <= 6) {
        return static_cast<unsigned char>(value | (value >> bits));
    }
    if (bits == 1) {
        return value != 0 ? 255 : 0;
    }
    return value;
}

// 32-bit shifts that give 0 for any amount outside 0 to 31. Channels wider than a byte shift by
// a negative amount and so read and write as 0.
constexpr std::uint32_t ShiftLeft(std::uint32_t value, int amount) {
    return amount >= 0 && amount < 32 ? value << amount : 0;
}
constexpr std::uint32_t ShiftRight(std::uint32_t value, int amount) {
    return amount >= 0 && amount < 32 ? value >> amount : 0;
}

// One channel of a pixel word.
class ChannelField {
  public:
    explicit constexpr ChannelField(std::uint32_t mask)
        : m_mask(mask), m_bits(static_cast<int>(NumBitsSet(mask))), m_shift(FirstBitSet(mask)) {}

    // The channel as a byte; `bias` is added before the byte is cut and widened.
    constexpr std::uint8_t Read(std::uint32_t word, std::uint32_t bias = 0) const {
        const std::uint32_t top = ShiftLeft((word & m_mask) >> m_shift, 8 - m_bits) + bias;
        return ExpandTo8bit(static_cast<std::uint8_t>(top), static_cast<unsigned>(m_bits));
    }

    // The byte's top bits at the channel's place in the word; low bits are dropped.
    constexpr std::uint32_t Write(std::uint8_t value) const {
        return ShiftRight(value, 8 - m_bits) << m_shift;
    }

  private:
    std::uint32_t m_mask;
    int m_bits;
    unsigned m_shift;
};

}  // namespace QXTextureConverter
