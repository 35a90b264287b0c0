// ATC colour encoding: the palette that starts with black, for kernels that know a split by the counts
// and colour sums of its regions.
#pragma once

#include <cstdint>

namespace zorvan::texcompress {

struct SplitSums {
    int32_t counts[4];
    int32_t sums[4][3];  // of red, green and blue
};

// The answer of ApplyBlackTrickIfHelpful. If it is yes, medHigh receives the average of the region that
// becomes region 2: region 2, or region 1 if that is empty.
bool BlackHelps(const SplitSums& split, int32_t (&medHigh)[3]);

// CalcBlockMSE of a split, less the pixels' squares. format is TXC_FORMAT_ATC or TXC_FORMAT_ATC_LEGACY.
int32_t SplitError(const SplitSums& split, uint32_t format);

}  // namespace zorvan::texcompress
