#include "graphics/camera.h"

#include <new>

#include "core/visitor.h"
#include "graphics/class_container.h"
#include "graphics/math.h"

namespace zorvan {
namespace {

// Has a change of the property call a member of the camera.
template <typename T>
void Subscribe(PropertyT<T>& property, CameraGL* camera, void (CameraGL::*member)(T const&)) {
    using Callback =
        detail::member_function<detail::callable<void(T const&)>, CameraGL*, void (CameraGL::*)(T const&)>;
    auto* callback = new (std::nothrow) Callback(camera, member);
    if (callback != nullptr && !property.changed.Add(callback)) {
        delete callback;
    }
}

}  // namespace

template class ClassContainerT<CameraGL>;

CameraGL::CameraGL()
    : viewMatrix(Matrix4T<RealFixed>::Identity), projectionMatrix(Matrix4T<RealFixed>::Identity) {}

CameraGL::CameraGL(CameraGL const& other)
    : Camera(other),
      viewMatrix(other.viewMatrix),
      projectionMatrix(other.projectionMatrix),
      projectionDirty(other.projectionDirty) {}

CameraGL::~CameraGL() = default;

Node* CameraGL::Clone() {
    return new CameraGL(*this);
}

char const* CameraGL::GetClassName() {
    return "CameraGL";
}

ClassId CameraGL::GetClassId() {
    return MakeClassId(u"CameraGL");
}

void CameraGL::Visit(Visitor& visitor) {
    visitor.VisitCamera(*this);
    visitor.VisitChildren(GetChildren());
}

Node* CameraGL::CloneDeep() {
    return CloneChildren(*this, Clone());
}

uint32_t CameraGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"CameraGL") || Camera::IsKindOf(id);
}

void CameraGL::RegisterProperties() {
    Camera::RegisterProperties();
    Subscribe(orthographic, this, &CameraGL::BoolChanged);
    for (PropertyT<RealFixed>* property : {&horizontalFieldOfView, &fieldOfView, &nearPlane, &farPlane}) {
        Subscribe(*property, this, &CameraGL::RealChanged);
    }
    Subscribe(viewRectangle, this, &CameraGL::RectangleChanged);
}

Matrix4T<RealFixed> CameraGL::GetViewMatrix() const {
    return viewMatrix;
}

Matrix4T<RealFixed> CameraGL::GetProjectionMatrix() const {
    return projectionMatrix;
}

void CameraGL::BoolChanged(bool const&) {
    projectionDirty = true;
}

void CameraGL::RealChanged(RealFixed const&) {
    projectionDirty = true;
}

void CameraGL::RectangleChanged(RectangleT<RealFixed> const&) {
    projectionDirty = true;
}

void CameraGL::InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                              bool force) {
    CalculateProjection();
    TransformNode::InternalUpdate(device, time, delta, force);
    viewMatrix = Inverse(GetWorldMatrix());
}

void CameraGL::CalculateProjection() {
    if (!projectionDirty) {
        return;
    }
    projectionMatrix = orthographic.Get() ? Orthographic(viewRectangle.Get(), nearPlane.Get(), farPlane.Get())
                                          : PerspectiveProjection();
    projectionDirty = false;
}

Matrix4T<RealFixed> CameraGL::PerspectiveProjection() {
    const RectangleT<RealFixed>& view = viewRectangle.Get();
    const RealFixed aspect = (view.right - view.left) / (view.bottom - view.top);
    if (horizontalFieldOfView.Get().raw != 0) {
        const RealFixed angle = horizontalFieldOfView.Get() * kDegreesToRadians;
        const RealFixed half = RealFixed::FromRaw(angle.raw / 2);
        const RealFixed vertical = AtanFixed(TanFixed(half) / aspect);
        fieldOfView.Set(vertical * RealFixed::FromInt(2) * kRadiansToDegrees);
    }
    return Perspective(fieldOfView.Get(), aspect, nearPlane.Get(), farPlane.Get());
}

}  // namespace zorvan
