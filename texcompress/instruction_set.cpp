#include "texcompress/instruction_set.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace zorvan::texcompress {
namespace {

constexpr const char* kNames[] = {"scalar", "baseline", "avx2"};
constexpr int kNotChosen = -1;

#if defined(__x86_64__) || defined(__i386__)
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

std::atomic<int> chosenSet{kNotChosen};

InstructionSet SetOfEnvironment() {
    const char* name = std::getenv("ZORVAN_KERNELS");
    const size_t count = InstructionSetCount();
    for (size_t i = 0; name != nullptr && i < count; ++i) {
        if (std::strcmp(kNames[i], name) == 0) {
            return static_cast<InstructionSet>(i);
        }
    }
    return static_cast<InstructionSet>(count - 1);
}

}  // namespace

const char* InstructionSetName(InstructionSet set) {
    return kNames[static_cast<size_t>(set)];
}

size_t InstructionSetCount() {
#if defined(__x86_64__) || defined(__i386__)
    return HasAvx2() ? 3 : 2;
#else
    return 2;
#endif
}

InstructionSet SelectedInstructionSet() {
    const int chosen = chosenSet.load(std::memory_order_relaxed);
    if (chosen != kNotChosen) {
        return static_cast<InstructionSet>(chosen);
    }
    const InstructionSet set = SetOfEnvironment();
    SelectInstructionSet(set);
    return set;
}

void SelectInstructionSet(InstructionSet set) {
    chosenSet.store(static_cast<int>(set), std::memory_order_relaxed);
}

}  // namespace zorvan::texcompress
