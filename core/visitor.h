// Walk over a node tree by class.
#pragma once

#include "core/list.h"

namespace zorvan {

class Camera;
class Light;
class Node;
class Timeline;
class TransformNode;

// Six operations in a fixed order; a node calls the one of its class, then VisitChildren with its list
// of children. The visitor decides whether to go on into them.
class Visitor {
  public:
    virtual void VisitNode(Node& node) = 0;
    virtual void VisitTransformNode(TransformNode& node) = 0;
    virtual void VisitCamera(Camera& camera) = 0;
    virtual void VisitLight(Light& light) = 0;
    virtual void VisitTimeline(Timeline& timeline) = 0;
    virtual void VisitChildren(List<Node*>& children) = 0;

  protected:
    ~Visitor() = default;
};

}  // namespace zorvan
