#include "tests/pixels/surface.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

namespace zorvan {
namespace {

// Without a window system; never terminated, as the driver does not come back after that.
EGLDisplay Display() {
    static const EGLDisplay display = [] {
        const EGLDisplay opened =
            eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        return eglInitialize(opened, nullptr, nullptr) == EGL_TRUE ? opened : EGL_NO_DISPLAY;
    }();
    return display;
}

// EGL offers what has at least the bits asked for; take what has exactly them.
EGLConfig ExactConfig(ChannelBits const& bits) {
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                             EGL_NONE};
    std::array<EGLConfig, 256> configs;
    EGLint count = 0;
    eglChooseConfig(Display(), wanted, configs.data(), static_cast<EGLint>(configs.size()), &count);
    constexpr EGLint kChannels[] = {EGL_RED_SIZE, EGL_GREEN_SIZE, EGL_BLUE_SIZE, EGL_ALPHA_SIZE};
    for (EGLint i = 0; i < count; ++i) {
        ChannelBits has{};
        for (size_t channel = 0; channel < has.size(); ++channel) {
            eglGetConfigAttrib(Display(), configs[static_cast<size_t>(i)], kChannels[channel], &has[channel]);
        }
        if (has == bits) {
            return configs[static_cast<size_t>(i)];
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
    std::unique_ptr<Surface> made(new Surface(width, height));
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
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
