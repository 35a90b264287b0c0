// An off-screen surface with an OpenGL ES 2.0 context.
#pragma once

#include <EGL/egl.h>

#include <memory>
#include <string>

#include "tools/zorvan/gl_context.h"

namespace zorvan::tool {

class EglContext final : public GlContext {
  public:
    // A pbuffer of the format's colour bits, on EGL's surfaceless platform or, where there is none, on the
    // default display. Failures: Unsupported when no such surface can be had here, Runtime when EGL fails.
    static Result<std::unique_ptr<GlContext>> Create(SurfaceFormat format, PixelSize const& size);

    EglContext(EglContext const&) = delete;
    EglContext& operator=(EglContext const&) = delete;
    ~EglContext() override;

    // One line on EGL's maker and version.
    std::string Describe() const override;

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
