// The viewer's options and its run.
#pragma once

#include "tools/zorvan/result.h"
#include "tools/zorvan/stage.h"

namespace zorvan::tool {

struct ViewOptions {
    StageOptions stage;
    RealFixed time;
    bool paused = false;
};

// Until the window is closed. Unsupported in builds without SDL2.
Status View(ViewOptions const& options);

}  // namespace zorvan::tool
