#include "texconv/vector_row_kernels.h"

namespace QXTextureConverter {
constinit const RowKernels kBaselineRowKernels = kVectorRowKernels;
}  // namespace QXTextureConverter
