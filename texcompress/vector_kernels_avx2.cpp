#include "texcompress/vector_kernel_set.h"
#include "texcompress/vector_kernels.h"

namespace zorvan::texcompress {

constexpr BlockKernels kAvx2Kernels = kVectorKernels;

}  // namespace zorvan::texcompress
