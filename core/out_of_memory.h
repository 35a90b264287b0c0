// A lack of memory that nothing else tells of.
#pragma once

#include "core/api.h"

namespace zorvan {

// What runs out of memory deep inside goes on without the thing that it could not make: a list without its
// last element, a picture without a sprite. It is noted here, so that the host need not take the result for
// the whole. One note for the process; from any thread.
class ZORVAN_CORE_API OutOfMemory {
  public:
    static void Note();
    // Whether there was one since the last call.
    static bool Take();
};

}  // namespace zorvan
