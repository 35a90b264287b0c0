// A current OpenGL ES 2.0 context with a surface to draw on.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tools/zorvan/result.h"
#include "tools/zorvan/values.h"

namespace zorvan::tool {

// Current on the thread that made it, until it is destroyed.
class GlContext {
  public:
    virtual ~GlContext() = default;
    // One line on who made the surface.
    virtual std::string Describe() const = 0;
};

// Makes a context with a surface of these colour bits and pixels.
using ContextMaker =
    std::function<Result<std::unique_ptr<GlContext>>(SurfaceFormat format, PixelSize const& size)>;

// Settings of the driver, to be made before its first use: Mesa's software rasterizer draws some solid
// fills in wrong colours with its 8-bit linear path, and leaves variables that a shader never writes
// undefined. A user's own settings stay, and other drivers ignore these.
void PrepareSoftwareRendering();

}  // namespace zorvan::tool
