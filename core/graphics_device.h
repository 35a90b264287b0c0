// Abstract rendering surface with its opacity, transform, viewport and selection state.
#pragma once

#include <cstdint>

#include "core/api.h"
#include "core/geometry.h"
#include "core/list.h"
#include "core/matrix.h"

namespace zorvan {

class Camera;
class Mask;
class Node;
class Texture;

// Colour layout of the surface; informs the host, the device does not look at it.
struct DeviceFormat {
    enum Enum { Rgb565, Rgb888, Rgba8888 };
};

// The order of the virtual operations is part of the binary interface with the plug-in. The host
// deletes the device through its destructor.
class ZORVAN_CORE_API GraphicsDevice {
  public:
    GraphicsDevice() = default;
    GraphicsDevice(GraphicsDevice const&) = delete;
    GraphicsDevice& operator=(GraphicsDevice const&) = delete;
    virtual ~GraphicsDevice();

    // Keeps the window handle, the format and a viewport of the whole size in pixels. 0 when the width
    // or the height is below 1.
    virtual uint32_t Initialize(void* window, DeviceFormat::Enum format, SizeT<int> const& size);
    // Sets the viewport and empties the opacity, transform and selection state.
    virtual void Reset(RectangleT<int> const& viewport);
    virtual void SetClearColor(ColorT<RealFixed> const& color);
    virtual ColorT<RealFixed> GetClearColor();
    virtual void Clear();
    virtual void SetViewport(RectangleT<int> const& viewport);
    virtual void SetViewport(int x, int y, int width, int height);
    virtual RectangleT<int> GetViewport() const;
    // Window position, in pixels, of a point in the space of a world matrix.
    virtual Vector2T<DoubleRealFixed> ProjectCoordinate(Matrix4T<RealFixed> const& world,
                                                        Vector4T<RealFixed> const& point) = 0;

    // Render passes draw in render mode (the initial one); in selection mode they collect the nodes
    // under a point, in window pixels, into a list that the caller owns, in drawing order.
    virtual void SetRenderMode();
    virtual void SetSelectionMode(Vector2T<RealFixed> const& point, List<Node*>* selected);
    virtual Vector2T<RealFixed> GetSelectionPoint();
    virtual void PushSelected(Node* node);

    virtual void Present() = 0;
    // Reads a rectangle of the surface into a texture, made when *texture is null. 0 on failure.
    virtual uint32_t ReadPixels(RectangleT<int> const& area, Texture** texture) = 0;

    // Push replaces the current value, Merge multiplies it with the argument, Pop takes either back.
    // With nothing pushed the values are 1.0 and the identity.
    virtual void PushOpacity(RealFixed const& opacity);
    virtual void PopOpacity();
    virtual void MergeOpacity(RealFixed const& opacity);
    virtual RealFixed GetOpacity();
    virtual void PushTransformMatrix(Matrix4T<RealFixed> const& matrix);
    virtual void PopTransformMatrix();
    virtual void MergeTransformMatrix(Matrix4T<RealFixed> const& matrix);

    virtual void PushMasks(List<Mask*>& masks) = 0;
    virtual void PopMasks(List<Mask*>& masks) = 0;

    virtual void PushCamera(Camera* camera) = 0;
    // Pushes an orthographic camera in pixels, origin at the top left.
    virtual void PushCamera2D(RealFixed const& width, RealFixed const& height) = 0;
    virtual void PopCamera() = 0;
    virtual void PushCameraDepth(bool depth) = 0;
    virtual void PopCameraDepth(bool depth) = 0;
    virtual void SetCameraDepth(bool depth) = 0;

    bool IsSelecting() const { return selected_ != nullptr; }
    // Of the last push or merge. Out of line: each source unit that uses the identity matrix gets a
    // load-time initialiser of its own.
    Matrix4T<RealFixed> const& GetTransformMatrix() const;

    // Transfer modes in force, innermost last, and the key of each prefix of them.
    List<unsigned int> transferModes;
    List<unsigned int> effectKeys;

  protected:
    RectangleT<int> viewport_;
    ColorT<RealFixed> clearColor_;

  private:
    void* window_ = nullptr;
    DeviceFormat::Enum format_ = DeviceFormat::Rgba8888;
    SizeT<int> size_;
    List<RealFixed> opacities_;
    List<Matrix4T<RealFixed>> transforms_;
    Vector2T<RealFixed> selectionPoint_;
    List<Node*>* selected_ = nullptr;
};

}  // namespace zorvan
