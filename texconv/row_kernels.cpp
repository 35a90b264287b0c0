#include "texconv/row_kernels.h"

#include "texcompress/instruction_set.h"

namespace QXTextureConverter {

const RowKernels& SelectRowKernels() {
    using zorvan::texcompress::InstructionSet;
    switch (zorvan::texcompress::SelectedInstructionSet()) {
        case InstructionSet::kScalar:
            return kScalarRowKernels;
        case InstructionSet::kAvx2:
#if defined(__x86_64__) || defined(__i386__)
            return kAvx2RowKernels;
#endif
        case InstructionSet::kBaseline:
            break;
    }
    return kBaselineRowKernels;
}

}  // namespace QXTextureConverter
