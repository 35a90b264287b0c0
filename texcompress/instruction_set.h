// The instruction sets that kernels are compiled for, and the choice among them. Every set gives the same
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zorvan::texcompress {

// In rising order of speed.
enum class InstructionSet : uint8_t {
    kScalar,    // plain C++, the reference for the others
    kBaseline,  // vectors as every processor of the target has them
    kAvx2,      // x86 only
};

// The name that the environment variable ZORVAN_KERNELS chooses a set by.
const char* InstructionSetName(InstructionSet set);

// Number of sets that this processor can run: the first ones of the enumeration.
size_t InstructionSetCount();

// The set in use: the one that ZORVAN_KERNELS names when it is first asked for, else the fastest. A name of
// no set that this processor can run is ignored, without a message: who must know asks here for the outcome.
InstructionSet SelectedInstructionSet();

// Uses a set that this processor can run from now on, for comparisons.
void SelectInstructionSet(InstructionSet set);

}  // namespace zorvan::texcompress
