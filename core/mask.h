// A mask of a transform node.
#pragma once

#include "core/referenced.h"

namespace zorvan {

// Reserved: nodes carry masks to the device, and the OpenGL ES device does not apply them.
class Mask : public Referenced {};

}  // namespace zorvan
