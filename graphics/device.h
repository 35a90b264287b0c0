// The OpenGL ES 2.0 rendering surface.
#pragma once

#include "core/graphics_device.h"
#include "graphics/api.h"

namespace zorvan {

class CameraGL;
class Light;
class ShaderGL;

// Every operation belongs on the thread whose GL context the host made current. The device creates no
// EGL objects; it destroys those that the host stores in it.
class ZORVAN_GL_API GraphicsDeviceGL : public GraphicsDevice {
  public:
    // Calls no GL.
    GraphicsDeviceGL();
    ~GraphicsDeviceGL() override;

    // Sets the fixed GL state and makes the default camera and the solid-colour program. 0 when the
    // size is below one pixel or the camera cannot be allocated; a program that cannot be built leaves
    // solidShader null and is no failure.
    uint32_t Initialize(void* window, DeviceFormat::Enum format, SizeT<int> const& size) override;
    void SetClearColor(ColorT<RealFixed> const& color) override;
    // Colour, depth and stencil together.
    void Clear() override;
    // Stores the rectangle, but hands GL the one stored before.
    void SetViewport(RectangleT<int> const& viewport) override;
    void SetViewport(int x, int y, int width, int height) override;
    Vector2T<DoubleRealFixed> ProjectCoordinate(Matrix4T<RealFixed> const& world,
                                                Vector4T<RealFixed> const& point) override;
    // Flushes; the host swaps the buffers.
    void Present() override;
    // Reads a rectangle, in pixels from the top left, into *texture; the bottom row comes first. The
    // texture gets 3 bytes per pixel from a surface with 24 colour bits and 4 from one with 16; from
    // others what its own format holds. 0 on failure: when memory runs out, the texture (the caller's
    // too) is deleted; after a GL error, an earlier one included, *texture is not written.
    uint32_t ReadPixels(RectangleT<int> const& area, Texture** texture) override;
    // Masks are not applied.
    void PushMasks(List<Mask*>& masks) override;
    void PopMasks(List<Mask*>& masks) override;

    // Takes a reference; null is ignored.
    void PushCamera(Camera* camera) override;
    void PushCamera2D(RealFixed const& width, RealFixed const& height) override;
    // Gives the top camera's reference back; nothing on an empty stack.
    void PopCamera() override;
    // false counts up or down, true changes nothing.
    void PushCameraDepth(bool depth) override;
    void PopCameraDepth(bool depth) override;
    // Chooses the default camera when depth is true outside every pushed depth, or when no camera is
    // pushed.
    void SetCameraDepth(bool depth) override;

    // Of the default camera or the top one, as SetCameraDepth chose; identity without a camera.
    Matrix4T<RealFixed> GetProjectionMatrix();
    Matrix4T<RealFixed> GetViewMatrix();

    // Takes a reference; null is ignored.
    void AddLight(Light* light);
    // The light's reference is not given back. Of two entries side by side only the first goes.
    void RemoveLight(Light* light);
    uint32_t LightCount();
    // Asks each light to set itself up on this device.
    void SetupLights();

    // EGL handles for the destructor to destroy; null when the host does that itself.
    void* eglDisplay = nullptr;
    void* eglSurface = nullptr;
    void* eglContext = nullptr;
    // Programs of the texts being drawn, outermost first; not counted.
    List<ShaderGL*> shaders;
    // The camera stack, counted; the last one is the top.
    List<CameraGL*> cameras;
    List<Light*> lights;  // counted
    uint32_t cameraDepth = 0;
    bool useDefaultCamera = false;
    CameraGL* defaultCamera = nullptr;  // counted
    // Untextured colour program. It stays when the device goes.
    ShaderGL* solidShader = nullptr;

  private:
    [[gnu::visibility("hidden")]] CameraGL const* CurrentCamera() const;
};

}  // namespace zorvan
