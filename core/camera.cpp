#include "core/camera.h"

#include "core/trig.h"

namespace zorvan {

Camera::Camera(Camera const& other)
    : TransformNode(other),
      orthographic(OwnProperties(), other.orthographic.Get()),
      horizontalFieldOfView(OwnProperties(), other.horizontalFieldOfView.Get()),
      fieldOfView(OwnProperties(), other.fieldOfView.Get()),
      nearPlane(OwnProperties(), other.nearPlane.Get()),
      farPlane(OwnProperties(), other.farPlane.Get()),
      viewRectangle(OwnProperties(), other.viewRectangle.Get()) {}

uint32_t Camera::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Camera") || TransformNode::IsKindOf(id);
}

void Camera::RegisterProperties() {
    TransformNode::RegisterProperties();
    PropertyList& list = OwnProperties();
    list.Add("orthographic", orthographic);
    list.Add("horizontalFieldOfView", horizontalFieldOfView);
    list.Add("fieldOfView", fieldOfView);
    list.Add("nearPlane", nearPlane);
    list.Add("farPlane", farPlane);
    list.Add("viewRectangle", viewRectangle);
}

void Camera::SetupMillimeter(RealFixed lens, RealFixed film, RealFixed width, RealFixed height, bool place) {
    constexpr RealFixed kTwo = RealFixed::FromInt(2);
    constexpr RealFixed kHalf = RealFixed::FromRaw(0x8000);
    // The film's height follows from the view's proportions.
    const RealFixed halfAngle = AtanFixed(film / kTwo * (height / width) / lens);
    orthographic.Set(false);
    horizontalFieldOfView.Set(RealFixed{});
    fieldOfView.Set(halfAngle * kTwo * kRadiansToDegrees);
    nearPlane.Set(kOne<RealFixed>);
    farPlane.Set(RealFixed::FromInt(10000));
    viewRectangle.Set({RealFixed{}, RealFixed{}, width, height});
    if (!place) {
        return;
    }
    // The same fixed-point tangent as in the projection, so that both agree to the pixel.
    const RealFixed tangent = TanFixed(fieldOfView.Get() * kHalf * kDegreesToRadians);
    const RealFixed distance = height / kTwo / tangent;
    position.Set({width / kTwo, height / kTwo, -distance});
    rotation.Set({RealFixed::FromInt(180), RealFixed{}, RealFixed{}});
}

}  // namespace zorvan
