// An off-screen surface with an OpenGL ES 2.0 context.
#pragma once

#include <EGL/egl.h>

#include <memory>
#include <string>

#include "tools/zorvan/result.h"
#include "tools/zorvan/values.h"

namespace zorvan::tool {

// Current on the thread that made it, from Create to its destruction.
class EglContext {
  public:
    // A pbuffer of the format's colour bits, on EGL's surfaceless platform or, where there is none, on the
    // default display. Failures: Unsupported when no such surface can be had here, Runtime when EGL fails.
    static Result<std::unique_ptr<EglContext>> Create(SurfaceFormat format, PixelSize const& size);

    EglContext(EglContext const&) = delete;
    EglContext& operator=(EglContext const&) = delete;
    ~EglContext();

    // One line on EGL's maker and version.
    std::string Describe() const;

  private:
    EglContext() = default;
    Status Open();
    Status ChooseConfig(SurfaceFormat format);
    Status MakeCurrent(PixelSize const& size);

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLConfig config_ = nullptr;
    EGLSurface surface_ = EGL_NO_SURFACE;
    EGLContext context_ = EGL_NO_CONTEXT;
};

}  // namespace zorvan::tool
