// What a scene consists of, counted by walking its tree.
#pragma once

#include <cstdint>

#include "core/node.h"

namespace zorvan::tool {

struct Census {
    uint32_t nodes = 0;
    uint32_t groups = 0;  // nodes that only carry a transform
    uint32_t sprites = 0;
    uint32_t texts = 0;
    uint32_t timelines = 0;
    uint32_t cameras = 0;
    uint32_t tracks = 0;
    // Nodes from the root down to the deepest node.
    uint32_t depth = 0;
};

Census CountNodes(Node& root);

}  // namespace zorvan::tool
