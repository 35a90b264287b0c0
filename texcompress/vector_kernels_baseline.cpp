#include "texcompress/vector_kernel_set.h"
#include "texcompress/vector_kernels.h"

namespace zorvan::texcompress {

constexpr BlockKernels kBaselineKernels = kVectorKernels;

}  // namespace zorvan::texcompress
