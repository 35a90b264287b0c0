#include "texcompress/block_kernels.h"
#include "texcompress/instruction_set.h"
#include "texcompress/vector_kernels.h"

namespace zorvan::texcompress {
namespace {

// By instruction set.
constexpr KernelSet kSets[] = {
    {"scalar", &kScalarKernels},
    {"baseline", &kBaselineKernels},
#if defined(__x86_64__) || defined(__i386__)
    {"avx2", &kAvx2Kernels},
#endif
};

}  // namespace

size_t KernelSetCount() {
    return InstructionSetCount();
}

const KernelSet& KernelSetAt(size_t index) {
    return kSets[index];
}

const BlockKernels& SelectBlockKernels() {
    return *kSets[static_cast<size_t>(SelectedInstructionSet())].kernels;
}

void UseBlockKernels(const BlockKernels& kernels) {
    for (size_t i = 0; i < KernelSetCount(); ++i) {
        if (kSets[i].kernels == &kernels) {
            SelectInstructionSet(static_cast<InstructionSet>(i));
        }
    }
}

}  // namespace zorvan::texcompress
