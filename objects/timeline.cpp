#include "objects/timeline.h"

#include "core/graphics_device.h"
#include "core/visitor.h"
#include "graphics/class_container.h"

namespace zorvan {

template class ClassContainerT<TimelineGL>;

TimelineGL::TimelineGL() = default;

TimelineGL::TimelineGL(TimelineGL const& other) = default;

TimelineGL::~TimelineGL() = default;

Node* TimelineGL::Clone() {
    return new TimelineGL(*this);
}

char const* TimelineGL::GetClassName() {
    return "TimelineGL";
}

ClassId TimelineGL::GetClassId() {
    return MakeClassId(u"TimelineGL");
}

void TimelineGL::Visit(Visitor& visitor) {
    visitor.VisitTimeline(*this);
    visitor.VisitChildren(GetChildren());
}

Node* TimelineGL::CloneDeep() {
    return CloneChildren(*this, new TimelineGL(*this));
}

uint32_t TimelineGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"TimelineGL") || Timeline::IsKindOf(id);
}

void TimelineGL::InternalRender(GraphicsDevice& device) {
    Camera* camera = GetCamera();
    if (camera != nullptr) {
        device.PushCamera(camera);
    }
    const bool depthFlag = depth.Get();
    device.PushCameraDepth(depthFlag);
    device.SetCameraDepth(depthFlag);
    if (GetMasks().IsEmpty()) {
        Timeline::InternalRender(device);
    } else {
        device.PushMasks(GetMasks());
        Timeline::InternalRender(device);
        device.PopMasks(GetMasks());
    }
    device.PopCameraDepth(depthFlag);
    if (camera != nullptr) {
        device.PopCamera();
    }
}

}  // namespace zorvan
