// A light of the scene.
#pragma once

#include "core/transform_node.h"

namespace zorvan {

// Lights are the host's: it subclasses this and adds them to the device.
class ZORVAN_CORE_API Light : public TransformNode {
  public:
    // Prepares the device for this light.
    virtual void Setup(GraphicsDevice& device) = 0;
};

}  // namespace zorvan
