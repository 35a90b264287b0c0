#include "texcompress/alpha_explicit.h"

namespace zorvan::texcompress {

void atiEncodeAlphaBlockATITCA4(const ChannelTile& alpha, uint8_t* block) {
    ChannelTile alpha4;
    for (size_t k = 0; k < alpha.size(); ++k) {
        alpha4[k] = alpha[k] >> 4;
    }
    EncodeAlphaBlock(alpha4, block);
}

void EncodeAlphaBlock(const ChannelTile& alpha4, uint8_t* block) {
    for (size_t i = 0; i < kBlockBytes; ++i) {
        block[i] = static_cast<uint8_t>((alpha4[2 * i] & 15) | alpha4[2 * i + 1] << 4);
    }
}

void DecodeAlphaBlock(ChannelTile& alpha, const uint8_t* block) {
    for (size_t i = 0; i < kBlockBytes; ++i) {
        alpha[2 * i] = static_cast<uint8_t>((block[i] & 15) * 17);
        alpha[2 * i + 1] = static_cast<uint8_t>((block[i] >> 4) * 17);
    }
}

void atiDecodeAlphaBlockATITCA4(ChannelTile& alpha, const uint8_t* block) {
    DecodeAlphaBlock(alpha, block);
}

}  // namespace zorvan::texcompress
