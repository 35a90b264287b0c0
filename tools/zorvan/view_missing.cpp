// Builds without SDL2.
#include "tools/zorvan/view.h"

namespace zorvan::tool {

Status View(ViewOptions const&) {
    return Failure{ExitCode::Unsupported,
                   "view: this zorvan was built without SDL2, which its window needs (Debian: libsdl2-dev)"};
}

}  // namespace zorvan::tool
