#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>

#ifdef ZORVAN_AVX2_KERNELS
#include <cpuid.h>
#endif

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

#ifdef ZORVAN_AVX2_KERNELS
// Asks the processor, and whether the system keeps its 256-bit registers. __builtin_cpu_supports would
// bring the compiler's own load-time initialiser into every library that takes the codecs in.
bool HasAvx2() {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0) {
        return false;
    }
    constexpr unsigned kVectorState = 6;  // 128 and 256 bits
    unsigned low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (low & kVectorState) == kVectorState && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
           (b & bit_AVX2) != 0;
}
#endif

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
    return HasAvx2() ? std::size(kSets) : std::size(kSets) - 1;
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
