#include "tests/pixels/surface.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

namespace zorvan {
namespace {

// Without a window system; never terminated, for the drivers that do not come back after that.
EGLDisplay Display() {
    static const EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
    return eglInitialize(display, nullptr, nullptr) == EGL_TRUE ? display : EGL_NO_DISPLAY;
}

// EGL offers what has at least the bits asked for; take what has exactly them.
EGLConfig ExactConfig(ChannelBits const& bits) {
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                             EGL_NONE};
    std::array<EGLConfig, 256> configs{};
    EGLint count = 0;
    eglChooseConfig(Display(), wanted, configs.data(), static_cast<EGLint>(configs.size()), &count);
    for (EGLConfig config : configs) {
        ChannelBits has{};
        eglGetConfigAttrib(Display(), config, EGL_RED_SIZE, &has[0]);
        eglGetConfigAttrib(Display(), config, EGL_GREEN_SIZE, &has[1]);
        eglGetConfigAttrib(Display(), config, EGL_BLUE_SIZE, &has[2]);
        eglGetConfigAttrib(Display(), config, EGL_ALPHA_SIZE, &has[3]);
        if (config != nullptr && has == bits) {
            return config;
        }
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<Surface> Surface::Make(int width, int height, ChannelBits const& bits) {
    EGLConfig config = ExactConfig(bits);
    if (config == nullptr || eglBindAPI(EGL_OPENGL_ES_API) != EGL_TRUE) {
        return nullptr;
    }
    auto made = std::make_unique<Surface>();
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE},
                 size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    made->width_ = width;
    made->height_ = height;
    made->surface_ = eglCreatePbufferSurface(Display(), config, size);
    made->context_ = eglCreateContext(Display(), config, EGL_NO_CONTEXT, version);
    return eglMakeCurrent(Display(), made->surface_, made->surface_, made->context_) == EGL_TRUE
               ? std::move(made)
               : nullptr;
}

Surface::~Surface() {
    eglMakeCurrent(Display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(Display(), surface_);
    eglDestroyContext(Display(), context_);
}

void Surface::Read() {
    pixels_.resize(static_cast<size_t>(width_) * static_cast<size_t>(height_));
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, pixels_.data());
}

}  // namespace zorvan
