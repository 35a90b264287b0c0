// A light of the scene.
#pragma once

#include "core/transform_node.h"

namespace zorvan {

// Lights are the host's: it subclasses this, with Clone and the names of its class, and adds them to the
// device.
class ZORVAN_CORE_API Light : public TransformNode {
  public:
    void Visit(Visitor& visitor) override;
    uint32_t IsKindOf(ClassId id) override;

    // Prepares the device for this light.
    virtual void Setup(GraphicsDevice& device) = 0;
};

}  // namespace zorvan
