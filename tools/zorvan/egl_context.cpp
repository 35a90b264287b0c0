#include "tools/zorvan/egl_context.h"

#include <EGL/eglext.h>
#include <dlfcn.h>
#include <link.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

namespace zorvan::tool {
namespace {

// Red, green, blue and alpha bits.
std::array<EGLint, 4> ColorBits(SurfaceFormat format) {
    switch (format) {
        case SurfaceFormat::Rgb565:
            return {5, 6, 5, 0};
        case SurfaceFormat::Rgb888:
            return {8, 8, 8, 0};
        case SurfaceFormat::Rgba8888:
            return {8, 8, 8, 8};
    }
    return {};
}

Failure EglFailure(char const* call) {
    char text[64];
    std::snprintf(text, sizeof text, "EGL: %s failed with error 0x%04X", call,
                  static_cast<unsigned>(eglGetError()));
    return {ExitCode::Runtime, text};
}

EGLDisplay SurfacelessDisplay() {
    char const* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (extensions == nullptr || std::strstr(extensions, "EGL_MESA_platform_surfaceless") == nullptr) {
        return EGL_NO_DISPLAY;
    }
    const auto getDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (getDisplay == nullptr) {
        return EGL_NO_DISPLAY;
    }
    return getDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

#ifdef ZORVAN_KEEP_PLUGIN_MAPPED
// EGL unloads its driver, whose own leaks could then no longer be told from ours by its name.
void KeepDriverMapped() {
    dl_iterate_phdr(
        [](dl_phdr_info* library, size_t, void*) {
            dlopen(library->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
            return 0;
        },
        nullptr);
}
#else
void KeepDriverMapped() {}
#endif

void SetDefault(char const* name, char const* value) {
    if (setenv(name, value, 0) != 0) {
        throw std::bad_alloc();  // its only failure
    }
}

}  // namespace

void PrepareSoftwareRendering() {
    SetDefault("LP_PERF", "no_rast_linear");
    SetDefault("glsl_zero_init", "true");
    // Mesa would announce the second setting on standard error.
    SetDefault("MESA_DEBUG", "silent");
}

Result<std::unique_ptr<GlContext>> EglContext::Create(SurfaceFormat format, PixelSize const& size) {
    PrepareSoftwareRendering();
    std::unique_ptr<EglContext> context(new EglContext);
    Status failure = context->Open();
    if (!failure) {
        failure = context->ChooseConfig(format);
    }
    if (!failure) {
        failure = context->MakeCurrent(size);
    }
    if (failure) {
        return *failure;
    }
    return std::unique_ptr<GlContext>(std::move(context));
}

EglContext::~EglContext() {
    if (display_ == EGL_NO_DISPLAY) {
        return;
    }
    KeepDriverMapped();
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context_ != EGL_NO_CONTEXT) {
        eglDestroyContext(display_, context_);
    }
    if (surface_ != EGL_NO_SURFACE) {
        eglDestroySurface(display_, surface_);
    }
    eglTerminate(display_);
    eglReleaseThread();
}

Status EglContext::Open() {
    for (EGLDisplay display : {SurfacelessDisplay(), eglGetDisplay(EGL_DEFAULT_DISPLAY)}) {
        if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE) {
            display_ = display;
            break;
        }
    }
    if (display_ == EGL_NO_DISPLAY) {
        return Failure{ExitCode::Runtime,
                       "EGL: found no display to draw on; is a driver installed (Debian: libgl1-mesa-dri)?"};
    }
    if (eglBindAPI(EGL_OPENGL_ES_API) != EGL_TRUE) {
        return EglFailure("eglBindAPI");
    }
    return std::nullopt;
}

Status EglContext::ChooseConfig(SurfaceFormat format) {
    // eglChooseConfig takes sizes as least sizes and prefers more bits: pick the exact ones here.
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                             EGL_NONE};
    EGLint count = 0;
    if (eglChooseConfig(display_, wanted, nullptr, 0, &count) != EGL_TRUE) {
        return EglFailure("eglChooseConfig");
    }
    std::vector<EGLConfig> configs(static_cast<size_t>(count));
    eglChooseConfig(display_, wanted, configs.data(), count, &count);
    const std::array<EGLint, 4> bits = ColorBits(format);
    EGLint leastExtra = -1;
    for (EGLConfig config : configs) {
        const auto attribute = [&](EGLint name) {
            EGLint value = 0;
            eglGetConfigAttrib(display_, config, name, &value);
            return value;
        };
        if (attribute(EGL_RED_SIZE) != bits[0] || attribute(EGL_GREEN_SIZE) != bits[1] ||
            attribute(EGL_BLUE_SIZE) != bits[2] || attribute(EGL_ALPHA_SIZE) != bits[3] ||
            attribute(EGL_SAMPLES) != 0) {
            continue;
        }
        const EGLint extra = attribute(EGL_DEPTH_SIZE) + attribute(EGL_STENCIL_SIZE);
        if (leastExtra < 0 || extra < leastExtra) {
            leastExtra = extra;
            config_ = config;
        }
    }
    if (leastExtra < 0) {
        return Failure{ExitCode::Unsupported,
                       "EGL: this display has no off-screen surface of these colour bits"};
    }
    return std::nullopt;
}

Status EglContext::MakeCurrent(PixelSize const& size) {
    EGLint mostWidth = 0;
    EGLint mostHeight = 0;
    eglGetConfigAttrib(display_, config_, EGL_MAX_PBUFFER_WIDTH, &mostWidth);
    eglGetConfigAttrib(display_, config_, EGL_MAX_PBUFFER_HEIGHT, &mostHeight);
    if (size.width > mostWidth || size.height > mostHeight) {
        return Failure{ExitCode::Unsupported, "EGL: got size " + ToText(size) + ", this display allows " +
                                                  ToText({mostWidth, mostHeight}) + " at most"};
    }
    const EGLint surface[] = {EGL_WIDTH, size.width, EGL_HEIGHT, size.height, EGL_NONE};
    surface_ = eglCreatePbufferSurface(display_, config_, surface);
    if (surface_ == EGL_NO_SURFACE) {
        return EglFailure("eglCreatePbufferSurface");
    }
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    context_ = eglCreateContext(display_, config_, EGL_NO_CONTEXT, version);
    if (context_ == EGL_NO_CONTEXT) {
        return EglFailure("eglCreateContext");
    }
    if (eglMakeCurrent(display_, surface_, surface_, context_) != EGL_TRUE) {
        return EglFailure("eglMakeCurrent");
    }
    return std::nullopt;
}

std::string EglContext::Describe() const {
    return std::string(eglQueryString(display_, EGL_VENDOR)) + ", EGL " +
           eglQueryString(display_, EGL_VERSION);
}

}  // namespace zorvan::tool
