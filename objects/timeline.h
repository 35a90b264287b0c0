// A timeline as drawn with GL.
#pragma once

#include "core/timeline.h"
#include "graphics/api.h"

namespace zorvan {

// Puts its camera, its depth state and its masks in force while its subtree is drawn.
class ZORVAN_GL_API TimelineGL : public Timeline {
  public:
    TimelineGL();
    TimelineGL(TimelineGL const& other);
    ~TimelineGL() override;

    Node* Clone() override;
    char const* GetClassName() override;
    ClassId GetClassId() override;
    void Visit(Visitor& visitor) override;
    Node* CloneDeep() override;
    uint32_t IsKindOf(ClassId id) override;

    void InternalRender(GraphicsDevice& device) override;
};

static_assert(sizeof(TimelineGL) == sizeof(Timeline), "no fields of its own");

}  // namespace zorvan
