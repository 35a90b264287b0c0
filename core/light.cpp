#include "core/light.h"

#include "core/visitor.h"

namespace zorvan {

void Light::Visit(Visitor& visitor) {
    visitor.VisitLight(*this);
    visitor.VisitChildren(GetChildren());
}

uint32_t Light::IsKindOf(ClassId id) {
    return id == MakeClassId(u"Light") || TransformNode::IsKindOf(id);
}

}  // namespace zorvan
