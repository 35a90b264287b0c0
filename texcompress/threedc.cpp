#include "texcompress/threedc.h"

#include <algorithm>

#include "texcompress/alpha_interpolated.h"

namespace zorvan::texcompress {
namespace {

void EncodeChannel(const RgbTile& tile, uint8_t Rgb::*channel, uint8_t* block) {
    ChannelTile values;
    for (size_t k = 0; k < tile.size(); ++k) {
        values[k] = tile[k].*channel;
    }
    atiEncodeAlphaBlockInterp(values, block);
}

}  // namespace

void atiEncodeATI1N(const RgbTile& tile, uint8_t* block) {
    EncodeChannel(tile, &Rgb::r, block);
}

void atiDecodeATI1N(RgbTile& tile, const uint8_t* block) {
    ChannelTile values;
    atiDecodeAlphaBlockInterp(values, block);
    std::transform(values.begin(), values.end(), tile.begin(), [](uint8_t value) {
        return Rgb{value, value, value};
    });
}

void atiEncodeATI2N(const RgbTile& tile, uint8_t* block) {
    EncodeChannel(tile, &Rgb::g, block);
    EncodeChannel(tile, &Rgb::r, block + kBlockBytes);
}

void atiDecodeATI2N(RgbTile& tile, const uint8_t* block) {
    ChannelTile green;
    ChannelTile red;
    atiDecodeAlphaBlockInterp(green, block);
    atiDecodeAlphaBlockInterp(red, block + kBlockBytes);
    std::transform(red.begin(), red.end(), green.begin(), tile.begin(), [](uint8_t r, uint8_t g) {
        return Rgb{r, g, 255};
    });
}

}  // namespace zorvan::texcompress
