// Compiled for AVX2; to be called only where the processor has it.
#include "texconv/vector_row_kernels.h"

namespace QXTextureConverter {
constinit const RowKernels kAvx2RowKernels = kVectorRowKernels;
}  // namespace QXTextureConverter
