#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "texcompress/block_kernels.h"
#include "texcompress/vector_kernels.h"

namespace zorvan::texcompress {
namespace {

constexpr KernelSet kSets[] = {
    {"scalar", &kScalarKernels},
    {"baseline", &kBaselineKernels},
#ifdef ZORVAN_AVX2_KERNELS
    {"avx2", &kAvx2Kernels},
#endif
};

std::atomic<const BlockKernels*> chosenKernels{nullptr};

const BlockKernels& KernelsOfEnvironment() {
    const char* name = std::getenv("ZORVAN_KERNELS");
    const size_t count = KernelSetCount();
    for (size_t i = 0; name != nullptr && i < count; ++i) {
        if (std::strcmp(kSets[i].name, name) == 0) {
            return *kSets[i].kernels;
        }
    }
    return *kSets[count - 1].kernels;
}

}  // namespace

size_t KernelSetCount() {
#ifdef ZORVAN_AVX2_KERNELS
    return __builtin_cpu_supports("avx2") ? std::size(kSets) : std::size(kSets) - 1;
#else
    return std::size(kSets);
#endif
}

const KernelSet& KernelSetAt(size_t index) {
    return kSets[index];
}

const BlockKernels& SelectBlockKernels() {
    const BlockKernels* kernels = chosenKernels.load(std::memory_order_relaxed);
    if (kernels == nullptr) {
        kernels = &KernelsOfEnvironment();
        UseBlockKernels(*kernels);
    }
    return *kernels;
}

void UseBlockKernels(const BlockKernels& kernels) {
    chosenKernels.store(&kernels, std::memory_order_relaxed);
}

}  // namespace zorvan::texcompress
