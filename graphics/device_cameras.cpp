// The device's cameras and lights.
#include <new>

#include "core/light.h"
#include "graphics/camera.h"
#include "graphics/device.h"

namespace zorvan {

void GraphicsDeviceGL::PushCamera(Camera* camera) {
    if (camera == nullptr) {
        return;
    }
    // The reference stays taken when the stack cannot grow.
    Retain(camera);
    cameras.Append(static_cast<CameraGL*>(camera));
}

void GraphicsDeviceGL::PushCamera2D(RealFixed const& width, RealFixed const& height) {
    auto* camera = new (std::nothrow) CameraGL;
    if (camera == nullptr) {
        return;
    }
    constexpr RealFixed kUnit = kOne<RealFixed>;
    camera->orthographic.Set(true);
    camera->viewRectangle.Set({RealFixed{}, RealFixed{}, width - kUnit, height - kUnit});
    camera->nearPlane.Set(-kUnit);
    camera->farPlane.Set(kUnit);
    camera->Update(*this, RealFixed{});
    PushCamera(camera);
}

void GraphicsDeviceGL::PopCamera() {
    if (cameras.IsEmpty()) {
        return;
    }
    Release(cameras.Last());
    cameras.RemoveLast();
}

void GraphicsDeviceGL::PushCameraDepth(bool depth) {
    if (!depth) {
        ++cameraDepth;
    }
}

void GraphicsDeviceGL::PopCameraDepth(bool depth) {
    if (!depth && cameraDepth > 0) {
        --cameraDepth;
    }
}

void GraphicsDeviceGL::SetCameraDepth(bool depth) {
    useDefaultCamera = cameras.IsEmpty() || (depth && cameraDepth == 0);
}

CameraGL const* GraphicsDeviceGL::CurrentCamera() const {
    if (useDefaultCamera) {
        return defaultCamera;  // null before Initialize
    }
    return cameras.IsEmpty() ? nullptr : cameras.Last();
}

Matrix4T<RealFixed> GraphicsDeviceGL::GetProjectionMatrix() {
    CameraGL const* camera = CurrentCamera();
    return camera == nullptr ? Matrix4T<RealFixed>::Identity : camera->GetProjectionMatrix();
}

Matrix4T<RealFixed> GraphicsDeviceGL::GetViewMatrix() {
    CameraGL const* camera = CurrentCamera();
    return camera == nullptr ? Matrix4T<RealFixed>::Identity : camera->GetViewMatrix();
}

void GraphicsDeviceGL::AddLight(Light* light) {
    if (light == nullptr) {
        return;
    }
    // The reference stays taken when the list cannot grow.
    Retain(light);
    lights.Append(light);
}

void GraphicsDeviceGL::RemoveLight(Light* light) {
    // What moves into a removed entry's place is passed over.
    for (uint32_t i = 0; i < lights.Count(); ++i) {
        if (lights[i] == light) {
            lights.RemoveAt(lights.IndexOf(light));
        }
    }
}

uint32_t GraphicsDeviceGL::LightCount() {
    return lights.Count();
}

void GraphicsDeviceGL::SetupLights() {
    for (uint32_t i = 0; i < lights.Count(); ++i) {
        lights[i]->Setup(*this);
    }
}

}  // namespace zorvan
