#include "graphics/device.h"

#include <EGL/egl.h>
#include <GLES2/gl2.h>

#include <new>
#include <utility>

#include "graphics/camera.h"
#include "shaders/shader.h"

namespace zorvan {

GraphicsDeviceGL::GraphicsDeviceGL() = default;

GraphicsDeviceGL::~GraphicsDeviceGL() {
    for (CameraGL*& camera : cameras) {
        Release(std::exchange(camera, nullptr));
    }
    cameras.Clear();
    Release(std::exchange(defaultCamera, nullptr));
    if (eglDisplay == nullptr) {
        return;
    }
    // No display either: whatever is current on this thread is let go.
    eglMakeCurrent(EGL_NO_DISPLAY, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (eglSurface != nullptr) {
        eglDestroySurface(eglDisplay, std::exchange(eglSurface, nullptr));
    }
    if (eglContext != nullptr) {
        eglDestroyContext(eglDisplay, std::exchange(eglContext, nullptr));
    }
    eglTerminate(std::exchange(eglDisplay, nullptr));
}

uint32_t GraphicsDeviceGL::Initialize(void* window, DeviceFormat::Enum format, SizeT<int> const& size) {
    if (GraphicsDevice::Initialize(window, format, size) == 0) {
        return 0;
    }
    glClearStencil(0);
    glDisable(GL_STENCIL_TEST);
    glDisable(GL_SCISSOR_TEST);
    glFrontFace(GL_CCW);
    glEnable(GL_DITHER);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_BLEND);

    defaultCamera = new (std::nothrow) CameraGL;
    if (defaultCamera == nullptr) {
        return 0;
    }
    Retain(defaultCamera);
    defaultCamera->SetupMillimeter(RealFixed::FromInt(50), RealFixed::FromInt(60),
                                   RealFixed::FromInt(size.width), RealFixed::FromInt(size.height), true);
    defaultCamera->Update(*this, RealFixed{});

    const SolidVertexShaderSource vertex;
    const SolidFragmentShaderSource fragment(transferModes);
    solidShader = ShaderGL::Create(vertex, fragment);
    return 1;
}

void GraphicsDeviceGL::SetClearColor(ColorT<RealFixed> const& color) {
    glClearColor(color.red.ToFloat(), color.green.ToFloat(), color.blue.ToFloat(), color.alpha.ToFloat());
    GraphicsDevice::SetClearColor(color);
}

void GraphicsDeviceGL::Clear() {
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    GraphicsDevice::Clear();
}

void GraphicsDeviceGL::SetViewport(RectangleT<int> const& viewport) {
    // The stored rectangle, not the new one: with this form GL stays one call behind.
    const SizeT<int> stored = SizeOf(viewport_);
    glViewport(viewport_.left, viewport_.top, stored.width, stored.height);
    GraphicsDevice::SetViewport(viewport);
}

void GraphicsDeviceGL::SetViewport(int x, int y, int width, int height) {
    glViewport(x, y, width, height);
    GraphicsDevice::SetViewport(x, y, width, height);
}

void GraphicsDeviceGL::Present() {
    glFlush();
}

void GraphicsDeviceGL::PushMasks(List<Mask*>&) {}

void GraphicsDeviceGL::PopMasks(List<Mask*>&) {}

}  // namespace zorvan
