// A camera that computes the matrices for GL.
#pragma once

#include "core/camera.h"
#include "graphics/api.h"

namespace zorvan {

// The projection follows from the camera's settings and is computed again only after one of them
// changed; the view is the inverse of the camera's world matrix, of the last update.
class ZORVAN_GL_API CameraGL : public Camera {
  public:
    CameraGL();
    CameraGL(CameraGL const& other);
    ~CameraGL() override;

    Node* Clone() override;
    char const* GetClassName() override;
    ClassId GetClassId() override;
    void Visit(Visitor& visitor) override;
    Node* CloneDeep() override;
    uint32_t IsKindOf(ClassId id) override;

    // Subscribes to the changes of the settings.
    void RegisterProperties() override;
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    // With a horizontal field of view set, rewrites the vertical one from it.
    virtual void CalculateProjection();

    // Of the last update; identity before the first.
    Matrix4T<RealFixed> GetViewMatrix() const;
    Matrix4T<RealFixed> GetProjectionMatrix() const;

  private:
    [[gnu::visibility("hidden")]] void BoolChanged(bool const& value);
    [[gnu::visibility("hidden")]] void RealChanged(RealFixed const& value);
    [[gnu::visibility("hidden")]] void RectangleChanged(RectangleT<RealFixed> const& value);
    [[gnu::visibility("hidden")]] Matrix4T<RealFixed> PerspectiveProjection();

    Matrix4T<RealFixed> viewMatrix;
    Matrix4T<RealFixed> projectionMatrix;
    bool projectionDirty = true;
};

}  // namespace zorvan
