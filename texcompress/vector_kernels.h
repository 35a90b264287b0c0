// The sets of kernels on vectors: the same source, compiled once per instruction set.
#pragma once

#include "texcompress/block_kernels.h"

namespace zorvan::texcompress {

// For every processor of the target.
extern const BlockKernels kBaselineKernels;
// For x86 processors with AVX2.
extern const BlockKernels kAvx2Kernels;

}  // namespace zorvan::texcompress
