#include "core/referenced.h"

namespace zorvan {

Referenced::~Referenced() = default;

}  // namespace zorvan
