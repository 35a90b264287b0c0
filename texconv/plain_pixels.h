// Row kernels between pixel words described by channel masks and R, G, B, A bytes.
#pragma once

#include <cstdint>

#include "texconv/channel_bits.h"
#include "texconv/format_table.h"

namespace QXTextureConverter {

class PlainPixels {
  public:
    // Little-endian words of `bytes` bytes, 0 to 4. Words of no bytes read as 0.
    constexpr PlainPixels(const ChannelMasks& masks, std::uint32_t bytes)
        : m_red(masks.red),
          m_green(masks.green),
          m_blue(masks.blue),
          m_alpha(masks.alpha),
          m_alphaBias(masks.alpha == 0 ? 255 : 0),
          m_bytes(bytes) {}

    void Unpack(const std::uint8_t* words, std::uint32_t count, std::uint8_t* rgba) const {
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t word = 0;
            for (std::uint32_t b = 0; b < m_bytes; ++b) {
                word |= std::uint32_t{words[b]} << (8 * b);
            }
            rgba[0] = m_red.Read(word);
            rgba[1] = m_green.Read(word);
            rgba[2] = m_blue.Read(word);
            rgba[3] = m_alpha.Read(word, m_alphaBias);
            words += m_bytes;
            rgba += 4;
        }
    }

    // Channels that share bits are combined by OR.
    void Pack(const std::uint8_t* rgba, std::uint32_t count, std::uint8_t* words) const {
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint32_t word = m_red.Write(rgba[0]) | m_green.Write(rgba[1]) | m_blue.Write(rgba[2]) |
                                       m_alpha.Write(rgba[3]);
            for (std::uint32_t b = 0; b < m_bytes; ++b) {
                words[b] = static_cast<std::uint8_t>(word >> (8 * b));
            }
            words += m_bytes;
            rgba += 4;
        }
    }

  private:
    ChannelField m_red;
    ChannelField m_green;
    ChannelField m_blue;
    ChannelField m_alpha;
    std::uint32_t m_alphaBias;
    std::uint32_t m_bytes;
};

}  // namespace QXTextureConverter
