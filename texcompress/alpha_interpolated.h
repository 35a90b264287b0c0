// Interpolated alpha blocks: two 8-bit end values and sixteen 3-bit indices, pixel k at bit 16 + 3k of
// the little-endian 64-bit block. The order of the end values chooses between six interpolated values
// beside 0 and 255 (a0 <= a1) and eight (a0 > a1).
#pragma once

#include <array>

#include "texcompress/tile.h"

namespace zorvan::texcompress {

// How a block's palette is built: the number of values interpolated between and including its ends.
enum class AlphaMode { kSixValues = 6, kEightValues = 8 };

struct AlphaEndpoints {
    int a0, a1;
    AlphaMode mode;
};

using AlphaRamp = std::array<uint8_t, 8>;
using AlphaIndices = std::array<uint8_t, kTilePixels>;

// Searches the mode and the end values, in ascending order, that code the values best.
AlphaEndpoints FindAlphaEndpoints(const ChannelTile& alpha);

// Puts unequal ends into the order that their mode asks for and builds the palette that the decoder
// will build from them.
AlphaRamp BuildAlphaRamp(AlphaEndpoints& ends);

// The index of each value's nearest palette entry, the first of equally near ones; 0 for all if the
// end values are equal.
AlphaIndices AssignAlphaIndices(const ChannelTile& alpha, const AlphaRamp& ramp);

// Encodes one block. block receives kBlockBytes bytes.
void atiEncodeAlphaBlockInterp(const ChannelTile& alpha, uint8_t* block);
// Decodes one block. Equal end values give that value throughout, whatever the indices say.
void atiDecodeAlphaBlockInterp(ChannelTile& alpha, const uint8_t* block);

}  // namespace zorvan::texcompress
